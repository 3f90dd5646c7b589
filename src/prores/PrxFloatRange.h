#pragma once

#include <cstdint>

/// How 13-bit samples become the floats of `r4fl`: limited, moved by an offset, and scaled so that the 8-bit
/// code 255 is 1 and, for luma, the code 16 is 0.
namespace prx_float_range {
inline constexpr int16_t lowest = -4096;
inline constexpr int16_t highest = 4064;
inline constexpr int16_t lumaOffset = 3584;
inline constexpr int16_t chromaOffset = 4096;
inline constexpr float scale = 1.0F / 8160.0F; ///< a factor rounded once, not a division of each sample
} // namespace prx_float_range
