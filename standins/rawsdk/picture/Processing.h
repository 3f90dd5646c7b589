#pragma once

#include "rawsdk/clip/ColorTable.h"
#include "rawsdk/picture/Samples.h"
#include "rawsdk/picture/ToneCurve.h"

#include <array>
#include <cstdint>
#include <memory>

namespace rawsdk {

/// Makes pictures of interpolated colours: white balance, exposure, gain, gamma and tone by a curve for each
/// channel, then saturation about the luma of BT.709, then the table of colours. Any number of threads.
class Processing {
public:
    /// @param table  or null for none
    Processing(const ToneParameters& parameters, std::shared_ptr<const ColorTable> table);

    /// Writes `rows` rows from `firstRow` on.
    void Process(const PlanarPicture& colors, const PlanarPicture& output, uint32_t firstRow,
                 uint32_t rows) const;

private:
    void ApplyTable(const PlanarPicture& output, uint32_t row) const;

    std::array<ToneCurve, 3> curves_;
    float saturation_;
    std::shared_ptr<const ColorTable> table_;
};

} // namespace rawsdk
