#pragma once

#include "prores/encoder/PrxChromaLowPass.h"
#include "prores/encoder/PrxInputRgb.h"
#include "prores/encoder/PrxRowBuffer.h"
#include "prores/encoder/PrxStrip.h"
#include "prores/encoder/PrxV210Unpack.h"

#include <cstddef>
#include <cstdint>

/// Whether rows of `pixelFormat` go through a row buffer to a stream of `chromaFormat`: `v210`, and RGB to
/// 4:2:2.
bool PrxUsesRowBuffer(uint32_t pixelFormat, int32_t chromaFormat);

/// What brings the rows of a picture to what a macroblock converter reads: at most one of the three.
struct PrxRowPreparer {
    PrxV210Unpacker unpack;      ///< of `v210`
    PrxConvertRgbRow convertRgb; ///< of RGB for a 4:2:2 stream
    PrxChromaLowPass lowPass;    ///< of other 4:4:4 formats for a 4:2:2 stream

    /// Whether the rows go to a buffer, which must then have room for their width.
    bool UsesBuffer() const { return unpack != nullptr || convertRgb != nullptr; }
};

/// The preparer of rows of `width` pixels for a stream of `chromaFormat`, chosen once for a picture.
/// `rowBytes` is from one row to the next of the frame, fields or not: `v210` rows that are too short for
/// whole groups of their width are not read, and black rows stand for them.
PrxRowPreparer PrxChooseRowPreparer(uint32_t pixelFormat, int32_t chromaFormat, int32_t width,
                                    ptrdiff_t rowBytes);

/// Prepares a strip, once for each row job, and returns where it then stands: `v210`, and RGB for a 4:2:2
/// stream, become `v216` rows in `buffer`; the chroma of other 4:4:4 formats for a 4:2:2 stream is low-passed
/// in the caller's own rows, which are thus changed; anything else is as it was. `colorMatrix` (1, 6 or 9)
/// matters for RGB only.
PrxStrip PrxPrepareRows(const PrxRowPreparer& preparer, const PrxStrip& strip, int32_t colorMatrix,
                        PrxRowBuffer& buffer);
