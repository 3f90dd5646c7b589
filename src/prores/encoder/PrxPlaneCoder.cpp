#include "prores/encoder/PrxPlaneCoder.h"

#include "prores/encoder/PrxPlaneCoderVector.h"
#include "prores/encoder/PrxPlaneCodes.h"
#include "prores/encoder/PrxPlaneWalk.h"

namespace {

/// Counts the first `count` levels.
void FillHistogram(const PrxLevelList& list, size_t count, PrxPlaneStatistics* statistics) {
    for (size_t i = 0; i < count; ++i) {
        const auto magnitude = static_cast<int32_t>(list.Magnitude(static_cast<ptrdiff_t>(i)));
        for (size_t k = 0; k < prxLevelThresholds.size(); ++k)
            statistics->levelHistogram[k] += magnitude > prxLevelThresholds[k] ? 1 : 0;
    }
}

template <class Writer>
PrxPlaneStatistics CodePlane(const PrxPlaneLevels& plane, Writer& writer) {
    PrxPlaneStatistics statistics;
    if (!PrxCodeFirstDc(plane, writer, &statistics) ||
        !PrxCodeDcDifferences(plane, 1, plane.blockCount, writer, &statistics))
        return statistics;
    PrxLevelList list;
    PrxWalkPlane(plane, &list);
    const uint64_t before = writer.Bits();
    const size_t coded = PrxCodeLevels(list, 0, list.count, writer, &statistics);
    statistics.acBits = static_cast<int32_t>(writer.Bits() - before);
    FillHistogram(list, coded, &statistics);
    return statistics;
}

PrxPlaneStatistics CountPlane(const PrxPlaneLevels& plane) {
    PrxBitCounter counter;
    return CodePlane(plane, counter);
}

} // namespace

PrxPlaneCoder PrxScalarPlaneCoder() { return {CountPlane, CodePlane<PrxBitWriter>}; }

PrxPlaneCoder PrxSelectPlaneCoder() { return PrxVectorPlaneCoder().value_or(PrxScalarPlaneCoder()); }
