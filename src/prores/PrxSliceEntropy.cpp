#include "prores/PrxSliceEntropy.h"

#include "prores/PrxBitReader.h"
#include "prores/PrxCodeBooks.h"
#include "prores/PrxCodeReader.h"
#include "prores/PrxDcPrediction.h"

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>

// The reference form, code word by code word.

namespace {

void DecodeDc(PrxBitReader& reader, const PrxSliceComponent& component) {
    if (reader.Ended()) return;
    PrxDcPrediction prediction;
    component.coefficients[0] = prediction.First(PrxReadCode(reader, prxFirstDcBook));

    const size_t blockCount = size_t{1} << component.log2BlockCount;
    for (size_t block = 1; block < blockCount && !reader.Ended(); ++block) {
        const uint64_t code = PrxReadCode(reader, prxDcBooks[prediction.BookChoice()]);
        component.coefficients[block << component.log2BlockSize] = prediction.Next(code);
    }
}

void DecodeAc(PrxBitReader& reader, const PrxSliceComponent& component, const PrxCoefficientOrder& order) {
    const size_t blockCount = size_t{1} << component.log2BlockCount;
    const size_t limit = size_t{order.coefLimit} << component.log2BlockCount;
    uint32_t runBook = PrxRunBook(prxFirstRun);
    uint32_t levelBook = PrxLevelBook(prxFirstLevel);
    for (size_t position = blockCount; !reader.Ended(); ++position) {
        const std::optional<PrxCoefficient> next = PrxReadCoefficient(reader, runBook, levelBook);
        if (!next) return;
        position += next->run;
        if (position >= limit) return;

        const size_t block = position & (blockCount - 1);
        const size_t inBlock = order.scan[position >> component.log2BlockCount];
        component.coefficients[(block << component.log2BlockSize) + inBlock] =
            static_cast<int16_t>(next->level);
        runBook = PrxRunBook(next->run);
        levelBook = PrxLevelBook(static_cast<uint32_t>(std::abs(next->level)));
    }
}

} // namespace

void PrxDecodeSliceComponent(const PrxSliceComponent& component, const PrxCoefficientOrder& order) {
    assert(order.coefLimit >= 1 && order.coefLimit <= order.scan.size());
    PrxBitReader reader(component.data, component.size);
    DecodeDc(reader, component);
    DecodeAc(reader, component, order);
}
