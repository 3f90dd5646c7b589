#include "prores/PrxSliceHeader.h"
#include "prores/encoder/PrxPrediction.h"
#include "prores/encoder/PrxRateControl.h"
#include "prores/encoder/PrxScale.h"

#include <algorithm>

namespace {

constexpr int64_t firstDivisor = 5;

/// Whether a slice is too small for a coarser scale: it has fewer bytes than `perMb` for each macroblock.
bool IsSmall(int64_t bytes, int64_t perMb, const PrxSlice& slice) { return bytes < perMb << slice.log2Width; }

/// Goes through scales that are each three times the one before, until the predicted size is within the
/// budget.
class ScaleSearch {
public:
    ScaleSearch(std::span<PrxSlice> slices, const PrxPictureBudget& budget, uint32_t startQuantIndex,
                int32_t chromaFormat)
        : slices_(slices), budget_(budget), chromaFormat_(chromaFormat),
          scale_(PrxQuantiserOf(startQuantIndex)) {
        for (PrxSlice& slice : slices_)
            Begin(slice, startQuantIndex);
    }

    /// Returns whether the budget was reached.
    bool Descend() {
        int64_t divisor = firstDivisor;
        int64_t predicted;
        do {
            ++step_;
            scale_ *= 3;
            if (step_ > 1) divisor = std::max<int64_t>(divisor - 1, 1);
            predicted = 0;
            for (PrxSlice& slice : slices_)
                predicted += Advance(slice, budget_.perMb / divisor);
        } while (predicted > budget_.low && scale_ < prxMaxScale);
        return predicted <= budget_.low;
    }

    /// The index between the last two scales at which the prediction is the budget.
    uint32_t CommonIndex() const {
        Sums sums;
        for (const PrxSlice& slice : slices_)
            AddTo(&sums, slice);
        const int64_t wantedLow = Interpolated(budget_.low - sums.frozen, sums);
        const int64_t high = budget_.high - sums.frozen;
        const int64_t wantedHigh = sums.before >= high ? Interpolated(high, sums) : 65536;
        const uint32_t index = PrxQuantIndexOf(PrxRoundScale(wantedLow));
        // What is rounded down must not lead beyond the high budget.
        const bool tooFine = wantedHigh > int64_t{PrxQuantiserOf(index)} << 16;
        return tooFine ? std::min(index + 1, prxMaxQuantIndex) : index;
    }

private:
    struct Sums {
        int64_t frozen = 0; ///< bytes of the small slices
        int64_t before = 0; ///< those of the others at the last scale but one
        int64_t after = 0;  ///< and at the last
    };

    void Begin(PrxSlice& slice, uint32_t startQuantIndex) const {
        const int32_t body = slice.Body();
        const bool isSmall = IsSmall(body, budget_.perMb / firstDivisor, slice);
        slice.estimate[0] = {slice.outcome.planeSize, body};
        slice.quantIndex = isSmall ? startQuantIndex : 0;
        slice.budgetLow = isSmall ? body : 0;
    }

    /// What `slice` takes at the new scale; a slice that has become small stays at the one before.
    int64_t Advance(PrxSlice& slice, int64_t smallPerMb) const {
        if (slice.quantIndex != 0) return slice.budgetLow;
        const int32_t before = slice.estimate[step_ - 1].sum;
        if (IsSmall(before, smallPerMb, slice)) {
            slice.quantIndex = PrxQuantIndexOf(scale_ / 3);
            slice.budgetLow = before;
            return before;
        }
        slice.estimate[step_] = PrxPredictSlice(slice, chromaFormat_, step_);
        return slice.estimate[step_].sum;
    }

    void AddTo(Sums* sums, const PrxSlice& slice) const {
        if (slice.quantIndex != 0) {
            sums->frozen += slice.budgetLow;
        } else {
            sums->before += slice.estimate[step_ - 1].sum;
            sums->after += slice.estimate[step_].sum;
        }
    }

    int64_t Interpolated(int64_t target, const Sums& sums) const {
        return PrxInterpolateScale(target, scale_ / 3, sums.before, scale_, sums.after);
    }

    std::span<PrxSlice> slices_;
    const PrxPictureBudget& budget_;
    int32_t chromaFormat_;
    int64_t scale_;
    uint32_t step_ = 0;
};

} // namespace

void PrxChooseQuantIndices(std::span<PrxSlice> slices, const PrxPictureBudget& budget,
                           uint32_t startQuantIndex, int32_t chromaFormat) {
    ScaleSearch search(slices, budget, startQuantIndex, chromaFormat);
    const uint32_t common = search.Descend() ? search.CommonIndex() : prxMaxQuantIndex;
    for (PrxSlice& slice : slices) {
        if (slice.quantIndex == 0) slice.quantIndex = common;
    }
}
