#pragma once

#include <cstddef>
#include <cstdint>

namespace rawsdk {

/// Samples of the sensor have 12 bits; rows are R G R G and G B G B in turn, the first one R G.
inline constexpr uint32_t mostSample = 4095;

/// Interpolated colours count in sixteenths of a sample.
inline constexpr uint32_t stepsPerSample = 16;
inline constexpr uint32_t mostColor = mostSample * stepsPerSample;

/// Three planes of 16-bit words, R, G and B, one after the other, of rows without padding.
struct PlanarPicture {
    uint16_t* words;
    uint32_t width;
    uint32_t height;

    uint16_t* Row(size_t plane, uint32_t row) const { return words + (plane * height + row) * size_t{width}; }
};

/// Bytes of a picture's planes.
constexpr uint64_t PlanarBytes(uint32_t width, uint32_t height) {
    return uint64_t{width} * height * 3 * sizeof(uint16_t);
}

} // namespace rawsdk
