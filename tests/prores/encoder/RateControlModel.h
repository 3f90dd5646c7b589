#pragma once

#include "prores/encoder/PrxSlice.h"

#include <array>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

/// Rate control once more, written down step by step without regard to form, to hold the engine against.
namespace rate_model {

struct Slice {
    int log2Width;
    int dcBits[3], runBits[3], dcChanges[3];
    int levelHistogram[3][8];
    int planeSize[3];
    int quantIndex = 0;
    long long budgetHigh = 0, budgetLow = 0;
    long long estimate[8][4] = {};

    int Body() const { return planeSize[0] + planeSize[1] + planeSize[2]; }
};

int ScaleOf(int index);
int IndexOf(long long scale);

/// Fills `estimate[step]`.
void Predict(Slice& slice, int chromaFormat, int step);

struct Budget {
    long long high, low, perMb;
};

/// What the search came to beside the indices.
struct Found {
    int steps;       ///< triplings
    bool reached;    ///< the low budget
    int commonIndex; ///< of the slices that were not frozen
    int frozen;      ///< slices that were
};
Found ChooseIndices(std::vector<Slice>& slices, const Budget& budget, int startQuantIndex, int chromaFormat);

/// Returns whether the slices are coded once more. `*useFloor`: whether DC values were set aside.
bool ShareBudget(std::vector<Slice>& slices, const Budget& budget, bool* useFloor);

struct Fit {
    int quantIndex;
    std::array<long long, 3> budgets;
    bool reserve; ///< whether each plane keeps its DC values
};
Fit FitSlice(Slice& slice, int chromaFormat);

} // namespace rate_model

/// The same slice for the model.
rate_model::Slice ModelOf(const PrxSlice& slice);
std::vector<rate_model::Slice> ModelsOf(std::span<const PrxSlice> slices);

/// Statistics as a slice of `chromaFormat` can have them; `density` from 0 to 1 says how many of its levels
/// are not zero and how large they are.
PrxSliceOutcome RandomOutcome(std::mt19937& random, uint32_t log2Width, int chromaFormat, double density);

/// Slices of a picture whose density is `density` and a little more or less.
std::vector<PrxSlice> RandomSlices(std::mt19937& random, size_t count, int chromaFormat, double density);
