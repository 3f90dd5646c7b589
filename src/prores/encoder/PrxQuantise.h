#pragma once

#include "prores/encoder/PrxQuantMatrices.h"

#include <cstdint>

/// Reciprocals of weight times scale; one for each worker.
struct PrxQuantTables {
    alignas(64) int16_t luma[64];   ///< 32768 / (weight * scale), cut off; 0 where the weight is dropped
    alignas(64) int16_t chroma[64]; ///< likewise
    int32_t scale = 0;              ///< what the tables hold; 0: nothing
    int32_t matrixIndex = -1;       ///< likewise
};

/// Makes the tables those of `scale` (1 to 512) and `matrixIndex` (0 to 4); returns at once if they are.
void PrxBuildQuantTables(PrxQuantTables* tables, int32_t scale, int32_t matrixIndex);

/// Levels of `mbCount` macroblocks of `blocksPerMb` blocks (8 or 12), the first four of which are luma: first
/// all luma blocks, then all chroma blocks, each in the order of the macroblocks, 64 values each in the order
/// of the coefficients. A level holds twice its magnitude, plus 1 if it is negative; 0 for nothing. Its
/// magnitude is that of 2 * coefficient / (weight * scale), rounded to nearest with halves down, but for the
/// inexactness of a reciprocal of 16 bits; coefficients beyond 8192 wrap around. All pointers are aligned to
/// 64 bytes, and nothing outside the blocks is touched.
using PrxQuantiser = void (*)(const PrxQuantTables& tables, const int16_t* coefficients, int32_t mbCount,
                              int32_t blocksPerMb, uint16_t* levels);

/// The fastest form that this machine runs, and the reference form.
PrxQuantiser PrxSelectQuantiser();
void PrxQuantiseSlice(const PrxQuantTables& tables, const int16_t* coefficients, int32_t mbCount,
                      int32_t blocksPerMb, uint16_t* levels);
