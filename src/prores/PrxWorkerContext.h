#pragma once

#include "prores/PrxInverseTransform.h"
#include "prores/PrxScratchBuffer.h"

#include <cstdint>

/// What a worker thread keeps for itself from row to row and from frame to frame.
///
/// The widest row that a frame header can claim has 4096 macroblocks. For that the row buffer takes 4 MiB (16
/// rows of 65536 pixels of 4 bytes) and the alpha of a row route 2 MiB; for 3840 pixels it is 240 and 120
/// KiB. Neither is allocated for a row without data.
struct PrxWorkerContext {
    PrxSliceState sliceState;
    PrxScratchBuffer rowBuffer;   ///< intermediate pixels of a row
    PrxScratchBuffer alphaBuffer; ///< alpha of a slice, or of a row on the way through the row buffer
    uint8_t gathered[2][65536];   ///< slices that don't lie in one piece of the input
};
