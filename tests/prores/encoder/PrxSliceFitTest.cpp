#include "prores/encoder/PrxRateControl.h"

#include "prores/encoder/RateControlModel.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

constexpr int32_t chroma422 = 2;

PrxSlice RandomSlice(std::mt19937& random, int32_t chromaFormat) {
    std::uniform_real_distribution<> unit(0, 1);
    PrxSlice slice{};
    slice.log2Width = random() % 4;
    slice.outcome = RandomOutcome(random, slice.log2Width, chromaFormat, unit(random));
    slice.quantIndex = 1 + random() % 224;
    const int32_t body = slice.Body();
    slice.budgetHigh = 1 + static_cast<int32_t>(random() % static_cast<uint32_t>(body));
    slice.budgetLow = slice.budgetHigh * 8 / 9;
    return slice;
}

int32_t Sum(const PrxPlaneBudgets& budgets) { return std::accumulate(budgets.begin(), budgets.end(), 0); }

TEST(FitSlice, AgreesWithTheModelOnRandomStatistics) {
    std::mt19937 random = MakeRandom();
    int reserved = 0, cut = 0;
    for (int i = 0; i < 20000; ++i) {
        const int32_t chromaFormat = 2 + i % 2;
        PrxSlice slice = RandomSlice(random, chromaFormat);
        rate_model::Slice model = ModelOf(slice);
        const rate_model::Fit expected = rate_model::FitSlice(model, chromaFormat);
        const PrxSliceFit fit = PrxFitSlice(slice, chromaFormat);
        ASSERT_EQ(fit.quantIndex, static_cast<uint32_t>(expected.quantIndex)) << i;
        for (size_t p = 0; p < 3; ++p)
            ASSERT_EQ(fit.budgets[p], expected.budgets[p]) << i << " " << p;
        (expected.reserve ? reserved : cut)++;
    }
    EXPECT_GT(reserved, 100);
    EXPECT_GT(cut, 100);
}

TEST(FitSlice, SharesOutTheHighBudgetAndNoMore) {
    std::mt19937 random = MakeRandom();
    for (int i = 0; i < 20000; ++i) {
        PrxSlice slice = RandomSlice(random, chroma422);
        const PrxSliceFit fit = PrxFitSlice(slice, chroma422);
        ASSERT_EQ(Sum(fit.budgets), slice.budgetHigh);
        for (const int32_t budget : fit.budgets)
            ASSERT_GE(budget, 0);
    }
}

TEST(FitSlice, NeverMakesASliceFiner) {
    std::mt19937 random = MakeRandom();
    for (int i = 0; i < 5000; ++i) {
        PrxSlice slice = RandomSlice(random, chroma422);
        ASSERT_GE(PrxFitSlice(slice, chroma422).quantIndex, slice.quantIndex);
    }
}

TEST(FitSlice, StaysAtTheCoarsestScaleWithThePlanesAsMeasured) {
    PrxSlice slice{};
    slice.log2Width = 3;
    slice.outcome.planeSize = {400, 100, 300};
    slice.quantIndex = 224;
    slice.budgetHigh = 80;
    slice.budgetLow = 70;
    const PrxSliceFit fit = PrxFitSlice(slice, chroma422);
    EXPECT_EQ(fit.quantIndex, 224U);
    EXPECT_EQ(fit.budgets, (PrxPlaneBudgets{40, 10, 30}));
}

TEST(FitSlice, LetsEachPlaneKeepItsDcValuesWhileTheyAreBelowTheBudget) {
    PrxSlice slice{};
    slice.log2Width = 3;
    slice.outcome.planeSize = {400, 100, 300};
    slice.outcome.planes[0].dcBits = 30 * 8;
    slice.outcome.planes[1].dcBits = 20 * 8 - 7;
    slice.outcome.planes[2].dcBits = 10 * 8;
    slice.quantIndex = 224;
    slice.budgetHigh = 140;
    EXPECT_EQ(PrxFitSlice(slice, chroma422).budgets, (PrxPlaneBudgets{70, 30, 40}));
}

TEST(FitSlice, ReservesNothingForDcValuesThatReachTheBudget) {
    PrxSlice slice{};
    slice.log2Width = 3;
    slice.outcome.planeSize = {400, 100, 300};
    slice.outcome.planes[0].dcBits = 50 * 8;
    slice.outcome.planes[1].dcBits = 30 * 8;
    slice.quantIndex = 224;
    slice.budgetHigh = 80;
    EXPECT_EQ(PrxFitSlice(slice, chroma422).budgets, (PrxPlaneBudgets{40, 10, 30}));
}

TEST(FitSlice, GivesPlanesOfASliceWithoutBudgetNothing) {
    PrxSlice slice{};
    slice.outcome.planeSize = {400, 100, 300};
    slice.quantIndex = 224;
    EXPECT_EQ(PrxFitSlice(slice, chroma422).budgets, (PrxPlaneBudgets{0, 0, 0}));
}

} // namespace
