#include "prores/encoder/PrxPlaneCodes.h"

#include "prores/encoder/PrxCodeWord.h"

#include <algorithm>
#include <cstdlib>

namespace {

/// A signed number as a code has it.
constexpr uint32_t Fold(int32_t value) {
    return value >= 0 ? static_cast<uint32_t>(2 * value) : static_cast<uint32_t>(-2 * value - 1);
}

int32_t SignedLevel(uint16_t level) {
    const int32_t magnitude = level >> 1;
    return level & 1 ? -magnitude : magnitude;
}

template <class Writer>
bool Write(Writer& writer, const PrxCodeWord& word) {
    return writer.WriteBits(word.bits, word.length);
}

/// Codes one level. Returns whether it fitted.
template <class Writer>
bool CodeLevel(const PrxLevelList& list, ptrdiff_t i, Writer& writer, PrxPlaneStatistics* statistics) {
    const PrxCodeWord run = PrxCodeWordOf(PrxGetCodeBook(PrxRunBook(list.Run(i - 1))), list.Run(i));
    const PrxCodeBook levelBook = PrxGetCodeBook(PrxLevelBook(list.Magnitude(i - 1)));
    const PrxCodeWord sign = {list.Level(i) & uint64_t{1}, 1};
    const PrxCodeWord level = PrxCodeWordOf(levelBook, list.Magnitude(i) - 1).Then(sign);
    // In one, so that a cut never leaves a run without its level: what stands behind would be read as one.
    if (!Write(writer, run.Then(level))) return false;
    statistics->runBits += static_cast<int32_t>(run.length);
    return true;
}

} // namespace

template <class Writer>
bool PrxCodeFirstDc(const PrxPlaneLevels& plane, Writer& writer, PrxPlaneStatistics* statistics) {
    const int32_t value = SignedLevel(plane.levels[0]);
    const PrxCodeWord word = PrxCodeWordOf(PrxGetCodeBook(prxFirstDcBook), Fold(value));
    if (!Write(writer, word)) return false;
    statistics->dcBits = static_cast<int32_t>(word.length);
    statistics->dcChanges = value != 0 ? 1 : 0;
    return true;
}

template <class Writer>
bool PrxCodeDcDifferences(const PrxPlaneLevels& plane, uint32_t from, uint32_t to, Writer& writer,
                          PrxPlaneStatistics* statistics) {
    const auto valueOf = [&](uint32_t block) {
        return SignedLevel(plane.levels[block * plane.blockDistance]);
    };
    int32_t last = valueOf(from - 1);
    int32_t previous = from > 1 ? last - valueOf(from - 2) : static_cast<int32_t>(prxFirstDcDelta);
    for (uint32_t block = from; block < to; ++block) {
        const int32_t delta = valueOf(block) - last;
        const PrxCodeBook book = PrxGetCodeBook(PrxDcBook(static_cast<uint32_t>(std::abs(previous))));
        const PrxCodeWord word = PrxCodeWordOf(book, Fold(previous < 0 ? -delta : delta));
        if (!Write(writer, word)) return false;
        statistics->dcBits += static_cast<int32_t>(word.length);
        statistics->dcChanges += delta != 0 ? 1 : 0;
        previous = delta;
        last += delta;
    }
    return true;
}

template <class Writer>
size_t PrxCodeLevels(const PrxLevelList& list, size_t from, size_t to, Writer& writer,
                     PrxPlaneStatistics* statistics) {
    for (size_t i = from; i < to; ++i)
        if (!CodeLevel(list, static_cast<ptrdiff_t>(i), writer, statistics)) return i;
    return to;
}

template bool PrxCodeFirstDc(const PrxPlaneLevels&, PrxBitCounter&, PrxPlaneStatistics*);
template bool PrxCodeFirstDc(const PrxPlaneLevels&, PrxBitWriter&, PrxPlaneStatistics*);
template bool PrxCodeDcDifferences(const PrxPlaneLevels&, uint32_t, uint32_t, PrxBitCounter&,
                                   PrxPlaneStatistics*);
template bool PrxCodeDcDifferences(const PrxPlaneLevels&, uint32_t, uint32_t, PrxBitWriter&,
                                   PrxPlaneStatistics*);
template size_t PrxCodeLevels(const PrxLevelList&, size_t, size_t, PrxBitCounter&, PrxPlaneStatistics*);
template size_t PrxCodeLevels(const PrxLevelList&, size_t, size_t, PrxBitWriter&, PrxPlaneStatistics*);
