#include "prores/encoder/PrxChromaLowPassVector.h"

#include "prores/PrxFormats.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "prores/encoder/PrxChromaLowPassVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace prx_chroma_low_pass {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors there is nothing to gain on the scalar form.
PrxChromaLowPass PickLowPass(uint32_t) { return nullptr; }

#else

namespace hn = hwy::HWY_NAMESPACE;

/// (left + 2 * middle + right + 2) >> 2, without wider lanes: the mean of the neighbours, rounded down, and
/// then the mean of that and the middle, rounded up, is the same.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V Filtered(D d, V left, V middle, V right) {
    const V half = hn::And(hn::Xor(left, right), hn::Set(d, 1));
    return hn::AverageRound(hn::Sub(hn::AverageRound(left, right), half), middle);
}

/// The pixels of a vector with the two of each pair swapped.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V SwapPixels(D d, V pixels) {
    using Pixel = std::conditional_t<sizeof(hn::TFromD<D>) == 1, uint32_t, uint64_t>;
    const hn::Repartition<Pixel, D> whole;
    return hn::BitCast(d, hn::Reverse2(whole, hn::BitCast(whole, pixels)));
}

/// Filters whole vectors of pixels, from an even one on, and leaves the rest to the reference form, `Filter`.
/// The neighbours are odd pixels, which stay as they are: nothing that was stored is used again. The way goes
/// from right to left, as a load that overlaps the last store would have to wait for it. `ChromaBits` marks
/// the chroma of the first pixel of a pair, or its part of 64 bits.
template <PrxChromaLowPass Filter, typename T, uint64_t ChromaBits>
void LowPassRow(uint8_t* row, int32_t width, int32_t first) {
    const hn::CappedTag<T, 64 / sizeof(T)> d;
    const hn::Repartition<uint8_t, decltype(d)> bytes;
    const hn::Repartition<uint64_t, decltype(d)> quads;
    constexpr ptrdiff_t pixelBytes = 4 * sizeof(T);
    const auto step = static_cast<int32_t>(hn::Lanes(d) / 4);
    auto chroma = hn::Set(quads, ChromaBits);
    if constexpr (pixelBytes == 8) chroma = hn::OddEven(hn::Zero(quads), chroma);
    const auto mask = hn::BitCast(d, chroma);

    const int32_t begin = std::max(first, 2); // pixel 0 has no left neighbour
    const int32_t end = begin + std::max(width - begin, 0) / step * step;
    Filter(row, width, end);
    for (int32_t x = end - step; x >= begin; x -= step) {
        uint8_t* pixels = row + x * pixelBytes;
        const auto middle = hn::BitCast(d, hn::LoadU(bytes, pixels));
        const auto left = hn::BitCast(d, hn::LoadU(bytes, pixels - pixelBytes));
        const auto filtered = Filtered(d, left, middle, SwapPixels(d, middle));
        hn::StoreU(hn::BitCast(bytes, hn::Or(hn::And(mask, filtered), hn::AndNot(mask, middle))), bytes,
                   pixels);
    }
    if (first == 0) Filter(row, std::min(width, 2), 0);
}

PrxChromaLowPass PickLowPass(uint32_t pixelFormat) {
    switch (pixelFormat) {
    case prxFormatY408:
    case prxFormatR408: return LowPassRow<PrxLowPassY408, uint8_t, 0xFFFF0000>;
    case prxFormatV408: return LowPassRow<PrxLowPassV408, uint8_t, 0x00FF00FF>;
    case prxFormatY416: return LowPassRow<PrxLowPassY416, uint16_t, 0xFFFFFFFF00000000>;
    default: return nullptr;
    }
}

#endif

} // namespace HWY_NAMESPACE
} // namespace prx_chroma_low_pass
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prx_chroma_low_pass {
namespace {
HWY_EXPORT(PickLowPass);
} // namespace
} // namespace prx_chroma_low_pass

PrxChromaLowPass PrxSelectVectorChromaLowPass(uint32_t pixelFormat) {
    return HWY_DYNAMIC_DISPATCH(prx_chroma_low_pass::PickLowPass)(pixelFormat);
}
#endif
