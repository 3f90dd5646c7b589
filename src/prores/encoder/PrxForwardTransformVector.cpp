#include "prores/encoder/PrxForwardTransformVector.h"

#include "prores/encoder/PrxForwardTables.h"

#include <algorithm>
#include <array>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "prores/encoder/PrxForwardTransformVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "prores/PrxInverseTransformColumns-inl.h"
#include "prores/PrxInverseTransformRows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prx_forward_transform {
namespace HWY_NAMESPACE {

#if !HWY_ARCH_X86 || HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// The row pass stands and falls with an instruction that multiplies and adds neighbours.
PrxForwardTransform PickTransform() { return nullptr; }

#else

namespace hn = hwy::HWY_NAMESPACE;
namespace inverse = prx_inverse_transform::HWY_NAMESPACE;

using inverse::Factors;
using inverse::MulHigh;
using inverse::MulHighPlus;
using inverse::Repeat;
using inverse::Rounder;
using inverse::Shuffle;
using inverse::ShuffleBytes;
using inverse::vectorBytes;
using inverse::Wide;

// A vector holds one row of one block, or the rows of two, one in each 128 bits of it.

/// The column pass on all columns of the rows `r`, step by step as the reference form does it.
template <class V>
HWY_INLINE void TransformColumns(V* r) {
    const V t0 = hn::SaturatedAdd(r[0], r[7]), t7 = hn::SaturatedSub(r[0], r[7]);
    const V t1 = hn::SaturatedAdd(r[1], r[6]), t6 = hn::SaturatedSub(r[1], r[6]);
    const V t2 = hn::SaturatedAdd(r[2], r[5]), t5 = hn::SaturatedSub(r[2], r[5]);
    const V t3 = hn::SaturatedAdd(r[3], r[4]), t4 = hn::SaturatedSub(r[3], r[4]);

    const V e0 = hn::SaturatedAdd(t0, t3), e3 = hn::SaturatedSub(t0, t3);
    const V e1 = hn::SaturatedAdd(t1, t2), e2 = hn::SaturatedSub(t1, t2);
    r[0] = hn::SaturatedAdd(e0, e1);
    r[4] = hn::SaturatedSub(e0, e1);
    r[2] = hn::SaturatedAdd(e3, MulHigh<prxTan2>(e2));
    r[6] = hn::SaturatedSub(MulHigh<prxTan2>(e3), e2);

    const V t5Twice = hn::SaturatedAdd(t5, t5), t6Twice = hn::SaturatedAdd(t6, t6);
    const V sum = MulHigh<prxForwardCos4>(hn::SaturatedAdd(t6Twice, t5Twice));
    const V difference = MulHigh<prxForwardCos4>(hn::SaturatedSub(t6Twice, t5Twice));
    const V o0 = hn::SaturatedAdd(t7, sum), o1 = hn::SaturatedSub(t7, sum);
    const V o2 = hn::SaturatedAdd(t4, difference), o3 = hn::SaturatedSub(t4, difference);
    r[1] = hn::SaturatedAdd(o0, MulHigh<prxTan1>(o2));
    r[7] = hn::SaturatedSub(MulHigh<prxTan1>(o0), o2);
    r[3] = hn::SaturatedSub(o1, MulHighPlus<prxTan3>(o3));
    r[5] = hn::SaturatedAdd(MulHighPlus<prxTan3>(o1), o3);
}

/// Factors of a row as they fill a vector.
struct RowTable {
    alignas(vectorBytes) Factors groups[4];
    alignas(vectorBytes) Rounder firstRounder;
};

constexpr RowTable MakeRowTable(size_t y) {
    const PrxForwardGroups& groups = prxForwardGroups[prxTransformRows<8>[y].rowClass];
    return {{Repeat(groups[0]), Repeat(groups[1]), Repeat(groups[2]), Repeat(groups[3])},
            Repeat(std::array{prxForwardFirstRounders[y], prxForwardHalf, prxForwardHalf, prxForwardHalf})};
}

template <size_t Y>
alignas(vectorBytes) constexpr RowTable rowTable = MakeRowTable(Y);

/// To `sums`, adds each pair of `pairs` times its factors.
template <class D>
HWY_INLINE hn::Vec<Wide<D>> AddPairs(D d, hn::Vec<Wide<D>> sums, hn::Vec<D> pairs, const Factors& factors) {
    hn::Vec<Wide<D>> unused = hn::Zero(Wide<D>());
    return hn::ReorderWidenMulAccumulate(Wide<D>(), pairs, hn::Load(d, factors.data()), sums, unused);
}

template <size_t Y, class D>
HWY_INLINE hn::Vec<D> TransformRow(D d, hn::Vec<D> row) {
    constexpr const RowTable& table = rowTable<Y>;
    alignas(vectorBytes) static constexpr Shuffle mirror =
        Repeat(std::array<uint8_t, 16>{14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1});
    const Wide<D> wide;
    const hn::Vec<D> mirrored = ShuffleBytes(d, row, mirror);
    const auto sums = hn::BitCast(wide, hn::SaturatedAdd(row, mirrored));
    const auto differences = hn::BitCast(wide, hn::SaturatedSub(row, mirrored));
    const auto interleaved = hn::InterleaveLower(wide, sums, differences);
    const hn::Vec<D> pairs = hn::BitCast(d, interleaved);
    const hn::Vec<D> swapped = hn::BitCast(d, hn::Shuffle1032(interleaved));

    const auto first = hn::Load(wide, table.firstRounder.data());
    const auto half = hn::Set(wide, prxForwardHalf);
    const auto low = AddPairs(d, AddPairs(d, first, pairs, table.groups[0]), swapped, table.groups[1]);
    const auto high = AddPairs(d, AddPairs(d, half, pairs, table.groups[2]), swapped, table.groups[3]);
    return hn::ReorderDemote2To(d, hn::ShiftRight<prxForwardRowShift>(low),
                                hn::ShiftRight<prxForwardRowShift>(high));
}

template <class D, size_t... Y>
HWY_INLINE void TransformRows(D d, hn::Vec<D>* rows, std::index_sequence<Y...>) {
    ((rows[Y] = TransformRow<Y>(d, rows[Y])), ...);
}

/// Whether a block has the same sample in all places.
template <class D>
HWY_INLINE bool HasFlatBlock(D d, const hn::Vec<D>* rows) {
    alignas(vectorBytes) static constexpr Shuffle firstSample = inverse::RepeatPair(0, 0);
    const hn::Vec<D> first = ShuffleBytes(d, rows[0], firstSample);
    hn::Vec<D> different = hn::Zero(d);
    for (int32_t y = 0; y < 8; ++y)
        different = hn::Or(different, hn::Xor(rows[y], first));
    const auto inHalves = hn::BitCast(Wide<D>(), different);
    const auto inBlock = hn::Or(inHalves, hn::Shuffle1032(inHalves));
    const hn::Repartition<uint64_t, D> halves;
    return !hn::AllFalse(halves, hn::Eq(hn::BitCast(halves, inBlock), hn::Zero(halves)));
}

template <class D>
constexpr int32_t blocksPerVector = static_cast<int32_t>(hn::MaxLanes(D())) / inverse::lanesPer128;

/// Transforms as many blocks as a vector holds rows of.
template <class D>
HWY_INLINE void TransformGroup(D d, int16_t* blocks);

/// The same where at least one block is flat.
template <class D>
void TransformGroupWithFlat(D d, int16_t* blocks) {
    if constexpr (blocksPerVector<D> == 1) {
        const auto flat = static_cast<int16_t>(4 * blocks[0]);
        std::fill_n(blocks, 64, int16_t{0});
        blocks[0] = flat;
    } else {
        const hn::Half<D> half;
        TransformGroup(half, blocks);
        TransformGroup(half, blocks + 64 * blocksPerVector<hn::Half<D>>);
    }
}

template <class D>
HWY_INLINE void TransformGroup(D d, int16_t* blocks) {
    hn::Vec<D> rows[8];
    for (int32_t y = 0; y < 8; ++y)
        rows[y] = inverse::LoadStrided(d, blocks + 8 * y, 64);
    if (HasFlatBlock(d, rows)) {
        TransformGroupWithFlat(d, blocks);
        return;
    }
    TransformColumns(rows);
    TransformRows(d, rows, inverse::AllRows<8>());
    for (int32_t y = 0; y < 8; ++y)
        inverse::StoreStrided(d, rows[y], blocks + 8 * y, 64);
}

/// Whole groups of the blocks; returns how many blocks these are.
template <class D>
int32_t TransformGroups(D d, int16_t* blocks, int32_t blockCount) {
    int32_t block = 0;
    for (; block + blocksPerVector<D> <= blockCount; block += blocksPerVector<D>)
        TransformGroup(d, blocks + 64 * block);
    return block;
}

void TransformBlocks(int16_t* blocks, int32_t blockCount) {
    const hn::CappedTag<int16_t, inverse::maxLanes> whole;
    const hn::CappedTag<int16_t, inverse::lanesPer128> single;
    const int32_t done = TransformGroups(whole, blocks, blockCount);
    TransformGroups(single, blocks + 64 * done, blockCount - done);
}

PrxForwardTransform PickTransform() { return TransformBlocks; }

#endif

} // namespace HWY_NAMESPACE
} // namespace prx_forward_transform
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prx_forward_transform {
namespace {

HWY_EXPORT(PickTransform);

} // namespace
} // namespace prx_forward_transform

PrxForwardTransform PrxVectorForwardTransform() {
    return HWY_DYNAMIC_DISPATCH(prx_forward_transform::PickTransform)();
}
#endif
