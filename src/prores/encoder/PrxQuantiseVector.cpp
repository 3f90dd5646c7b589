#include "prores/encoder/PrxQuantiseVector.h"

#include "prores/encoder/PrxQuantiseBlocks.h"

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "prores/encoder/PrxQuantiseVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace prx_quantise {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors there is nothing to gain on the scalar form.
PrxQuantiser PickQuantiser() { return nullptr; }

#else

namespace hn = hwy::HWY_NAMESPACE;

/// Levels of coefficients. `doubled` is twice their reciprocals.
template <class D, class V = hn::Vec<D>>
HWY_INLINE hn::Vec<hn::RebindToUnsigned<D>> Quantise(D d, V coefficients, V doubled) {
    const hn::RebindToUnsigned<D> levels;
    const V zero = hn::Zero(d);
    const V fourfold = hn::ShiftLeft<2>(hn::Min(coefficients, hn::Sub(zero, coefficients)));
    // Half of a product, rounded and negated, and then doubled: its negative without the lowest bit.
    const V negated = hn::Sub(zero, hn::MulHigh(fourfold, doubled));
    const auto twice = hn::BitCast(levels, hn::AndNot(hn::Set(d, 1), negated));
    // Twice a magnitude is 0 or above 1, so the lesser of it and the sign bit is the sign of a level.
    const auto sign = hn::ShiftRight<15>(hn::BitCast(levels, coefficients));
    return hn::Or(twice, hn::Min(twice, sign));
}

void QuantiseBlocks(const int16_t* reciprocals, const int16_t* coefficients, int32_t blockCount,
                    uint16_t* to) {
    const hn::CappedTag<int16_t, 32> d;
    const hn::RebindToUnsigned<decltype(d)> levels;
    for (size_t i = 0; i < 64; i += hn::Lanes(d)) {
        const auto reciprocal = hn::Load(d, reciprocals + i);
        const auto doubled = hn::SaturatedAdd(reciprocal, reciprocal);
        for (size_t at = i; at < 64 * static_cast<size_t>(blockCount); at += 64)
            hn::Store(Quantise(d, hn::Load(d, coefficients + at), doubled), levels, to + at);
    }
}

PrxQuantiser PickQuantiser() { return PrxQuantiseMacroblocks<QuantiseBlocks>; }

#endif

} // namespace HWY_NAMESPACE
} // namespace prx_quantise
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prx_quantise {
namespace {

HWY_EXPORT(PickQuantiser);

} // namespace
} // namespace prx_quantise

PrxQuantiser PrxVectorQuantiser() { return HWY_DYNAMIC_DISPATCH(prx_quantise::PickQuantiser)(); }
#endif
