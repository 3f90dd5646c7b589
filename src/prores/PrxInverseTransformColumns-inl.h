// Column pass of the vector transforms. For inclusion once for each instruction set, as Highway does it.

#if defined(CORVEX_PRORES_PRX_INVERSE_TRANSFORM_COLUMNS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CORVEX_PRORES_PRX_INVERSE_TRANSFORM_COLUMNS_INL_H
#undef CORVEX_PRORES_PRX_INVERSE_TRANSFORM_COLUMNS_INL_H
#else
#define CORVEX_PRORES_PRX_INVERSE_TRANSFORM_COLUMNS_INL_H
#endif

#include "prores/PrxFixedPoint.h"
#include "prores/PrxInverseTransformRows-inl.h"
#include "prores/PrxTransformTables.h"

#include <array>
#include <cstdint>

#include <hwy/highway.h>

#if HWY_ARCH_X86 && HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace prx_inverse_transform {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

template <int16_t Factor, class V>
HWY_INLINE V MulHigh(V v) {
    alignas(vectorBytes) static constexpr Factors factor = Repeat(std::array{Factor});
    return hn::MulHigh(v, hn::Load(hn::DFromV<V>(), factor.data()));
}

/// `v` times `Factor` + 1, for the factors that are stored less 1: these are negative, so the sum lies
/// between 0 and `v`, and needs no saturation.
template <int16_t Factor, class V>
HWY_INLINE V MulHighPlus(V v) {
    return hn::Add(MulHigh<Factor>(v), v);
}

/// `a + b` to the row `y` of `Height` rows, and `a - b` to its mirror image.
template <int32_t Height, class V>
HWY_INLINE void StoreMirrored(V* rows, int32_t y, V a, V b) {
    rows[y] = hn::SaturatedAdd(a, b);
    rows[Height - 1 - y] = hn::SaturatedSub(a, b);
}

/// Adds the half to all samples, less 1 where x + y is odd. Kept.
template <class D>
HWY_INLINE void AddCheckerboard(D d, hn::Vec<D>* rows, int32_t half) {
    const Wide<D> pairs;
    const hn::Vec<D> halves = hn::Set(d, static_cast<int16_t>(half));
    const hn::Vec<D> lessAtOddX = hn::Add(halves, hn::BitCast(d, hn::Set(pairs, -0x10000)));
    const hn::Vec<D> lessAtEvenX = hn::Add(halves, hn::BitCast(d, hn::Set(pairs, 0xFFFF)));
    for (int32_t y = 0; y < 8; ++y)
        rows[y] = hn::SaturatedAdd(rows[y], y % 2 == 0 ? lessAtOddX : lessAtEvenX);
}

/// What the row pass makes of row `Y` of a block of `Height` rows if it is all zeros.
template <int32_t Height, int32_t Y>
inline constexpr int16_t rowOfZeros = prxTransformRows<Height>[Y].rounder >> prxRowShift;

/// Whether the row pass leaves zeros as they are in the rows from `Y` on.
template <int32_t Height, int32_t Y>
constexpr bool KeepsZerosFrom() {
    for (int32_t y = Y; y < Height; ++y)
        if (prxTransformRows<Height>[y].rounder >> prxRowShift != 0) return false;
    return true;
}

/// The column pass of 8 rows, of which the first `Filled` went through the row pass: 8, 4 or 2. The others
/// are all zeros before it, and stand there as they did.
template <int32_t Filled, class D, class V = hn::Vec<D>>
HWY_INLINE void TransformColumns8(D d, V* r, int32_t half) {
    static_assert(KeepsZerosFrom<8, 3>());
    V u0 = r[1], u1 = MulHigh<prxTan1>(r[1]), u2 = hn::Zero(d), u3 = hn::Zero(d);
    V g0 = hn::Set(d, rowOfZeros<8, 2>), g1 = hn::Set(d, PrxMulHigh(rowOfZeros<8, 2>, prxTan2));
    V e0 = r[0], e1 = r[0];
    if constexpr (Filled >= 4) {
        u2 = r[3];
        u3 = MulHighPlus<prxTan3>(r[3]);
        g0 = r[2];
        g1 = MulHigh<prxTan2>(r[2]);
    }
    if constexpr (Filled == 8) {
        u0 = hn::SaturatedAdd(u0, MulHigh<prxTan1>(r[7]));
        u1 = hn::SaturatedSub(u1, r[7]);
        u2 = hn::SaturatedAdd(MulHighPlus<prxTan3>(r[5]), u2);
        u3 = hn::SaturatedSub(r[5], u3);
        g0 = hn::SaturatedAdd(g0, MulHigh<prxTan2>(r[6]));
        g1 = hn::SaturatedSub(g1, r[6]);
        e0 = hn::SaturatedAdd(e0, r[4]);
        e1 = hn::SaturatedSub(e1, r[4]);
    } else {
        u3 = hn::SaturatedSub(hn::Zero(d), u3);
    }
    const V p0 = hn::SaturatedAdd(u0, u2);
    const V p1 = hn::SaturatedSub(u0, u2);
    const V p2 = hn::SaturatedAdd(u1, u3);
    const V p3 = hn::SaturatedSub(u1, u3);
    const V q0 = MulHighPlus<prxCos4>(hn::SaturatedAdd(p1, p3));
    const V q1 = MulHighPlus<prxCos4>(hn::SaturatedSub(p1, p3));
    StoreMirrored<8>(r, 0, hn::SaturatedAdd(e0, g0), p0);
    StoreMirrored<8>(r, 1, hn::SaturatedAdd(e1, g1), q0);
    StoreMirrored<8>(r, 2, hn::SaturatedSub(e1, g1), q1);
    StoreMirrored<8>(r, 3, hn::SaturatedSub(e0, g0), p2);
    AddCheckerboard(d, r, half);
}

/// The same of 4 rows: `Filled` is 4 or 2.
template <int32_t Filled, class D, class V = hn::Vec<D>>
HWY_INLINE void TransformColumns4(D d, V* r, int32_t half) {
    V o0 = r[1], o1 = MulHigh<prxTan2>(r[1]);
    V e0 = hn::SaturatedAdd(r[0], hn::Set(d, static_cast<int16_t>(half)));
    V e1 = e0;
    static_assert(KeepsZerosFrom<4, 2>());
    if constexpr (Filled == 4) {
        o0 = hn::SaturatedAdd(o0, MulHigh<prxTan2>(r[3]));
        o1 = hn::SaturatedSub(o1, r[3]);
        e0 = hn::SaturatedAdd(e0, r[2]);
        e1 = hn::SaturatedSub(e1, r[2]);
    }
    StoreMirrored<4>(r, 0, e0, o0);
    StoreMirrored<4>(r, 1, e1, o1);
}

} // namespace HWY_NAMESPACE
} // namespace prx_inverse_transform
HWY_AFTER_NAMESPACE();

#endif
#endif
