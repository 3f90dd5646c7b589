#include "prores/encoder/PrxRateControl.h"

#include <algorithm>
#include <numeric>

namespace {

/// Sets `budgetHigh` of small slices to what they take and that of all others to 0. Returns what can't be
/// shared: the small slices, and the DC values of the others if they are to keep them.
int64_t FixSmallSlices(std::span<PrxSlice> slices, int64_t smallPerMb, bool keepDc) {
    int64_t fixed = 0;
    for (PrxSlice& slice : slices) {
        const int32_t body = slice.Body();
        const bool isSmall = body < smallPerMb << slice.log2Width;
        slice.budgetHigh = isSmall ? body : 0;
        fixed += isSmall ? body : keepDc ? slice.DcSize() : 0;
    }
    return fixed;
}

struct Share {
    int64_t left = 0;   ///< of the high budget, without the small slices
    int64_t shared = 0; ///< bytes that the other slices aim for
};

/// Sets `budgetLow` of all slices. `ratio` of what the large ones take beyond what they keep, as 16.16, is
/// left to them.
Share ShareLowBudget(std::span<PrxSlice> slices, int64_t high, int64_t ratio, bool keepDc) {
    Share share{high, 0};
    for (PrxSlice& slice : slices) {
        if (slice.budgetHigh != 0) {
            slice.budgetLow = slice.budgetHigh;
            share.left -= slice.budgetHigh;
            continue;
        }
        const int32_t kept = keepDc ? slice.DcSize() : 0;
        slice.budgetLow = static_cast<int32_t>(((slice.Body() - kept) * ratio) >> 16) + kept;
        share.shared += slice.budgetLow;
    }
    return share;
}

} // namespace

PrxPictureBudget PrxMakePictureBudget(const PrxRateTarget& target, size_t sliceCount, size_t mbCount) {
    constexpr int64_t bytesPerSlice = 8;
    constexpr int64_t pictureHeaderSize = 8;
    const int64_t overhead = bytesPerSlice * static_cast<int64_t>(sliceCount) + pictureHeaderSize;
    const int64_t low = target.targetLow - overhead;
    return {target.targetHigh - overhead, low, low / static_cast<int64_t>(mbCount)};
}

int64_t PrxSumBodies(std::span<const PrxSlice> slices) {
    return std::accumulate(slices.begin(), slices.end(), int64_t{0},
                           [](int64_t sum, const PrxSlice& slice) { return sum + slice.Body(); });
}

bool PrxShareBudget(std::span<PrxSlice> slices, const PrxPictureBudget& budget) {
    const int64_t smallPerMb = budget.perMb / 5;
    const int64_t actual = PrxSumBodies(slices);
    bool keepDc = true;
    int64_t fixed = FixSmallSlices(slices, smallPerMb, keepDc);
    if (fixed >= budget.low) {
        keepDc = false;
        fixed = FixSmallSlices(slices, smallPerMb, keepDc);
    }
    if (actual <= fixed) return false;
    const int64_t ratio = (budget.low - fixed) * 65536 / (actual - fixed);
    const auto [left, shared] = ShareLowBudget(slices, budget.high, ratio, keepDc);
    if (shared < 1) return false;
    const int64_t stretch = left * 65536 / shared;
    for (PrxSlice& slice : slices) {
        if (slice.budgetHigh == 0) slice.budgetHigh = static_cast<int32_t>((slice.budgetLow * stretch) >> 16);
    }
    return true;
}
