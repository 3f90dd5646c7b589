#pragma once

#include "prores/encoder/EncodeFixture.h"
#include "prores/encoder/RgbInputModel.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

/// Pictures of slow slopes, each channel with another one, in all formats that the encoder takes, and what
/// became of them.
namespace ramps {

/// A pixel in codes of 8 bits in video range, with fractions.
using Color = rgb_input_model::Ycbcr<double>;

inline constexpr int32_t width = 150;
inline constexpr int32_t height = 53;

/// Slopes of Y'CbCr that stay within the range of RGB.
Color ColorAt(int32_t x, int32_t y);

/// These in any format that the encoder takes; opaque, and RGB by BT.601.
InputPicture MakeColors(uint32_t pixelFormat);

/// Slopes of RGB, and what `colorMatrix` makes of them.
InputPicture MakeRgb(uint32_t pixelFormat);
Color RgbColorAt(uint32_t pixelFormat, int32_t colorMatrix, int32_t x, int32_t y);

/// The pixels of a frame, row by row. Empty if it can't be decoded.
std::vector<Color> Decode(const std::vector<uint8_t>& frame);

/// Largest difference of a channel, in codes of 8 bits. Chroma of odd pixels is left out, which 4:2:2 lacks.
template <typename ExpectedAt>
double LargestError(const std::vector<Color>& decoded, const ExpectedAt& expectedAt) {
    double largest = 0;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const Color& color = decoded.at(static_cast<size_t>(y * width + x));
            const Color expected = expectedAt(x, y);
            largest = std::max(largest, std::abs(color.y - expected.y));
            if (x % 2 != 0) continue;
            largest = std::max({largest, std::abs(color.cb - expected.cb), std::abs(color.cr - expected.cr)});
        }
    return largest;
}

} // namespace ramps
