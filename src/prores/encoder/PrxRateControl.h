#pragma once

#include "prores/encoder/PrxRateTarget.h"
#include "prores/encoder/PrxSlice.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// The decisions of rate control, made between the passes over a picture from what the last one measured.
/// They take integers only, so that the bytes of a frame depend on its content alone.

/// Bytes that the slices of a picture may take without their headers.
struct PrxPictureBudget {
    int64_t high;  ///< all together
    int64_t low;   ///< what they aim for together
    int64_t perMb; ///< of `low`, for each macroblock
};

/// What `target` leaves for the slices of a picture. The bytes set aside for each slice are those of a header
/// without alpha and of its entry in the slice table; alpha has bytes of its own in the size of a frame.
PrxPictureBudget PrxMakePictureBudget(const PrxRateTarget& target, size_t sliceCount, size_t mbCount);

/// Bytes of all slices without their headers.
int64_t PrxSumBodies(std::span<const PrxSlice> slices);

/// Chooses the quantisation index of each slice of a picture that was measured at `startQuantIndex` and took
/// more than `budget.high`, so that the prediction for the whole picture comes down to `budget.low`. Small
/// slices keep the index at which they became small; all others get a common one.
void PrxChooseQuantIndices(std::span<PrxSlice> slices, const PrxPictureBudget& budget,
                           uint32_t startQuantIndex, int32_t chromaFormat);

/// Gives the slices of a picture that still takes more than `budget.high` budgets of 0 or more whose sum is
/// within it. Small slices get what they take. Returns false, with no use for another pass, if nothing can be
/// shared.
bool PrxShareBudget(std::span<PrxSlice> slices, const PrxPictureBudget& budget);

/// How a slice that passes its `budgetHigh` is to be coded again.
struct PrxSliceFit {
    uint32_t quantIndex;
    PrxPlaneBudgets budgets; ///< together `budgetHigh`
};

/// Chooses the scale at which `slice` is thought to take its `budgetLow`, and shares its `budgetHigh`, 0 or
/// more, among its planes. Called once the slice's budgets are set; keeps its estimates in the slice.
PrxSliceFit PrxFitSlice(PrxSlice& slice, int32_t chromaFormat);
