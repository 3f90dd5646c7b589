#include "prores/encoder/PrxQuantise.h"

#include "prores/PrxFixedPoint.h"
#include "prores/encoder/PrxQuantiseBlocks.h"
#include "prores/encoder/PrxQuantiseVector.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

namespace {

/// At most 16384, since no weight is below 2.
void BuildTable(const PrxQuantMatrix& weights, int32_t scale, int16_t* reciprocals) {
    for (size_t i = 0; i < weights.size(); ++i) {
        const float reciprocal = 32768.0f / static_cast<float>(weights[i] * scale);
        reciprocals[i] = weights[i] == prxDroppedWeight ? int16_t{0} : static_cast<int16_t>(reciprocal);
    }
}

int16_t Wrap16(int32_t value) { return static_cast<int16_t>(value); }

/// Four times a coefficient beyond 8192 wraps around. Kept.
uint16_t Quantise(int16_t coefficient, int16_t reciprocal) {
    const int16_t fourfold = Wrap16(4 * std::min(coefficient, Wrap16(-coefficient)));
    const int16_t product = PrxMulHigh(fourfold, PrxSaturatedAdd(reciprocal, reciprocal));
    const int32_t negated = (product + 1) >> 1;
    const int32_t sign = negated != 0 && coefficient < 0 ? 1 : 0;
    return static_cast<uint16_t>(-2 * negated + sign);
}

void QuantiseBlocks(const int16_t* reciprocals, const int16_t* coefficients, int32_t blockCount,
                    uint16_t* levels) {
    for (int32_t i = 0; i < 64 * blockCount; ++i)
        levels[i] = Quantise(coefficients[i], reciprocals[i % 64]);
}

} // namespace

void PrxBuildQuantTables(PrxQuantTables* tables, int32_t scale, int32_t matrixIndex) {
    assert(scale >= 1 && scale <= 512);
    if (tables->scale == scale && tables->matrixIndex == matrixIndex) return;
    BuildTable(PrxLumaWeights(matrixIndex), scale, tables->luma);
    BuildTable(PrxChromaWeights(matrixIndex), scale, tables->chroma);
    tables->scale = scale;
    tables->matrixIndex = matrixIndex;
}

void PrxQuantiseSlice(const PrxQuantTables& tables, const int16_t* coefficients, int32_t mbCount,
                      int32_t blocksPerMb, uint16_t* levels) {
    PrxQuantiseMacroblocks<QuantiseBlocks>(tables, coefficients, mbCount, blocksPerMb, levels);
}

PrxQuantiser PrxSelectQuantiser() {
    const PrxQuantiser vector = PrxVectorQuantiser();
    return vector != nullptr ? vector : PrxQuantiseSlice;
}
