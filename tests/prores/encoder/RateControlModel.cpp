#include "prores/encoder/RateControlModel.h"

#include <algorithm>
#include <cmath>

namespace rate_model {

namespace {

long long Rounded(long double value) { return std::llround(value * 65536); }
long long PowerEntry(long long i) { return Rounded(std::exp2(std::log2(3.0L) * i / 1024)); }
long long RootEntry(long long i) { return Rounded(std::sqrt(i / 1024.0L)); }
long long LogEntry(long long i) { return i == 0 ? 0 : Rounded(std::log2(i / 1024.0L) / std::log2(3.0L)); }

long long Interpolate(long long target, long long scaleBefore, long long sizeBefore, long long scaleAfter,
                      long long sizeAfter) {
    if (!(sizeBefore > sizeAfter)) return scaleAfter * 65536;
    long long fraction = ((sizeBefore - target) * 65536 / (sizeBefore - sizeAfter) + 32) >> 6;
    if (fraction > 1023) fraction = 1023;
    return scaleBefore * PowerEntry(fraction);
}

long long PlaneAt(long long scale, long long previous, long long before, long long after) {
    if (scale <= previous || scale == 0 || previous == 0) return before;
    if (scale >= 3 * previous) return after;
    long long index = (previous * 65536 / scale + 32) >> 6;
    if (index > 1023) index = 1023;
    return ((LogEntry(index) * (before - after) + 32768) >> 16) + before;
}

} // namespace

int ScaleOf(int index) {
    if (index < 1) index = 1;
    if (index > 224) index = 224;
    return index <= 128 ? index : index * 4 - 384;
}

int IndexOf(long long scale) {
    if (scale < 1) scale = 1;
    if (scale > 512) scale = 512;
    return static_cast<int>(scale <= 128 ? scale : (scale - 126) / 4 + 128);
}

void Predict(Slice& slice, int chromaFormat, int s) {
    static const long long cost[8] = {131072, 140247, 202506, 79953, 213647, 148111, 297533, 32768};
    slice.estimate[s][3] = 0;
    for (int p = 0; p < 3; ++p) {
        const int log2ChromaWidth = chromaFormat == 3 ? slice.log2Width + 1 : slice.log2Width;
        const long long blocks = p == 0 ? 4LL << slice.log2Width : 2LL << log2ChromaWidth;
        const int all = slice.levelHistogram[p][0];
        const int h = slice.levelHistogram[p][s];
        const long long dc = slice.dcBits[p];
        long long bits = std::max(dc - 2LL * s * slice.dcChanges[p], std::min(2 * blocks, dc));
        if (all != 0) {
            const long long ratio = h * 65536LL / all;
            long long index = (std::min(ratio, 45875LL) + 32) >> 6;
            if (index > 1023) index = 1023;
            const int product = (all + 1 + h) * (all - h);
            const int denominator = 2 * (h + 1) * all;
            const long long spread = product * 65536LL / denominator;
            long long run = ((RootEntry(index) * spread + 32768) >> 16) * h + 32768 +
                            (slice.runBits[p] * 65536LL * h) / all;
            run >>= 16;
            bits += slice.runBits[p] < run ? slice.runBits[p] : run;
        }
        long long levels = 0;
        for (int k = 0; k <= 7 - s; ++k)
            levels += cost[k] * slice.levelHistogram[p][s + k];
        bits += (levels + 32768) >> 16;
        bits += 7;
        slice.estimate[s][p] = std::min<long long>(bits / 8, slice.planeSize[p]);
        slice.estimate[s][3] += slice.estimate[s][p];
    }
}

Found ChooseIndices(std::vector<Slice>& slices, const Budget& budget, int startQuantIndex, int chromaFormat) {
    const long long low = budget.low;
    long long threshold = budget.perMb / 5;
    long long scale = ScaleOf(startQuantIndex);
    for (Slice& slice : slices) {
        for (int p = 0; p < 3; ++p)
            slice.estimate[0][p] = slice.planeSize[p];
        slice.estimate[0][3] = slice.Body();
        if (slice.Body() >= threshold << slice.log2Width) {
            slice.quantIndex = 0;
            slice.budgetLow = 0;
        } else {
            slice.quantIndex = startQuantIndex;
            slice.budgetLow = slice.Body();
        }
    }
    int step = 1;
    int divisor = 5;
    long long count = 0;
    for (;; ++step) {
        scale *= 3;
        if (step >= 2) {
            if (divisor > 1) --divisor;
            threshold = budget.perMb / divisor;
        }
        count = 0;
        for (Slice& slice : slices) {
            if (slice.quantIndex == 0) {
                if (slice.estimate[step - 1][3] >= threshold << slice.log2Width) {
                    Predict(slice, chromaFormat, step);
                    count += slice.estimate[step][3];
                } else {
                    slice.quantIndex = IndexOf(scale / 3);
                    slice.budgetLow = slice.estimate[step - 1][3];
                    count += slice.budgetLow;
                }
            } else {
                count += slice.budgetLow;
            }
        }
        if (count <= low) break;
        if (scale >= 512) break;
    }
    long long frozen = 0, before = 0, after = 0;
    int frozenCount = 0;
    for (const Slice& slice : slices) {
        if (slice.quantIndex != 0) {
            frozen += slice.budgetLow;
            ++frozenCount;
        } else {
            before += slice.estimate[step - 1][3];
            after += slice.estimate[step][3];
        }
    }
    int index;
    if (count > low) {
        index = IndexOf(512);
    } else {
        const long long wantedLow = Interpolate(low - frozen, scale / 3, before, scale, after);
        long long wantedHigh = 65536;
        if (before >= budget.high - frozen) {
            wantedHigh = Interpolate(budget.high - frozen, scale / 3, before, scale, after);
        }
        const long double exact = wantedLow / 65536.0L;
        long double rounded = std::floor(exact + 0.5L);
        if (rounded > 36) {
            rounded = 2 * std::floor(exact / 2 + 0.5L);
            if (rounded >= 129) rounded = 4 * std::floor(exact / 4 + 0.5L);
        }
        index = IndexOf(static_cast<long long>(rounded));
        if (wantedHigh > 65536LL * ScaleOf(std::min(index, 224)) && index < 224) ++index;
        index = IndexOf(ScaleOf(index));
    }
    for (Slice& slice : slices) {
        if (slice.quantIndex == 0) slice.quantIndex = index;
    }
    return {step, count <= low, index, frozenCount};
}

bool ShareBudget(std::vector<Slice>& slices, const Budget& budget, bool* useFloor) {
    const long long threshold = budget.perMb / 5;
    const auto floorSize = [](const Slice& slice) {
        long long size = 0;
        for (int p = 0; p < 3; ++p)
            size += (slice.dcBits[p] + 7) / 8;
        return size;
    };
    long long actual = 0;
    for (const Slice& slice : slices)
        actual += slice.Body();
    long long fixed = 0;
    for (*useFloor = true;; *useFloor = false) {
        fixed = 0;
        for (Slice& slice : slices) {
            if (slice.Body() < threshold << slice.log2Width) {
                slice.budgetHigh = slice.Body();
                fixed += slice.Body();
            } else {
                slice.budgetHigh = 0;
                if (*useFloor) fixed += floorSize(slice);
            }
        }
        if (fixed < budget.low || !*useFloor) break;
    }
    if (actual <= fixed) return false;
    const long long ratio = (budget.low - fixed) * 65536 / (actual - fixed);
    long long left = budget.high;
    long long shared = 0;
    for (Slice& slice : slices) {
        if (slice.budgetHigh == 0) {
            const long long f = *useFloor ? floorSize(slice) : 0;
            slice.budgetLow = (((slice.Body() - f) * ratio) >> 16) + f;
            shared += slice.budgetLow;
        } else {
            slice.budgetLow = slice.budgetHigh;
            left -= slice.budgetHigh;
        }
    }
    if (shared < 1) return false;
    const long long stretch = left * 65536 / shared;
    for (Slice& slice : slices) {
        if (slice.budgetHigh == 0) slice.budgetHigh = (slice.budgetLow * stretch) >> 16;
    }
    return true;
}

Fit FitSlice(Slice& slice, int chromaFormat) {
    long long scale = ScaleOf(slice.quantIndex);
    for (int p = 0; p < 3; ++p)
        slice.estimate[0][p] = slice.planeSize[p];
    slice.estimate[0][3] = slice.Body();
    long long planes[3];
    if (scale >= 512) {
        std::copy_n(slice.estimate[0], 3, planes);
    } else {
        int step = 0;
        do {
            scale *= 3;
            Predict(slice, chromaFormat, ++step);
        } while (slice.estimate[step][3] > slice.budgetLow && scale < 512);
        if (slice.estimate[step][3] > slice.budgetLow) {
            scale = 512;
            std::copy_n(slice.estimate[step], 3, planes);
        } else {
            const long long previous = scale / 3;
            const long long wanted = (Interpolate(slice.budgetLow, previous, slice.estimate[step - 1][3],
                                                  scale, slice.estimate[step][3]) +
                                      32768) /
                                     65536;
            scale = ScaleOf(IndexOf(wanted));
            for (int p = 0; p < 3; ++p)
                planes[p] = PlaneAt(scale, previous, slice.estimate[step - 1][p], slice.estimate[step][p]);
        }
    }
    Fit fit{};
    fit.quantIndex = IndexOf(scale);
    long long dc[3], dcSum = 0, planeSum = 0;
    for (int p = 0; p < 3; ++p) {
        dc[p] = (slice.dcBits[p] + 7) / 8;
        dcSum += dc[p];
        planeSum += planes[p];
    }
    fit.reserve = dcSum < slice.budgetHigh;
    const long long share = (slice.budgetHigh - (fit.reserve ? dcSum : 0)) * 65536 / planeSum;
    for (int p = 1; p < 3; ++p)
        fit.budgets[p] = ((planes[p] * share + 32768) >> 16) + (fit.reserve ? dc[p] : 0);
    fit.budgets[0] = slice.budgetHigh - fit.budgets[1] - fit.budgets[2];
    return fit;
}

} // namespace rate_model

rate_model::Slice ModelOf(const PrxSlice& slice) {
    rate_model::Slice model{};
    model.log2Width = static_cast<int>(slice.log2Width);
    for (size_t p = 0; p < 3; ++p) {
        const PrxPlaneStatistics& plane = slice.outcome.planes[p];
        model.dcBits[p] = plane.dcBits;
        model.runBits[p] = plane.runBits;
        model.dcChanges[p] = plane.dcChanges;
        std::ranges::copy(plane.levelHistogram, model.levelHistogram[p]);
        model.planeSize[p] = slice.outcome.planeSize[p];
    }
    model.quantIndex = static_cast<int>(slice.quantIndex);
    model.budgetHigh = slice.budgetHigh;
    model.budgetLow = slice.budgetLow;
    return model;
}

std::vector<rate_model::Slice> ModelsOf(std::span<const PrxSlice> slices) {
    std::vector<rate_model::Slice> models;
    for (const PrxSlice& slice : slices)
        models.push_back(ModelOf(slice));
    return models;
}

PrxSliceOutcome RandomOutcome(std::mt19937& random, uint32_t log2Width, int chromaFormat, double density) {
    std::uniform_real_distribution<> unit(0, 1);
    PrxSliceOutcome outcome{};
    outcome.sliceSize = 6;
    for (size_t p = 0; p < 3; ++p) {
        const int blocks = (p == 0 ? 4 : chromaFormat == 3 ? 4 : 2) << log2Width;
        PrxPlaneStatistics& plane = outcome.planes[p];
        double left = 63 * blocks * std::min(1.0, density * (0.5 + unit(random)));
        for (int& count : plane.levelHistogram) {
            count = static_cast<int>(left);
            left *= std::min(1.0, density + 0.3 * unit(random));
        }
        plane.dcChanges = static_cast<int>(blocks * unit(random));
        plane.dcBits = blocks + static_cast<int>(plane.dcChanges * 12 * unit(random));
        plane.runBits = static_cast<int>(plane.levelHistogram[0] * (1 + 3 * unit(random)));
        plane.acBits = plane.runBits;
        for (const int count : plane.levelHistogram)
            plane.acBits += static_cast<int>(count * (2 + unit(random)));
        outcome.planeSize[p] = (plane.dcBits + plane.acBits + 7) / 8;
        outcome.sliceSize += outcome.planeSize[p];
    }
    return outcome;
}

std::vector<PrxSlice> RandomSlices(std::mt19937& random, size_t count, int chromaFormat, double density) {
    std::uniform_real_distribution<> unit(0, 1);
    std::vector<PrxSlice> slices(count);
    for (PrxSlice& slice : slices) {
        slice.log2Width = unit(random) < 0.7 ? 3 : random() % 4;
        slice.outcome = RandomOutcome(random, slice.log2Width, chromaFormat, density * unit(random) * 2);
    }
    return slices;
}
