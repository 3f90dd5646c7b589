#pragma once

#include "prores/encoder/PrxRowBuffer.h"
#include "prores/encoder/PrxStrip.h"

#include <cstdint>

/// Whether rows of `pixelFormat` go through a row buffer to a stream of `chromaFormat`: `v210`, and RGB to
/// 4:2:2. `PrxPrepareRows` then takes a buffer that has room for the strip's width; no other is touched.
bool PrxUsesRowBuffer(uint32_t pixelFormat, int32_t chromaFormat);

/// Brings a strip, once for each row job, to what a macroblock converter reads, and returns where that
/// stands: `v210`, and RGB for a 4:2:2 stream, become `v216` rows in `buffer`; the chroma of other 4:4:4
/// formats for a 4:2:2 stream is low-passed in the caller's own rows, which are thus changed; anything else
/// is as it was. `colorMatrix` (1, 6 or 9) matters for RGB only.
///
/// `v210` rows that are too short for whole groups of their width are not read: black rows stand for them.
PrxStrip PrxPrepareRows(const PrxStrip& strip, int32_t chromaFormat, int32_t colorMatrix,
                        PrxRowBuffer& buffer);
