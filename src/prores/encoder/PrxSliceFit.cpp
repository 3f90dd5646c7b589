#include "prores/PrxSliceHeader.h"
#include "prores/encoder/PrxPrediction.h"
#include "prores/encoder/PrxRateControl.h"
#include "prores/encoder/PrxScale.h"

#include <algorithm>
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
PrxPlaneBudgets ShareAmongPlanes(int64_t budget, const std::array<int32_t, 3>& sizes,
                                 const std::array<int32_t, 3>& dcSizes) {
    const bool reserve = Sum(dcSizes) < budget;
    const int64_t all = std::max(Sum(sizes), 1);
    const int64_t share = (budget - (reserve ? Sum(dcSizes) : 0)) * 65536 / all;
    const auto chroma = [&](size_t plane) {
        return ((sizes[plane] * share + 32768) >> 16) + (reserve ? dcSizes[plane] : 0);
    };
    // A budget below 0 would be none at all.
    const int64_t cb = std::clamp<int64_t>(chroma(1), 0, budget);
    const int64_t cr = std::clamp<int64_t>(chroma(2), 0, budget - cb);
    return {static_cast<int32_t>(budget - cb - cr), static_cast<int32_t>(cb), static_cast<int32_t>(cr)};
}

} // namespace

PrxSliceFit PrxFitSlice(PrxSlice& slice, int32_t chromaFormat) {
    const ScaledPlanes wanted = ChooseScale(slice, chromaFormat);
    const int64_t budget = std::max(slice.budgetHigh, 0);
    return {PrxQuantIndexOf(wanted.scale), ShareAmongPlanes(budget, wanted.planes, slice.DcSizes())};
}
