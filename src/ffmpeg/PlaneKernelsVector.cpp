#include "ffmpeg/PlaneKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ffmpeg/PlaneKernelsVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace plane_vector {
namespace HWY_NAMESPACE {

using CxFFMPEG::PlaneKernels;

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors there is nothing to gain on the scalar form.
const PlaneKernels& Kernels() { return CxFFMPEG::ScalarPlaneKernels(); }

#else

namespace hn = hwy::HWY_NAMESPACE;
using CxFFMPEG::PlaneLines;
using CxFFMPEG::PlaneMatrix;

using DF = hn::ScalableTag<float>;
using VF = hn::Vec<DF>;
using DI = hn::Rebind<int32_t, DF>;
using D16 = hn::Rebind<uint16_t, DF>;
using V16 = hn::Vec<D16>;

HWY_INLINE int32_t Lanes() { return static_cast<int32_t>(hn::Lanes(DF())); }

/// Three channels of as many pixels as a vector of floats has lanes.
struct Channels {
    VF red;
    VF green;
    VF blue;
};

HWY_INLINE VF ToFloats(V16 words) { return hn::ConvertTo(DF(), hn::PromoteTo(DI(), words)); }

HWY_INLINE Channels LoadChannels(const uint16_t* words) {
    V16 red, green, blue;
    hn::LoadInterleaved3(D16(), words, red, green, blue);
    return {ToFloats(red), ToFloats(green), ToFloats(blue)};
}

HWY_INLINE VF Weigh(const Channels& pixels, const PlaneMatrix::Weights& weights, float offset) {
    const DF d;
    const VF sum =
        hn::Add(hn::Mul(pixels.red, hn::Set(d, weights[0])), hn::Mul(pixels.green, hn::Set(d, weights[1])));
    return hn::Add(hn::Add(sum, hn::Mul(pixels.blue, hn::Set(d, weights[2]))), hn::Set(d, offset));
}

void Split(const uint16_t* words, const PlaneMatrix& matrix, const PlaneLines& lines, int32_t count) {
    int32_t i = 0;
    for (; i + Lanes() <= count; i += Lanes()) {
        const Channels pixels = LoadChannels(words + int64_t{3} * i);
        hn::StoreU(Weigh(pixels, matrix.luma, matrix.black), DF(), lines.luma + i);
        hn::StoreU(Weigh(pixels, matrix.cb, matrix.zero), DF(), lines.cb + i);
        hn::StoreU(Weigh(pixels, matrix.cr, matrix.zero), DF(), lines.cr + i);
    }
    const PlaneLines rest = {lines.luma + i, lines.cb + i, lines.cr + i};
    CxFFMPEG::ScalarPlaneKernels().split(words + int64_t{3} * i, matrix, rest, count - i);
}

void Mean(float* line, const float* other, int32_t count) {
    int32_t i = 0;
    for (; i + Lanes() <= count; i += Lanes()) {
        const VF sum = hn::Add(hn::LoadU(DF(), line + i), hn::LoadU(DF(), other + i));
        hn::StoreU(hn::Mul(sum, hn::Set(DF(), 0.5F)), DF(), line + i);
    }
    CxFFMPEG::ScalarPlaneKernels().mean(line + i, other + i, count - i);
}

void Halve(const float* line, float* halved, int32_t count) {
    int32_t i = 0;
    for (; i + Lanes() <= count; i += Lanes()) {
        VF middle, behind, before, unused;
        hn::LoadInterleaved2(DF(), line + 2 * i, middle, behind);
        hn::LoadInterleaved2(DF(), line + 2 * i - 1, before, unused);
        const VF sum = hn::Add(hn::Add(before, behind), hn::Add(middle, middle));
        hn::StoreU(hn::Mul(sum, hn::Set(DF(), 0.25F)), DF(), halved + i);
    }
    CxFFMPEG::ScalarPlaneKernels().halve(line + 2 * i, halved + i, count - i);
}

template <typename Sample>
HWY_INLINE void StoreSamples(const float* line, float most, Sample* samples, int32_t count) {
    const hn::Rebind<Sample, DF> narrow;
    int32_t i = 0;
    for (; i + Lanes() <= count; i += Lanes()) {
        const VF code = hn::Add(hn::LoadU(DF(), line + i), hn::Set(DF(), 0.5F));
        const auto whole = hn::ConvertTo(DI(), hn::Min(code, hn::Set(DF(), most)));
        hn::StoreU(hn::DemoteTo(narrow, whole), narrow, samples + i);
    }
    const PlaneKernels& scalar = CxFFMPEG::ScalarPlaneKernels();
    if constexpr (sizeof(Sample) == 1)
        scalar.storeBytes(line + i, most, samples + i, count - i);
    else
        scalar.storeWords(line + i, most, samples + i, count - i);
}

void StoreBytes(const float* line, float most, uint8_t* samples, int32_t count) {
    StoreSamples(line, most, samples, count);
}

void StoreWords(const float* line, float most, uint16_t* samples, int32_t count) {
    StoreSamples(line, most, samples, count);
}

const PlaneKernels& Kernels() {
    static constexpr PlaneKernels kernels = {Split, Mean, Halve, StoreBytes, StoreWords};
    return kernels;
}

#endif

} // namespace HWY_NAMESPACE
} // namespace plane_vector
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace plane_vector {
HWY_EXPORT(Kernels);
} // namespace plane_vector

const CxFFMPEG::PlaneKernels& CxFFMPEG::VectorPlaneKernels() {
    using namespace plane_vector;
    return HWY_DYNAMIC_DISPATCH(Kernels)();
}
#endif
