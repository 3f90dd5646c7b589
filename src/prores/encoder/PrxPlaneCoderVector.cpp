// Vectors of 16-bit lanes are moved together with instructions that Highway takes as a target of their own.
#define HWY_WANT_AVX3_DL

#include "prores/encoder/PrxPlaneCoderVector.h"

#include "prores/encoder/PrxPlaneCodes.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "prores/encoder/PrxPlaneCoderVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "prores/encoder/PrxCodeBatch-inl.h"
#include "prores/encoder/PrxCodeGroups-inl.h"
#include "prores/encoder/PrxPlaneWalk-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prx_plane_coder {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors there is nothing to gain on the reference form.
bool PickCoder(PrxPlaneCoder*) { return false; }

#else

namespace hn = hwy::HWY_NAMESPACE;

using prx_code_batch::HWY_NAMESPACE::CodeBatch;
using prx_code_groups::HWY_NAMESPACE::D16;
using prx_code_groups::HWY_NAMESPACE::DcValues;
using prx_code_groups::HWY_NAMESPACE::DI16;
using prx_code_groups::HWY_NAMESPACE::Group;
using prx_code_groups::HWY_NAMESPACE::groupSize;
using prx_code_groups::HWY_NAMESPACE::LevelGroup;
using prx_code_groups::HWY_NAMESPACE::V16;
using prx_code_groups::HWY_NAMESPACE::VI16;
using prx_plane_walk::HWY_NAMESPACE::ListLevels;
using prx_plane_walk::HWY_NAMESPACE::OrderedLevels;
using prx_plane_walk::HWY_NAMESPACE::OrderPlane;

/// Sum of all lanes.
HWY_INLINE int32_t Sum(V16 v) {
    const hn::RepartitionToWide<D16> d;
    const auto pairs = hn::BitCast(d, v);
    const auto sums = hn::Add(hn::And(pairs, hn::Set(d, 0xFFFF)), hn::ShiftRight<16>(pairs));
    return static_cast<int32_t>(hn::GetLane(hn::SumOfLanes(d, sums)));
}

/// Counts the first `count` levels. A lane has no more than 252 of them.
HWY_INLINE void FillHistogram(const PrxLevelList& list, size_t count, PrxPlaneStatistics* statistics) {
    constexpr size_t size = prxLevelThresholds.size();
    const D16 d;
    const DI16 di;
    const VI16 one = hn::Set(di, int16_t{1});
    VI16 above[size];
    for (size_t k = 1; k < size; ++k)
        above[k] = hn::Zero(di);
    for (size_t i = 0; i < count; i += groupSize) {
        const V16 level = hn::LoadU(d, &list.Level(static_cast<ptrdiff_t>(i)));
        const V16 magnitude = hn::IfThenElseZero(hn::FirstN(d, count - i), hn::ShiftRight<1>(level));
        for (size_t k = 1; k < size; ++k) {
            const VI16 threshold = hn::Set(di, static_cast<int16_t>(prxLevelThresholds[k]));
            const auto isAbove = hn::Gt(hn::BitCast(di, magnitude), threshold);
            above[k] = hn::IfThenElse(isAbove, hn::Add(above[k], one), above[k]);
        }
    }
    statistics->levelHistogram[0] = static_cast<int32_t>(count);
    for (size_t k = 1; k < size; ++k)
        statistics->levelHistogram[k] = Sum(hn::BitCast(d, above[k]));
}

HWY_INLINE void CountDc(const PrxPlaneLevels& plane, const OrderedLevels& ordered,
                        PrxPlaneStatistics* statistics) {
    PrxBitCounter counter;
    PrxCodeFirstDc(plane, counter, statistics);
    const DcValues values(ordered, plane.blockCount);
    if (!values.Fit()) {
        PrxCodeDcDifferences(plane, 1, plane.blockCount, counter, statistics);
        return;
    }
    for (uint32_t i = 1; i < plane.blockCount; i += groupSize) {
        statistics->dcBits += Sum(values.Differences(i).lastLength);
        statistics->dcChanges += values.CountChanges(i);
    }
}

HWY_INLINE void CountLevels(const PrxLevelList& list, PrxPlaneStatistics* statistics) {
    V16 runLength = hn::Zero(D16());
    V16 levelLength = runLength;
    for (size_t i = 0; i < list.count; i += groupSize) {
        const Group group = LevelGroup(list, i);
        runLength = hn::Add(runLength, group.firstLength);
        levelLength = hn::Add(levelLength, group.lastLength);
    }
    statistics->runBits = Sum(runLength);
    statistics->acBits = statistics->runBits + Sum(levelLength);
}

PrxPlaneStatistics CountPlane(const PrxPlaneLevels& plane) {
    PrxPlaneStatistics statistics;
    OrderedLevels ordered;
    OrderPlane(plane, &ordered);
    CountDc(plane, ordered, &statistics);
    PrxLevelList list;
    ListLevels(ordered, plane.blockCount, &list);
    CountLevels(list, &statistics);
    FillHistogram(list, list.count, &statistics);
    return statistics;
}

/// Returns whether all DC values fitted.
HWY_INLINE bool WriteDc(const PrxPlaneLevels& plane, const OrderedLevels& ordered, CodeBatch& batch,
                        PrxBitWriter& writer, PrxPlaneStatistics* statistics) {
    if (!PrxCodeFirstDc(plane, writer, statistics)) return false;
    const DcValues values(ordered, plane.blockCount);
    for (uint32_t i = 1; i < plane.blockCount; i += groupSize) {
        const Group group = values.Differences(i);
        if (values.Fit() && CodeBatch::Takes(group) && batch.HasRoom(CodeBatch::BitsOf(group))) {
            batch.Add(group, CodeBatch::BitsOf(group));
            statistics->dcBits += Sum(group.lastLength);
            statistics->dcChanges += values.CountChanges(i);
            continue;
        }
        batch.Flush();
        const uint32_t end = std::min(i + uint32_t{groupSize}, plane.blockCount);
        if (!PrxCodeDcDifferences(plane, i, end, writer, statistics)) return false;
    }
    return true;
}

/// How a group's bits are compared with a batch's room: by the most that they could be, or summed up.
enum class Room { Ample, Scarce };

/// Adds groups of levels, from `from` on, to a batch, until one that it does not take or have room for, or
/// until all are added. Returns the first level that was not added. Calls nothing, so that all constants stay
/// in registers.
template <Room room>
HWY_NOINLINE size_t AddLevels(const PrxLevelList& list, size_t from, CodeBatch& batch,
                              PrxPlaneStatistics* statistics) {
    V16 runLength = hn::Zero(D16());
    size_t i = from;
    for (; i < list.count; i += groupSize) {
        const Group group = LevelGroup(list, i);
        if (!CodeBatch::Takes(group)) break;
        const size_t bits = room == Room::Ample ? CodeBatch::mostBits : CodeBatch::BitsOf(group);
        if (!batch.HasRoom(bits)) break;
        batch.Add(group, bits);
        runLength = hn::Add(runLength, group.firstLength);
    }
    statistics->runBits += Sum(runLength);
    return std::min(i, list.count);
}

/// Writes the levels; a group with a long code, or with the end of the budget in it, one by one. Returns how
/// many fitted.
HWY_INLINE size_t WriteLevels(const PrxLevelList& list, CodeBatch& batch, PrxBitWriter& writer,
                              PrxPlaneStatistics* statistics) {
    size_t i = AddLevels<Room::Ample>(list, 0, batch, statistics);
    batch.Flush();
    while (i < list.count) {
        i = AddLevels<Room::Scarce>(list, i, batch, statistics);
        batch.Flush();
        const size_t groupEnd = std::min(i + groupSize, list.count);
        i = PrxCodeLevels(list, i, groupEnd, writer, statistics);
        if (i < groupEnd) break;
    }
    return i;
}

PrxPlaneStatistics WritePlane(const PrxPlaneLevels& plane, PrxBitWriter& writer) {
    PrxPlaneStatistics statistics;
    OrderedLevels ordered;
    OrderPlane(plane, &ordered);
    const uint64_t before = writer.Bits();
    CodeBatch batch(writer);
    if (!WriteDc(plane, ordered, batch, writer, &statistics)) return statistics;

    PrxLevelList list;
    ListLevels(ordered, plane.blockCount, &list);
    const size_t written = WriteLevels(list, batch, writer, &statistics);
    statistics.acBits = static_cast<int32_t>(writer.Bits() - before) - statistics.dcBits;
    FillHistogram(list, written, &statistics);
    return statistics;
}

bool PickCoder(PrxPlaneCoder* coder) {
    *coder = {CountPlane, WritePlane};
    return true;
}

#endif

} // namespace HWY_NAMESPACE
} // namespace prx_plane_coder
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prx_plane_coder {
namespace {
HWY_EXPORT(PickCoder);
} // namespace
} // namespace prx_plane_coder

std::optional<PrxPlaneCoder> PrxVectorPlaneCoder() {
    using namespace prx_plane_coder;
    PrxPlaneCoder coder;
    if (!HWY_DYNAMIC_DISPATCH(PickCoder)(&coder)) return std::nullopt;
    return coder;
}
#endif
