#pragma once

#include "prores/PrxFormats.h"
#include "prores/encoder/PrxInputConverter.h"

#include <cstdint>

/// RGB input. All forms compute in single precision, each product and each sum rounded to nearest, whatever
/// the mode of the calling thread: the term of green, then plus red, then plus blue. Results are rounded to
/// integers, of two equally near to the even one; no pixel gives any that 16 bits don't hold.
///
/// Each function returns the fastest form that this machine runs, and its twin with `Scalar` in its name the
/// reference form; null for other formats.

/// What a luma sample with black at 0 has too much, and a luma word, which is stored without its sign.
inline constexpr int32_t prxRgbSampleOffset = 1792;
inline constexpr int32_t prxRgbWordOffset = 28672;

/// Whether pixels of an RGB format are converted to blocks, and whether to rows. `n302` isn't encoded to
/// 4:2:2, nor `BGRA` to anything.
constexpr bool PrxHasRgbConverter(uint32_t rgbFormat) { return rgbFormat != prxFormatBgra; }
constexpr bool PrxHasRgbRowConverter(uint32_t rgbFormat) {
    return PrxHasRgbConverter(rgbFormat) && rgbFormat != prxFormatN302;
}

/// Converter of a macroblock to 4:4:4: the value 32, `b64a`, `R10k`, `r210`, `n302`.
PrxConvertMacroblock PrxGetRgbConverter(uint32_t pixelFormat);
PrxConvertMacroblock PrxGetScalarRgbConverter(uint32_t pixelFormat);

/// Converts one row of `width` pixels, 1 or more, to `v216` pairs: the value 32, `b64a`, `R10k`, `r210`.
/// Chroma is that of the even pixels, filtered with weights 1, 2 and 1; beyond its ends the row is continued
/// by its first and its last pixel. Reads `width` pixels and writes whole pairs: one pixel more than `width`
/// where that is odd. Both may stand at any address.
using PrxConvertRgbRow = void (*)(const uint8_t* source, int32_t width, int32_t colorMatrix,
                                  uint8_t* v216Row);
PrxConvertRgbRow PrxGetRgbRowConverter(uint32_t pixelFormat);
PrxConvertRgbRow PrxGetScalarRgbRowConverter(uint32_t pixelFormat);
