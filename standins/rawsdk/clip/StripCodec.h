#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace rawsdk {

/// Rows of a strip; the last one of a frame may have fewer. Even, so that all strips begin with the same
/// colours.
inline constexpr uint32_t stripRows = 64;

/// Strips of a frame.
constexpr uint32_t StripsOf(uint32_t height) { return (height + stripRows - 1) / stripRows; }
constexpr uint32_t RowsOfStrip(uint32_t height, uint32_t strip) {
    const uint32_t first = strip * stripRows;
    return height - first < stripRows ? height - first : stripRows;
}

/// Compresses rows of samples of 12 bits. Each becomes its difference from the one of the same colour to its
/// left, small ones of either sign as small numbers; their low bytes and their high bits stand apart, as
/// Zstandard data (RFC 8878) with a check sum.
/// @param samples  rows without padding, of whole rows; bits above the twelfth are lost
/// @throw Failure  without memory
std::vector<uint8_t> CompressStrip(std::span<const uint16_t> samples, uint32_t width);

/// Decompresses what `CompressStrip` made, into as many samples.
/// @throw Failure  if the data are damaged or of another number of samples; what is in `samples` then is
///                 undefined
void DecompressStrip(std::span<const uint8_t> data, std::span<uint16_t> samples, uint32_t width);

} // namespace rawsdk
