#pragma once

#include <cstddef>
#include <cstdint>

/// Pixels of one macroblock, and the blocks that they become: 64 samples each, row by row, in the order of
/// the stream (SMPTE RDD 36, 5.3.2): four of luma, then Cb and Cr in turn, going down before across. Samples
/// are signed, in a scale of 12 bits around 0.
struct PrxInputMacroblock {
    const uint8_t* source; ///< top left pixel, at any address
    ptrdiff_t rowBytes;    ///< from one row to the next; may be negative
    int32_t rows;          ///< rows inside the picture, 1 to 16
    int32_t columns;       ///< pixels inside the picture, 1 to 16
    int16_t* blocks;       ///< 8 blocks in 4:2:2, 12 in 4:4:4; aligned to 64 bytes
};

/// Converts a macroblock and reads no pixel outside it, but for the missing pixel of an odd row of packed
/// 4:2:2, where its pair's chroma may stand. The last row inside the picture is repeated below it, and each
/// row's last pixel to its right, the chroma of a pair with it. `colorMatrix` (1, 6 or 9) matters for RGB
/// only.
using PrxConvertMacroblock = void (*)(const PrxInputMacroblock& macroblock, int32_t colorMatrix);

/// The converter to a stream of `chromaFormat` from pixels of `pixelFormat` as `PrxPrepareRows` leaves them:
/// the fastest that this machine runs. Null if there is none. For a picture that goes through prepared rows
/// of `v216` it is that of `v216`.
PrxConvertMacroblock PrxGetConverter(uint32_t pixelFormat, int32_t chromaFormat);

/// The reference form of the same.
PrxConvertMacroblock PrxGetScalarConverter(uint32_t pixelFormat, int32_t chromaFormat);
