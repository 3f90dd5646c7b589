#include "host/ColorConvertRows.h"
#include "host/ColorConvertScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "host/ColorConvertVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "host/ColorConvertVectorBytes-inl.h"
#include "host/ColorConvertVectorImage-inl.h"
#include "host/ColorConvertVectorPack-inl.h"

HWY_BEFORE_NAMESPACE();
namespace color_vector {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors there is nothing to gain on the scalar form.
const ColorKernels& Kernels() { return ScalarColorKernels(); }

#else

/// Chroma at half and full rate
struct ChromaSteps {
    static void Upsample(const ColorLines& lines, int64_t begin, int64_t end) {
        const VF half = hn::Set(DF(), 0.5f);
        int64_t i = begin;
        for (; i + BlockSize() <= end; i += BlockSize()) {
            VF cb, cr, nextCb, nextCr;
            hn::LoadInterleaved2(DF(), lines.chroma + 2 * i, cb, cr);
            hn::LoadInterleaved2(DF(), lines.chroma + 2 * i + 2, nextCb, nextCr);
            hn::StoreInterleaved2(cb, hn::Mul(hn::Add(cb, nextCb), half), DF(), lines.cb + 2 * i);
            hn::StoreInterleaved2(cr, hn::Mul(hn::Add(cr, nextCr), half), DF(), lines.cr + 2 * i);
        }
        Scalar::Upsample(lines, i, end);
    }

    static void Downsample(const ColorLines& lines, int64_t begin, int64_t end) {
        int64_t i = begin;
        for (; i + BlockSize() <= end; i += BlockSize()) {
            hn::StoreInterleaved2(Weigh121(lines.cb + 2 * i), Weigh121(lines.cr + 2 * i), DF(),
                                  lines.chroma + 2 * i);
        }
        Scalar::Downsample(lines, i, end);
    }

    static void Blend(float* line, const float* other, float weight, int64_t begin, int64_t end) {
        const VF lineWeight = hn::Set(DF(), weight);
        const VF otherWeight = hn::Set(DF(), 1 - weight);
        int64_t i = begin;
        for (; i + BlockSize() <= end; i += BlockSize()) {
            const VF sum = hn::Add(hn::Mul(Load(line, i), lineWeight), hn::Mul(Load(other, i), otherWeight));
            Store(sum, line, i);
        }
        Scalar::Blend(line, other, weight, i, end);
    }

private:
    /// (1 2 1) / 4 about every other sample from `middle` on. Reads two samples before it.
    static HWY_INLINE VF Weigh121(const float* middle) {
        VF even, odd, evenBefore, oddBefore;
        hn::LoadInterleaved2(DF(), middle, even, odd);
        hn::LoadInterleaved2(DF(), middle - 2, evenBefore, oddBefore);
        const VF sum = hn::Add(hn::Add(oddBefore, odd), hn::Add(even, even));
        return hn::Mul(sum, hn::Set(DF(), 0.25f));
    }
};

struct Steps : PackSteps, ImageSteps, ChromaSteps, ByteSteps {};

const ColorKernels& Kernels() {
    static constexpr ColorKernels kernels = ColorRows<Steps>::Kernels(HWY_TARGET);
    return kernels;
}

#endif

} // namespace HWY_NAMESPACE
} // namespace color_vector
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace color_vector {
HWY_EXPORT(Kernels);
} // namespace color_vector

const ColorKernels& VectorColorKernels() {
    using namespace color_vector;
    return HWY_DYNAMIC_DISPATCH(Kernels)();
}
#endif
