#include "prores/PrxInverseTransform.h"

#include <cstddef>

void PrxUpdateQuantTables(PrxSliceState& state, const PrxQuantMatrix& luma, const PrxQuantMatrix& chroma,
                          int32_t quantiser) {
    if (quantiser == state.cachedQuantiser) return;
    for (size_t i = 0; i < luma.size(); ++i) {
        state.lumaTable[i] = static_cast<int16_t>(luma[i] * quantiser);
        state.chromaTable[i] = static_cast<int16_t>(chroma[i] * quantiser);
    }
    state.cachedQuantiser = quantiser;
}
