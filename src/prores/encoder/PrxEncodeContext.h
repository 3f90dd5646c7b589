#pragma once

#include "prores/PrxScratchBuffer.h"
#include "prores/encoder/PrxQuantise.h"
#include "prores/encoder/PrxRowBuffer.h"
#include "prores/encoder/PrxSlice.h"

#include <cstddef>
#include <cstdint>

/// Blocks of the largest slice.
inline constexpr size_t prxMaxSliceBlocks = size_t{12} << prxLog2SliceWidth;

/// What a worker thread of an encoder keeps for itself from row to row and from frame to frame.
struct PrxEncodeContext {
    PrxQuantTables tables;
    alignas(64) uint16_t levels[prxMaxSliceBlocks * 64]; ///< of the slice under way
    PrxRowBuffer rows;                                   ///< for input that needs it
    PrxScratchBuffer sliceBytes;                         ///< a slice as it is written
};
