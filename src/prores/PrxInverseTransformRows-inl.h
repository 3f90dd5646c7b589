// Row pass of the vector transforms. For inclusion once for each instruction set, as Highway does it.

#if defined(CORVEX_PRORES_PRX_INVERSE_TRANSFORM_ROWS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CORVEX_PRORES_PRX_INVERSE_TRANSFORM_ROWS_INL_H
#undef CORVEX_PRORES_PRX_INVERSE_TRANSFORM_ROWS_INL_H
#else
#define CORVEX_PRORES_PRX_INVERSE_TRANSFORM_ROWS_INL_H
#endif

#include "prores/PrxTransformTables.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include <hwy/highway.h>

#if HWY_ARCH_X86 && HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace prx_inverse_transform {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// A vector holds, in each 128 bits of it, eight values of one row: a whole row of a block 8 wide, or the rows
// of two blocks 4 wide. So all that follows happens to several blocks at once.

/// Values in 128 bits.
constexpr int32_t lanesPer128 = 8;

/// Most values in a vector. Larger ones would be no faster, and take more blocks than a macroblock often has.
constexpr size_t maxLanes = 16;
constexpr size_t vectorBytes = maxLanes * sizeof(int16_t);

template <class D>
using Wide = hn::RepartitionToWide<D>;

/// A vector of one 128 bits after the other, from places that are `stride` values apart.
template <class D>
HWY_INLINE hn::Vec<D> LoadStrided(D d, const int16_t* from, int32_t stride) {
    if constexpr (hn::MaxLanes(D()) == lanesPer128) {
        return hn::LoadU(d, from);
    } else {
        const hn::Half<D> half;
        const int32_t steps = static_cast<int32_t>(hn::MaxLanes(half)) / lanesPer128;
        return hn::Combine(d, LoadStrided(half, from + steps * stride, stride),
                           LoadStrided(half, from, stride));
    }
}

template <class D>
HWY_INLINE void StoreStrided(D d, hn::Vec<D> v, int16_t* to, int32_t stride) {
    if constexpr (hn::MaxLanes(D()) == lanesPer128) {
        hn::StoreU(v, d, to);
    } else {
        const hn::Half<D> half;
        const int32_t steps = static_cast<int32_t>(hn::MaxLanes(half)) / lanesPer128;
        StoreStrided(half, hn::LowerHalf(half, v), to, stride);
        StoreStrided(half, hn::UpperHalf(half, v), to + steps * stride, stride);
    }
}

/// Stores two vectors by turns, 128 bits of each, to places that are `stride` values apart.
template <class D>
HWY_INLINE void StoreTwoRows(D d, hn::Vec<D> upper, hn::Vec<D> lower, int16_t* to, int32_t stride) {
    if constexpr (hn::MaxLanes(D()) == 2 * lanesPer128) {
        hn::StoreU(hn::ConcatLowerLower(d, lower, upper), d, to);
        hn::StoreU(hn::ConcatUpperUpper(d, lower, upper), d, to + stride);
    } else {
        StoreStrided(d, upper, to, stride);
        StoreStrided(d, lower, to + lanesPer128, stride);
    }
}

/// Halves of 128 bits: of `a` and of `b`.
template <class D>
HWY_INLINE hn::Vec<D> LowerHalves(D d, hn::Vec<D> a, hn::Vec<D> b) {
    const hn::Repartition<uint64_t, D> halves;
    return hn::BitCast(d, hn::InterleaveLower(halves, hn::BitCast(halves, a), hn::BitCast(halves, b)));
}

template <class D>
HWY_INLINE hn::Vec<D> UpperHalves(D d, hn::Vec<D> a, hn::Vec<D> b) {
    const hn::Repartition<uint64_t, D> halves;
    return hn::BitCast(d, hn::InterleaveUpper(halves, hn::BitCast(halves, a), hn::BitCast(halves, b)));
}

/// A constant as it fills the largest vector.
template <typename T>
using Filling = std::array<T, vectorBytes / sizeof(T)>;

template <typename T, size_t Count>
constexpr Filling<T> Repeat(const std::array<T, Count>& values) {
    Filling<T> repeated = {};
    for (size_t i = 0; i < repeated.size(); ++i)
        repeated[i] = values[i % Count];
    return repeated;
}

using Factors = Filling<int16_t>;
using Shuffle = Filling<uint8_t>;
using Rounder = Filling<int32_t>;

/// A shuffle that repeats the values `a` and `b` of 128 bits four times.
constexpr Shuffle RepeatPair(int32_t a, int32_t b) {
    const auto byte = [](int32_t i) { return static_cast<uint8_t>(i); };
    return Repeat(std::array{byte(2 * a), byte(2 * a + 1), byte(2 * b), byte(2 * b + 1)});
}

template <class D>
HWY_INLINE hn::Vec<D> ShuffleBytes(D d, hn::Vec<D> v, const Shuffle& shuffle) {
    const hn::Repartition<uint8_t, D> bytes;
    return hn::BitCast(d, hn::TableLookupBytes(hn::BitCast(bytes, v), hn::Load(bytes, shuffle.data())));
}

/// To `sums`, adds the values `First` and `Second` of the row times their factors.
template <int32_t First, int32_t Second, class D>
HWY_INLINE hn::Vec<Wide<D>> AddPair(D d, hn::Vec<Wide<D>> sums, hn::Vec<D> row, const Factors& factors) {
    alignas(vectorBytes) static constexpr Shuffle shuffle = RepeatPair(First, Second);
    hn::Vec<Wide<D>> unused = hn::Zero(Wide<D>());
    return hn::ReorderWidenMulAccumulate(Wide<D>(), ShuffleBytes(d, row, shuffle),
                                         hn::Load(d, factors.data()), sums, unused);
}

/// Factors of a row of 8 coefficients, in the order in which one instruction takes them: two for a pair of
/// coefficients, for four sums. A row of 4 is like the even part of one of 8.
struct RowTable {
    alignas(vectorBytes) Factors even02, even46, odd13, odd57;
};

constexpr RowTable MakeRowTable(const PrxRowClass& row) {
    const auto minus = [](int16_t v) { return static_cast<int16_t>(-v); };
    const auto [s, b, c, d, e, f, g] = row;
    return {Repeat(std::array{s, b, s, c, s, minus(c), s, minus(b)}),
            Repeat(std::array{s, c, minus(s), minus(b), minus(s), b, s, minus(c)}),
            Repeat(std::array{d, e, e, minus(g), f, minus(d), g, minus(f)}),
            Repeat(std::array{f, g, minus(d), minus(f), g, e, e, minus(d)})};
}

template <size_t RowClass>
alignas(vectorBytes) constexpr RowTable rowTable = MakeRowTable(prxRowClasses[RowClass]);

template <int32_t Value>
alignas(vectorBytes) constexpr Rounder rounder = Repeat(std::array{Value});

/// Eight results of each 128 bits: four sums of `first`, then four of `second`, shifted and saturated.
template <class D>
HWY_INLINE hn::Vec<D> RowResults(D d, hn::Vec<Wide<D>> first, hn::Vec<Wide<D>> second) {
    return hn::ReorderDemote2To(d, hn::ShiftRight<prxRowShift>(first), hn::ShiftRight<prxRowShift>(second));
}

template <int32_t Width, int32_t Height, size_t Y, class D>
HWY_INLINE hn::Vec<D> TransformRow(D d, hn::Vec<D> row) {
    constexpr PrxTransformRow kind = prxTransformRows<Height>[Y];
    constexpr const RowTable& table = rowTable<kind.rowClass>;
    const auto start = hn::Load(Wide<D>(), rounder<kind.rounder>.data());
    if constexpr (Width == 8) {
        const auto even = AddPair<4, 6>(d, AddPair<0, 2>(d, start, row, table.even02), row, table.even46);
        const auto zero = hn::Zero(Wide<D>());
        const auto odd = AddPair<5, 7>(d, AddPair<1, 3>(d, zero, row, table.odd13), row, table.odd57);
        return RowResults(d, hn::Add(even, odd), hn::Shuffle0123(hn::Sub(even, odd)));
    } else {
        const auto left = AddPair<2, 3>(d, AddPair<0, 1>(d, start, row, table.even02), row, table.even46);
        const auto right = AddPair<6, 7>(d, AddPair<4, 5>(d, start, row, table.even02), row, table.even46);
        return RowResults(d, left, right);
    }
}

template <int32_t Width, class D>
HWY_INLINE hn::Vec<D> Dequantise(D d, hn::Vec<D> row, const int16_t* factors) {
    hn::Vec<D> repeated = hn::LoadDup128(d, factors);
    if constexpr (Width == 4) repeated = LowerHalves(d, repeated, repeated);
    return hn::ShiftRight<1>(hn::Mul(row, repeated));
}

/// Dequantises and transforms the rows `Y`.
template <int32_t Width, int32_t Height, class D, size_t... Y>
HWY_INLINE void TransformRows(D d, hn::Vec<D>* rows, const int16_t* quantTable, std::index_sequence<Y...>) {
    ((rows[Y] = Dequantise<Width>(d, rows[Y], quantTable + 8 * Y)), ...);
    ((rows[Y] = TransformRow<Width, Height, Y>(d, rows[Y])), ...);
}

/// Rows in an order that brings those of one class together, which share what is loaded for them.
template <int32_t Height>
using AllRows = std::conditional_t<Height == 8, std::index_sequence<0, 4, 1, 7, 2, 6, 3, 5>,
                                   std::index_sequence<0, 2, 1, 3>>;

} // namespace HWY_NAMESPACE
} // namespace prx_inverse_transform
HWY_AFTER_NAMESPACE();

#endif
#endif
