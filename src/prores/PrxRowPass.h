#pragma once

#include "prores/PrxMacroblock.h"

#include <cstddef>
#include <cstdint>

/// A stretch of a macroblock row whose slices were all decoded, for the pass that ends the row. Pixels are
/// counted from the picture's left edge; the pointers are those of the whole row.
struct PrxRowPassJob {
    const uint8_t* rowBuffer; ///< intermediate pixels; null on a direct route
    ptrdiff_t rowStride;      ///< bytes between rows of the row buffer
    const uint8_t* alpha;     ///< alpha samples of the row; null without alpha
    ptrdiff_t alphaStride;
    uint8_t* dst;           ///< the target's row
    ptrdiff_t dstStride;    ///< bytes between target rows of this picture: twice the buffer's for a field
    int32_t targetRowBytes; ///< bytes of one target row
    int32_t width;          ///< pixels of the reduced picture
    int32_t firstPixel;     ///< a multiple of 16 >> hShift, hence even
    int32_t endPixel;       ///< a multiple of 16 >> hShift, or `width`
    int32_t rows;
};

/// Writes (or, on a direct route, finishes) the pixels of one stretch.
using PrxRowPass = void (*)(const PrxRowPassJob& job, const PrxWriterSetup& setup);

/// The pass that ends a row for `pixelFormat`, or null if there is none. `hasAlpha`: alpha samples are given.
PrxRowPass PrxSelectRowPass(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha);
