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

/// Loads the first `Filled` rows of `Height`.
template <int32_t Width, int32_t Height, int32_t Filled, class D>
HWY_INLINE void LoadRows(D d, const int16_t* from, hn::Vec<D>* rows) {
    constexpr int32_t size = Width * Height;
    if constexpr (Width == 8) {
        for (int32_t y = 0; y < Filled; ++y)
            rows[y] = LoadStrided(d, from + 8 * y, size);
    } else {
        for (int32_t y = 0; y < Filled; y += 2) {
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
        for (int32_t y = 0; y < Height; y += 2)
            StoreTwoRows(d, rows[y], rows[y + 1], to + 8 * y, size);
    } else {
        for (int32_t y = 0; y < Height; y += 2) {
            StoreStrided(d, LowerHalves(d, rows[y], rows[y + 1]), to + 4 * y, 2 * size);
            StoreStrided(d, UpperHalves(d, rows[y], rows[y + 1]), to + 4 * y + size, 2 * size);
        }
    }
}

// ---------------------------------------------------------------------------------------------------------
// Blocks

/// Whether the rows `First` to `End` - 1 of a group of blocks are all zeros.
template <int32_t Width, int32_t Height, int32_t First, int32_t End, class D>
HWY_INLINE bool AreRowsZero(D d, const int16_t* coefficients) {
    const hn::CappedTag<int16_t, (End - First) * Width> rows;
    constexpr int32_t blocks = static_cast<int32_t>(hn::MaxLanes(d)) / Width;
    hn::Vec<decltype(rows)> any = hn::Zero(rows);
    for (int32_t block = 0; block < blocks; ++block) {
        const int16_t* from = coefficients + (block * Height + First) * Width;
        for (size_t i = 0; i < (End - First) * Width; i += hn::MaxLanes(rows))
            any = hn::Or(any, hn::LoadU(rows, from + i));
    }
    return hn::AllTrue(rows, hn::Eq(any, hn::Zero(rows)));
}

/// Transforms a group of blocks that have zeros from row `Filled` on.
template <int32_t Width, int32_t Height, int32_t Filled, class D>
HWY_INLINE void TransformFilled(D d, const int16_t* coefficients, int16_t* samples, int32_t depth,
                                const int16_t* quantTable) {
    using Rows = std::conditional_t<Filled == Height, AllRows<Height>, std::make_index_sequence<Filled>>;
    const int32_t half = PrxSampleHalf(depth);
    hn::Vec<D> rows[Height];
    LoadRows<Width, Height, Filled>(d, coefficients, rows);
    TransformRows<Width, Height>(d, rows, quantTable, Rows());
    if constexpr (Height == 8) {
        TransformColumns8<Filled>(d, rows, half);
    } else {
        TransformColumns4<Filled>(d, rows, half);
    }
    for (hn::Vec<D>& row : rows)
        row = hn::ShiftRightSame(row, PrxSampleShift(depth));
    StoreRows<Width, Height>(d, rows, samples);
}

/// Many blocks have nothing in their lower half, or but the first two rows, and need no row pass there.
template <int32_t Width, int32_t Height, class D>
HWY_INLINE void TransformGroup(D d, const int16_t* coefficients, int16_t* samples, int32_t depth,
                               const int16_t* quantTable) {
    constexpr int32_t middle = Height / 2;
    if (!AreRowsZero<Width, Height, middle, Height>(d, coefficients))
        return TransformFilled<Width, Height, Height>(d, coefficients, samples, depth, quantTable);
    if constexpr (middle > 2) {
        if (!AreRowsZero<Width, Height, 2, middle>(d, coefficients))
            return TransformFilled<Width, Height, middle>(d, coefficients, samples, depth, quantTable);
    }
    TransformFilled<Width, Height, 2>(d, coefficients, samples, depth, quantTable);
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
