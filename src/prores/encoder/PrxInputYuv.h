#pragma once

#include "prores/PrxFloatRange.h"
#include "prores/encoder/PrxInputConverter.h"

#include <cstdint>

/// The samples of `r4fl`, half the scale of those that the decoder's writers make it of: a picture that was
/// decoded to it keeps its levels.
namespace prx_float_input {
inline constexpr float scale = 4080.0F;
inline constexpr int32_t lumaOffset = prx_float_range::lumaOffset / 2;
inline constexpr int32_t chromaOffset = prx_float_range::chromaOffset / 2;
inline constexpr int32_t lowest = prx_float_range::lowest / 2;
inline constexpr int32_t highest = prx_float_range::highest / 2;
} // namespace prx_float_input

/// The reference form of the converters from Y'CbCr. To 4:2:2: `2vuy`, `yuvs`, `v216`, and of `y408`, `v408`,
/// `r408`, `y416` and `r4fl` the chroma of the even pixels. To 4:4:4: the latter five. Null for others.
PrxConvertMacroblock PrxGetScalarYuvConverter(uint32_t pixelFormat, int32_t chromaFormat);
