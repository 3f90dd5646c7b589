#pragma once

#include "rawsdk/picture/Samples.h"
#include "rawsdk/picture/ToneCurve.h"

#include <array>
#include <cstdint>
#include <vector>

namespace rawsdk {

/// Makes the samples of a sensor that processing turns into a given picture: gamma, exposure, gain and white
/// balance are undone, the rest of the settings is not looked at. Light that a sample can't tell is limited.
class Mosaic {
public:
    explicit Mosaic(const ToneParameters& parameters);

    /// @param picture  16-bit codes
    /// @return rows without padding
    std::vector<uint16_t> Samples(const PlanarPicture& picture) const;

private:
    std::array<std::vector<uint16_t>, 3> samples_; ///< for each code
};

} // namespace rawsdk
