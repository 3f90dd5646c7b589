#include "prores/encoder/PrxPrediction.h"

#include "prores/PrxFormats.h"
#include "prores/encoder/PrxRateTables.h"

#include <algorithm>

namespace {

/// Bits of a level's codes beyond those of its run, as 16.16, that each of the thresholds it passes adds.
constexpr std::array<int64_t, 8> levelCosts = {131072, 140247, 202506, 79953, 213647, 148111, 297533, 32768};

/// A product that keeps its low 32 bits. No statistics of a slice make it larger than that.
int64_t Product32(int64_t a, int64_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

/// Bits of the run codes when `left` of `all` levels are not zero any more; `all` is not 0.
int64_t RunBits(int64_t runBits, int64_t all, int64_t left) {
    constexpr int64_t largestRatio = 45875;
    const int64_t ratio = std::min(left * 65536 / all, largestRatio);
    const int64_t root = PrxGetRateTables().root[PrxRateTableIndex(ratio)];
    const int64_t spread = Product32(all + 1 + left, all - left) * 65536 / Product32(2 * (left + 1), all);
    const int64_t grown = ((root * spread + 32768) >> 16) * left;
    return std::min((grown + 32768 + runBits * 65536 * left / all) >> 16, runBits);
}

int64_t DcBits(const PrxPlaneStatistics& plane, int64_t blocks, uint32_t step) {
    const int64_t least = std::min<int64_t>(2 * blocks, plane.dcBits);
    return std::max(plane.dcBits - int64_t{2} * step * plane.dcChanges, least);
}

int64_t LevelBits(const PrxPlaneStatistics& plane, uint32_t step) {
    int64_t cost = 0;
    for (size_t k = 0; k + step < levelCosts.size(); ++k)
        cost += levelCosts[k] * plane.levelHistogram[step + k];
    return (cost + 32768) >> 16;
}

int64_t PredictPlane(const PrxPlaneStatistics& plane, int64_t blocks, uint32_t step) {
    const int64_t all = plane.levelHistogram[0];
    int64_t bits = DcBits(plane, blocks, step);
    if (all != 0) bits += RunBits(plane.runBits, all, plane.levelHistogram[step]);
    return (bits + LevelBits(plane, step) + 7) / 8;
}

} // namespace

int64_t PrxInterpolateScale(int64_t target, int64_t scaleBefore, int64_t sizeBefore, int64_t scaleAfter,
                            int64_t sizeAfter) {
    if (sizeBefore <= sizeAfter) return scaleAfter << 16;
    const int64_t fraction = (sizeBefore - target) * 65536 / (sizeBefore - sizeAfter);
    return scaleBefore * PrxGetRateTables().power[PrxRateTableIndex(fraction)];
}

int32_t PrxPlaneAt(int64_t scale, int64_t previous, int32_t before, int32_t after) {
    if (scale <= previous || scale == 0 || previous == 0) return before;
    if (scale >= 3 * previous) return after;
    const int64_t log = PrxGetRateTables().log[PrxRateTableIndex(previous * 65536 / scale)];
    return static_cast<int32_t>((log * (before - after) + 32768) >> 16) + before;
}

PrxSliceEstimate PrxPredictSlice(const PrxSlice& slice, int32_t chromaFormat, uint32_t step) {
    const uint32_t log2ChromaWidth = slice.log2Width + (chromaFormat == prxChroma444 ? 1 : 0);
    const std::array<int64_t, 3> blocks = {int64_t{4} << slice.log2Width, int64_t{2} << log2ChromaWidth,
                                           int64_t{2} << log2ChromaWidth};
    PrxSliceEstimate estimate{};
    for (size_t i = 0; i < blocks.size(); ++i) {
        const auto bits = PredictPlane(slice.outcome.planes[i], blocks[i], step);
        estimate.planes[i] = static_cast<int32_t>(std::min<int64_t>(bits, slice.outcome.planeSize[i]));
        estimate.sum += estimate.planes[i];
    }
    return estimate;
}
