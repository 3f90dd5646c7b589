#pragma once

#include <cstddef>
#include <cstdint>

/// The alpha samples of a slice: no more than 2048, as a run has 11 bits.
struct PrxAlphaArea {
    const uint8_t* pixels; ///< the slice's top left pixel in the caller's picture, with any alignment
    ptrdiff_t rowBytes;    ///< from one row to the next; may be negative
    int32_t columns;       ///< pixels of the slice inside the picture, 1 or more
    int32_t extraColumns;  ///< pixels of the slice beyond the picture's right edge
    int32_t rows;          ///< rows inside the picture, 1 to 16; those below are not coded
};

/// How the alpha of a pixel format is coded.
struct PrxAlphaCoder {
    int32_t alphaType;   ///< 0: not at all; 1: 8 bits; 2: 16 bits
    int32_t bufferUnits; ///< times 256: the bytes of a macroblock, which its alpha never passes; 0 for type 0

    /// Codes `area` into at most `capacity` bytes at `out` and returns their count. `*opaque` says whether
    /// every sample is at full value. Each row's last sample goes for the columns behind it too. Reads no
    /// pixel outside the area. Null for type 0.
    uint32_t (*code)(const PrxAlphaArea& area, uint8_t* out, uint32_t capacity, bool* opaque);
};

/// The coder for pixels of `pixelFormat` (SMPTE RDD 36, 7.1.2); type 0 if not `hasAlpha`, and for a format
/// whose alpha is not coded.
PrxAlphaCoder PrxChooseAlphaCoder(bool hasAlpha, uint32_t pixelFormat);
