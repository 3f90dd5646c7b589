#pragma once

#include <cstddef>
#include <cstdint>

/// What a width resampler is given: rows to bring from one width to another in place.
struct PrxResampleRows {
    const uint8_t* source;
    int32_t sourceWidth; ///< pixels
    ptrdiff_t sourceRowBytes;
    uint8_t* destination; ///< the same rows
    int32_t destinationWidth;
    ptrdiff_t destinationRowBytes;
    int32_t rows;
};
using PrxWidthResampler = void (*)(const PrxResampleRows& rows);

/// A picture buffer as the decoder itself sees it.
struct PrxOutputTarget {
    uint8_t* baseAddress; ///< these five as in `PrxPixelBuffer`
    int32_t rowBytes;
    uint32_t pixelFormat;
    int32_t width;
    int32_t height;
    /// Called in the workers on the finished rows of each macroblock row, to bring them to `width` pixels,
    /// which must then be at least 4/3 of the picture's. Called whatever was decoded of the row, refused
    /// slices and none at all included; only a row without memory is left out. Null for none.
    PrxWidthResampler widthResampler = nullptr;
};
