#include "dnx/RgbPixels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dnx/RgbPixelsVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace dnx {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors there is nothing to gain on the scalar form.
void Spread(const uint16_t* codes, float scale, size_t width, float* chroma) {
    SpreadChroma(codes, scale, 0, width, chroma);
}

void Store(const YCbCrRow& row, const VideoMatrix& matrix, size_t width, uint8_t* output) {
    StoreRgbPixels(row, matrix, 0, width, output);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using DF = hn::ScalableTag<float>;
using VF = hn::Vec<DF>;
using DI = hn::Rebind<int32_t, DF>;
using DW = hn::Rebind<uint16_t, DF>;

HWY_INLINE VF Words(const uint16_t* codes, VF scale) {
    return hn::Mul(hn::ConvertTo(DF(), hn::PromoteTo(DI(), hn::LoadU(DW(), codes))), scale);
}

void Spread(const uint16_t* codes, float scale, size_t width, float* chroma) {
    const DF d;
    const VF scales = hn::Set(d, scale);
    const VF middle = hn::Set(d, noChroma);
    size_t pair = 0;
    for (; pair + hn::Lanes(d) <= (width - 1) / 2; pair += hn::Lanes(d)) {
        const VF here = hn::Sub(Words(codes + pair, scales), middle);
        const VF next = hn::Sub(Words(codes + pair + 1, scales), middle);
        const VF between = hn::Mul(hn::Add(here, next), hn::Set(d, 0.5f));
        hn::StoreInterleaved2(here, between, d, chroma + 2 * pair);
    }
    SpreadChroma(codes, scale, pair, width, chroma);
}

/// The scalar form's rounding: half is added, and the sum cut. Narrowing limits it.
HWY_INLINE hn::Vec<DW> RoundToWords(VF words) {
    return hn::DemoteTo(DW(), hn::ConvertTo(DI(), hn::Add(words, hn::Set(DF(), 0.5f))));
}

void Store(const YCbCrRow& row, const VideoMatrix& matrix, size_t width, uint8_t* output) {
    const DF d;
    const VF scale = hn::Set(d, row.scale);
    const auto opaque = hn::Set(DW(), uint16_t{65535});
    // Words that stand at odd addresses are left to the scalar form, like the last pixels.
    const size_t end = reinterpret_cast<uintptr_t>(output) % sizeof(uint16_t) == 0 ? width : 0;
    auto* const words = reinterpret_cast<uint16_t*>(output);
    size_t x = 0;
    for (; x + hn::Lanes(d) <= end; x += hn::Lanes(d)) {
        const VF y = Words(row.luma + x, scale);
        const VF cb = hn::LoadU(d, row.cb + x);
        const VF cr = hn::LoadU(d, row.cr + x);
        const VF red = hn::Add(y, hn::Mul(hn::Set(d, matrix.redFromCr), cr));
        const VF green = hn::Add(hn::Add(y, hn::Mul(hn::Set(d, matrix.greenFromCb), cb)),
                                 hn::Mul(hn::Set(d, matrix.greenFromCr), cr));
        const VF blue = hn::Add(y, hn::Mul(hn::Set(d, matrix.blueFromCb), cb));
        hn::StoreInterleaved4(opaque, RoundToWords(red), RoundToWords(green), RoundToWords(blue), DW(),
                              words + 4 * x);
    }
    StoreRgbPixels(row, matrix, x, width, output);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace dnx
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace dnx {

HWY_EXPORT(Spread);
HWY_EXPORT(Store);

void SpreadChromaVector(const uint16_t* codes, float scale, size_t width, float* chroma) {
    HWY_DYNAMIC_DISPATCH(Spread)(codes, scale, width, chroma);
}

void StoreRgbPixelsVector(const YCbCrRow& row, const VideoMatrix& matrix, size_t width, uint8_t* output) {
    HWY_DYNAMIC_DISPATCH(Store)(row, matrix, width, output);
}

} // namespace dnx
#endif
