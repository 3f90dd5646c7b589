#pragma once

#include "dnx/CodeScale.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace dnx {

// Places of the words of a pixel A R G B.
constexpr size_t alphaAt = 0;
constexpr size_t redAt = 1;
constexpr size_t greenAt = 2;
constexpr size_t blueAt = 3;

/// Writes pixel `x` of a row, opaque.
inline void StorePixel(uint8_t* row, size_t x, uint32_t red, uint32_t green, uint32_t blue) {
    StoreSample<uint16_t>(row, 4 * x + alphaAt, 65535);
    StoreSample<uint16_t>(row, 4 * x + redAt, red);
    StoreSample<uint16_t>(row, 4 * x + greenAt, green);
    StoreSample<uint16_t>(row, 4 * x + blueAt, blue);
}

/// Rounds to nearest and limits to codes that aren't negative.
inline int32_t RoundToCode(float value, int32_t lowest, int32_t highest) {
    return std::min(std::max(static_cast<int32_t>(value + 0.5f), lowest), highest);
}
inline uint32_t RoundToWord(float value) { return static_cast<uint32_t>(RoundToCode(value, 0, 65535)); }

} // namespace dnx
