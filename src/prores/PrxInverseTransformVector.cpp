#include "prores/PrxInverseTransformVector.h"

#include "prores/PrxTransformTables.h"

#include <algorithm>
#include <type_traits>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "prores/PrxInverseTransformVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "prores/PrxInverseTransformColumns-inl.h"
#include "prores/PrxInverseTransformRows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prx_inverse_transform {
namespace HWY_NAMESPACE {

#if !HWY_ARCH_X86 || HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// The row pass stands and falls with an instruction that multiplies and adds neighbours.
PrxInverseTransform PickTransform(int32_t, int32_t) { return nullptr; }

#else

namespace hn = hwy::HWY_NAMESPACE;

// ---------------------------------------------------------------------------------------------------------
// Rows in memory

template <int32_t Width, int32_t Height, class D>
HWY_INLINE void LoadRows(D d, const int16_t* from, hn::Vec<D>* rows) {
    constexpr int32_t size = Width * Height;
    if constexpr (Width == 8) {
        for (int32_t y = 0; y < Height; ++y)
            rows[y] = LoadStrided(d, from + 8 * y, size);
    } else {
        for (int32_t y = 0; y < Height; y += 2) {
            const hn::Vec<D> even = LoadStrided(d, from + 4 * y, 2 * size);
            const hn::Vec<D> odd = LoadStrided(d, from + 4 * y + size, 2 * size);
            rows[y] = LowerHalves(d, even, odd);
            rows[y + 1] = UpperHalves(d, even, odd);
        }
    }
}

template <int32_t Width, int32_t Height, class D>
HWY_INLINE void StoreRows(D d, const hn::Vec<D>* rows, int16_t* to) {
    constexpr int32_t size = Width * Height;
    if constexpr (Width == 8) {
        for (int32_t y = 0; y < Height; ++y)
            StoreStrided(d, rows[y], to + 8 * y, size);
    } else {
        for (int32_t y = 0; y < Height; y += 2) {
            StoreStrided(d, LowerHalves(d, rows[y], rows[y + 1]), to + 4 * y, 2 * size);
            StoreStrided(d, UpperHalves(d, rows[y], rows[y + 1]), to + 4 * y + size, 2 * size);
        }
    }
}

// ---------------------------------------------------------------------------------------------------------
// Blocks

template <int32_t Width, int32_t Height, LowerRows Lower, class D>
HWY_INLINE void TransformLoaded(D d, hn::Vec<D>* rows, int32_t half, const int16_t* quantTable) {
    using Rows =
        std::conditional_t<Lower == LowerRows::Any, AllRows<Height>, std::make_index_sequence<Height / 2>>;
    TransformRows<Width, Height>(d, rows, quantTable, Rows());
    if constexpr (Height == 8) {
        TransformColumns8<Lower>(d, rows, half);
    } else {
        TransformColumns4<Lower>(d, rows, half);
    }
}

/// Whether the row pass leaves a lower half of zeros as it is.
template <int32_t Height>
constexpr bool KeepsLowerZeros() {
    for (int32_t y = Height / 2; y < Height; ++y)
        if (prxTransformRows<Height>[y].rounder >> prxRowShift != 0) return false;
    return true;
}

/// Many blocks have nothing in their lower half, which then needs no row pass.
template <int32_t Height, class D>
HWY_INLINE bool IsLowerHalfZero(D d, const hn::Vec<D>* rows) {
    static_assert(KeepsLowerZeros<Height>());
    hn::Vec<D> any = rows[Height / 2];
    for (int32_t y = Height / 2 + 1; y < Height; ++y)
        any = hn::Or(any, rows[y]);
    return hn::AllTrue(d, hn::Eq(any, hn::Zero(d)));
}

template <int32_t Width, int32_t Height, class D>
HWY_INLINE void TransformGroup(D d, const int16_t* coefficients, int16_t* samples, int32_t depth,
                               const int16_t* quantTable) {
    const int32_t half = PrxSampleHalf(depth);
    hn::Vec<D> rows[Height];
    LoadRows<Width, Height>(d, coefficients, rows);
    if (IsLowerHalfZero<Height>(d, rows)) {
        TransformLoaded<Width, Height, LowerRows::Zero>(d, rows, half, quantTable);
    } else {
        TransformLoaded<Width, Height, LowerRows::Any>(d, rows, half, quantTable);
    }
    for (hn::Vec<D>& row : rows)
        row = hn::ShiftRightSame(row, PrxSampleShift(depth));
    StoreRows<Width, Height>(d, rows, samples);
}

template <int32_t Width, int32_t Height>
void TransformBlocks(const int16_t* coefficients, int16_t* samples, int32_t blockCount, int32_t depth,
                     const int16_t* quantTable) {
    const hn::CappedTag<int16_t, maxLanes> d;
    constexpr int32_t size = Width * Height;
    constexpr int32_t group = static_cast<int32_t>(hn::MaxLanes(d)) / Width;
    int32_t block = 0;
    for (; block + group <= blockCount; block += group)
        TransformGroup<Width, Height>(d, coefficients + block * size, samples + block * size, depth,
                                      quantTable);
    if (block >= blockCount) return;

    // A last, partial group goes through memory of its own.
    int16_t padded[group * size] = {};
    int16_t transformed[group * size];
    const int32_t values = (blockCount - block) * size;
    std::copy_n(coefficients + block * size, values, padded);
    TransformBlocks<Width, Height>(padded, transformed, group, depth, quantTable);
    std::copy_n(transformed, values, samples + block * size);
}

PrxInverseTransform PickTransform(int32_t hShift, int32_t vShift) {
    if (hShift == 0 && vShift == 0) return TransformBlocks<8, 8>;
    if (hShift == 0 && vShift == 1) return TransformBlocks<8, 4>;
    if (hShift == 1 && vShift == 0) return TransformBlocks<4, 8>;
    if (hShift == 1 && vShift == 1) return TransformBlocks<4, 4>;
    return nullptr;
}

#endif

} // namespace HWY_NAMESPACE
} // namespace prx_inverse_transform
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prx_inverse_transform {
namespace {

HWY_EXPORT(PickTransform);

} // namespace
} // namespace prx_inverse_transform

PrxInverseTransform PrxVectorInverseTransform(int32_t hShift, int32_t vShift) {
    return HWY_DYNAMIC_DISPATCH(prx_inverse_transform::PickTransform)(hShift, vShift);
}
#endif
