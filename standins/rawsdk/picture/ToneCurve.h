#pragma once

#include "rawsdk/clip/Settings.h"

#include <array>
#include <cstdint>
#include <vector>

namespace rawsdk {

/// What processing does to the colours of the sensor, as numbers alone: it goes into frame states.
struct ToneParameters {
    /// How light becomes code, by the number of the gamma.
    enum Gamma : uint32_t { Film, Video, Linear };

    std::array<float, 3> gains; ///< of R, G, B: white balance, exposure and gain
    float contrast;
    float midpoint;
    float highlights;
    float shadows;
    float blackLevel;
    float whiteLevel;
    float saturation;
    uint32_t gamma;
};

/// @throw Failure  `E_INVALIDARG` for a gamma that there is not
ToneParameters ToneOf(const ClipSettings& clip, const FrameSettings& frame);

/// Light from 0 on to a code, 0 to 1 for light from 0 to 1, and back. Film is log2(1 + 31 light) / 5, video
/// is that of BT.709.
double Encode(ToneParameters::Gamma gamma, double light);
double Decode(ToneParameters::Gamma gamma, double code);

/// The curve of one colour channel, which gives 16-bit codes. Light, times the gain, is encoded; then, in
/// codes e from 0 to 1,
///
///     e += (shadows - 1) / 2 * e (1 - e)^2 + (highlights - 1) / 2 * e^2 (1 - e)
///     e  = midpoint + (e - midpoint) contrast
///     e  = black level + e (white level - black level)
class ToneCurve {
public:
    ToneCurve(const ToneParameters& parameters, size_t channel);

    /// @param color  in sixteenths of a sample; those beyond `mostColor` count as that
    uint16_t operator()(uint32_t color) const;
    /// The same for `count` colours in a row.
    void Apply(const uint16_t* colors, uint16_t* codes, size_t count) const;

private:
    std::vector<uint16_t> codes_; ///< for each sample, and the last one once more
};

} // namespace rawsdk
