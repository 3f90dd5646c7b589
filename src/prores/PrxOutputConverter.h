#pragma once

#include "prores/PrxMacroblock.h"
#include "prores/PrxRowPass.h"

#include <cstdint>

/// How the macroblocks of a frame become pixels of the target's format.
struct PrxOutputConverter {
    uint32_t pixelFormat;
    uint32_t intermediateFormat; ///< what the writer makes; equals `pixelFormat` on a direct route
    bool direct;                 ///< the writer stores in the caller's buffer; otherwise in a row buffer
    bool fullSizeOnly;           ///< the writer stores 16 by 16 pixels from 8 by 8 blocks whatever the shifts
    uint32_t mbBytes;            ///< bytes of one macroblock across, reduced by `hShift`
    PrxMacroblockWriter writer;  ///< null: no way from this stream to this format
    PrxRowPass rowPass;          ///< ends each row; null if nothing is left to do
};

/// Chooses the way from a stream of `chromaFormat` to `pixelFormat` at a reduction by (hShift, vShift).
/// `hasAlpha`: alpha samples are decoded. Without a way, `writer` is null and the rest means nothing.
void PrxSelectConverter(PrxOutputConverter* converter, uint32_t pixelFormat, int32_t chromaFormat,
                        int32_t hShift, int32_t vShift, bool hasAlpha);
