#pragma once

#include "prores/PrxHeaders.h"

#include <cstdint>

/// Dequantises and transforms `blockCount` blocks that stand one behind the other, (8 >> hShift) by
/// (8 >> vShift) values each, row by row. Samples are signed, centred on 0, at a precision of `depth` bits
/// (8, 10 or 13). `quantTable` has 64 entries, for the 8 by 8 positions whatever the block's size. The arrays
/// need no alignment and must not overlap; nothing outside them is touched. Any thread may call, in any
/// rounding mode.
using PrxInverseTransform = void (*)(const int16_t* coefficients, int16_t* samples, int32_t blockCount,
                                     int32_t depth, const int16_t* quantTable);

/// The transform for a reduction by 2^hShift across and 2^vShift down: the fastest form that this machine
/// runs. Null for a pair that no mode makes.
PrxInverseTransform PrxSelectInverseTransform(int32_t hShift, int32_t vShift);

/// The reference form of the same.
PrxInverseTransform PrxScalarInverseTransform(int32_t hShift, int32_t vShift);

/// The products of quantisation matrices and quantiser, kept from slice to slice.
struct PrxSliceState {
    alignas(64) int16_t lumaTable[64] = {};
    alignas(64) int16_t chromaTable[64] = {};
    int32_t cachedQuantiser = 0; ///< of which the tables hold the products; 0: of none
};

/// Makes the tables of `state` those of `quantiser`, 1 to 512. If the tables are of that quantiser already,
/// they stay, whatever the matrices. A product beyond 16 bits wraps. Kept.
void PrxUpdateQuantTables(PrxSliceState& state, const PrxQuantMatrix& luma, const PrxQuantMatrix& chroma,
                          int32_t quantiser);
