#pragma once

#include "prores/encoder/PrxInputConverter.h"

#include <array>

/// Converts a macroblock of 16 rows of 16 pixels, of one pixel format, at any address.
using PrxInputCore = void (*)(const uint8_t* source, ptrdiff_t rowBytes, int16_t* blocks,
                              int32_t colorMatrix);

/// 16 rows of 16 pixels, one row behind the other, of up to 16 bytes a pixel.
using PrxWholeMacroblock = std::array<uint8_t, 16 * 16 * 16>;

/// Copies the pixels of `macroblock`, which are of `pixelFormat`, and fills up to 16 by 16 by repeating the
/// last pixel of each row and then the last row. Returns the bytes from one row of the copy to the next.
ptrdiff_t PrxExtendMacroblock(const PrxInputMacroblock& macroblock, uint32_t pixelFormat,
                              PrxWholeMacroblock& copy);

/// The converter of `PixelFormat` that leaves the work to `Core`: in the caller's own pixels for a whole
/// macroblock, and in an extended copy for one at the picture's edge.
template <uint32_t PixelFormat, PrxInputCore Core>
void PrxConvertWithEdges(const PrxInputMacroblock& macroblock, int32_t colorMatrix) {
    if (macroblock.rows == 16 && macroblock.columns == 16) {
        Core(macroblock.source, macroblock.rowBytes, macroblock.blocks, colorMatrix);
    } else {
        alignas(64) PrxWholeMacroblock copy;
        const ptrdiff_t rowBytes = PrxExtendMacroblock(macroblock, PixelFormat, copy);
        Core(copy.data(), rowBytes, macroblock.blocks, colorMatrix);
    }
}
