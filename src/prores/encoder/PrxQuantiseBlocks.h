#pragma once

#include "prores/encoder/PrxQuantise.h"

#include <cstddef>
#include <cstdint>

/// Levels of `blockCount` blocks, one behind the other, by 64 reciprocals.
using PrxQuantiseBlocks = void (*)(const int16_t* reciprocals, const int16_t* coefficients,
                                   int32_t blockCount, uint16_t* levels);

/// The quantiser (see `PrxQuantiser`) that leaves the blocks of a macroblock's luma, and those of its chroma,
/// to `Blocks`.
template <PrxQuantiseBlocks Blocks>
void PrxQuantiseMacroblocks(const PrxQuantTables& tables, const int16_t* coefficients, int32_t mbCount,
                            int32_t blocksPerMb, uint16_t* levels) {
    const int32_t chromaBlocks = blocksPerMb - 4;
    uint16_t* chromaLevels = levels + ptrdiff_t{64} * 4 * mbCount;
    for (int32_t mb = 0; mb < mbCount; ++mb, coefficients += 64 * blocksPerMb) {
        Blocks(tables.luma, coefficients, 4, levels + 64 * 4 * mb);
        Blocks(tables.chroma, coefficients + 64 * 4, chromaBlocks, chromaLevels + 64 * chromaBlocks * mb);
    }
}
