#include "prores/PrxSliceHeader.h"
#include "prores/encoder/PrxPrediction.h"
#include "prores/encoder/PrxRateControl.h"
#include "prores/encoder/PrxScale.h"

#include <cassert>
#include <numeric>

namespace {

struct ScaledPlanes {
    int64_t scale;
    std::array<int32_t, 3> planes; ///< bytes that they are thought to take at `scale`
};

int32_t Sum(const std::array<int32_t, 3>& sizes) { return std::accumulate(sizes.begin(), sizes.end(), 0); }

/// The scale between `after` / 3 and `after` at which the slice takes its low budget.
ScaledPlanes Between(const PrxSlice& slice, uint32_t step, int64_t after) {
    const PrxSliceEstimate& sizesBefore = slice.estimate[step - 1];
    const PrxSliceEstimate& sizesAfter = slice.estimate[step];
    const int64_t previous = after / 3;
    const int64_t exact =
        PrxInterpolateScale(slice.budgetLow, previous, sizesBefore.sum, after, sizesAfter.sum);
    // Only some of the larger scales have an index.
    ScaledPlanes wanted{PrxQuantiserOf(PrxQuantIndexOf((exact + 32768) >> 16)), {}};
    for (size_t i = 0; i < wanted.planes.size(); ++i) {
        wanted.planes[i] = PrxPlaneAt(wanted.scale, previous, sizesBefore.planes[i], sizesAfter.planes[i]);
    }
    return wanted;
}

ScaledPlanes ChooseScale(PrxSlice& slice, int32_t chromaFormat) {
    int64_t scale = PrxQuantiserOf(slice.quantIndex);
    slice.estimate[0] = {slice.outcome.planeSize, slice.Body()};
    if (scale >= prxMaxScale) return {prxMaxScale, slice.estimate[0].planes};
    uint32_t step = 0;
    do {
        scale *= 3;
        ++step;
        slice.estimate[step] = PrxPredictSlice(slice, chromaFormat, step);
    } while (slice.estimate[step].sum > slice.budgetLow && scale < prxMaxScale);
    if (slice.estimate[step].sum > slice.budgetLow) return {prxMaxScale, slice.estimate[step].planes};
    return Between(slice, step, scale);
}

/// Shares `budget` among the planes by their `sizes`. Each keeps its DC values if there is room for them all.
///
/// No share is below 0, which would be no limit at all. Luma takes a byte or more, as its first DC value
/// does, so that of `n` bytes to share chroma gets less than `n` before it is rounded, and of each plane at
/// most a half is added by that: less than `n` + 1 in all, and `n` at most in whole bytes.
PrxPlaneBudgets ShareAmongPlanes(int32_t budget, const std::array<int32_t, 3>& sizes,
                                 const std::array<int32_t, 3>& dcSizes) {
    assert(budget >= 0 && sizes[0] > 0);
    const bool reserve = Sum(dcSizes) < budget;
    const int64_t share = int64_t{budget - (reserve ? Sum(dcSizes) : 0)} * 65536 / Sum(sizes);
    const auto chroma = [&](size_t plane) {
        return static_cast<int32_t>((sizes[plane] * share + 32768) >> 16) + (reserve ? dcSizes[plane] : 0);
    };
    const int32_t cb = chroma(1);
    const int32_t cr = chroma(2);
    return {budget - cb - cr, cb, cr};
}

} // namespace

PrxSliceFit PrxFitSlice(PrxSlice& slice, int32_t chromaFormat) {
    const ScaledPlanes wanted = ChooseScale(slice, chromaFormat);
    return {PrxQuantIndexOf(wanted.scale),
            ShareAmongPlanes(slice.budgetHigh, wanted.planes, slice.DcSizes())};
}
