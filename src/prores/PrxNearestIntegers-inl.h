// The integers nearest to floats, in one instruction. For inclusion once for each instruction set, as Highway
// does it.

#if defined(CORVEX_PRORES_PRX_NEAREST_INTEGERS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CORVEX_PRORES_PRX_NEAREST_INTEGERS_INL_H
#undef CORVEX_PRORES_PRX_NEAREST_INTEGERS_INL_H
#else
#define CORVEX_PRORES_PRX_NEAREST_INTEGERS_INL_H
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

#if HWY_ARCH_X86 && HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace prx_nearest {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// Integers nearest to `v`, in the mode in force; the values must fit in 32 bits. Highway's own form takes
/// care of values that don't, which costs as much again as an arithmetic step.
template <size_t N>
HWY_INLINE hn::Vec128<int32_t, N> NearestIntegers(hn::Vec128<float, N> v) {
    return hn::Vec128<int32_t, N>{_mm_cvtps_epi32(v.raw)};
}

#if HWY_TARGET <= HWY_AVX2
HWY_INLINE hn::Vec256<int32_t> NearestIntegers(hn::Vec256<float> v) {
    return hn::Vec256<int32_t>{_mm256_cvtps_epi32(v.raw)};
}
#endif

#if HWY_TARGET <= HWY_AVX3
HWY_INLINE hn::Vec512<int32_t> NearestIntegers(hn::Vec512<float> v) {
    return hn::Vec512<int32_t>{_mm512_cvtps_epi32(v.raw)};
}
#endif

} // namespace HWY_NAMESPACE
} // namespace prx_nearest
HWY_AFTER_NAMESPACE();

#endif
#endif
