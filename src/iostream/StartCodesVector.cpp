#include "iostream/StartCodes.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "iostream/StartCodesVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace IOStream {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

size_t Find(const uint8_t* data, size_t size) { return FindStartCodeScalar(data, size); }

#else

namespace hn = hwy::HWY_NAMESPACE;

/// A vector's worth of places. A start code may begin at any of them, and ends up to two bytes behind them.
size_t Find(const uint8_t* data, size_t size) {
    const hn::ScalableTag<uint8_t> d;
    const size_t group = hn::Lanes(d);
    const auto one = hn::Set(d, uint8_t{1});
    size_t place = 0;
    for (; place + group + 2 <= size; place += group) {
        const auto zeros = hn::Or(hn::LoadU(d, data + place), hn::LoadU(d, data + place + 1));
        const auto rest = hn::Xor(hn::LoadU(d, data + place + 2), one);
        const intptr_t found = hn::FindFirstTrue(d, hn::Eq(hn::Or(zeros, rest), hn::Zero(d)));
        if (found >= 0) return place + static_cast<size_t>(found);
    }
    return place + FindStartCodeScalar(data + place, size - place);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace IOStream
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace IOStream {
namespace {

HWY_EXPORT(Find);

} // namespace

size_t FindStartCode(const uint8_t* data, size_t size) { return HWY_DYNAMIC_DISPATCH(Find)(data, size); }

} // namespace IOStream
#endif
