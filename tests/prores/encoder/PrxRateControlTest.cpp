#include "prores/encoder/PrxRateControl.h"

#include "prores/encoder/RateControlModel.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace {

/// A slice of 8 macroblocks whose planes take `bodies` bytes, of which DC takes `dcBits` bits in each.
PrxSlice SliceOf(std::array<int32_t, 3> bodies, int32_t dcBits) {
    PrxSlice slice{};
    slice.log2Width = 3;
    slice.outcome.planeSize = bodies;
    for (PrxPlaneStatistics& plane : slice.outcome.planes)
        plane.dcBits = dcBits;
    return slice;
}

std::vector<PrxSlice> SlicesOf(size_t count, std::array<int32_t, 3> bodies, int32_t dcBits) {
    std::vector<PrxSlice> slices;
    for (size_t i = 0; i < count; ++i)
        slices.push_back(SliceOf(bodies, dcBits));
    return slices;
}

TEST(ShareBudget, AgreesWithTheModelOnRandomStatistics) {
    std::mt19937 random = MakeRandom();
    std::uniform_real_distribution<> unit(0, 1);
    int withFloor = 0, withoutFloor = 0;
    for (int i = 0; i < 3000; ++i) {
        std::vector<PrxSlice> slices = RandomSlices(random, 1 + random() % 40, 2 + i % 2, unit(random));
        const auto actual = static_cast<double>(PrxSumBodies(slices));
        const auto high = static_cast<int64_t>(actual * (0.02 + 0.97 * unit(random)));
        const PrxPictureBudget budget{high, high * 8 / 9, high / 9 / static_cast<int64_t>(slices.size())};
        auto models = ModelsOf(slices);
        bool useFloor;
        const bool again =
            rate_model::ShareBudget(models, {budget.high, budget.low, budget.perMb}, &useFloor);
        ASSERT_EQ(PrxShareBudget(slices, budget), again);
        (useFloor ? withFloor : withoutFloor) += again;
        if (!again) continue;
        for (size_t k = 0; k < slices.size(); ++k) {
            ASSERT_EQ(slices[k].budgetHigh, models[k].budgetHigh) << i << " " << k;
            ASSERT_EQ(slices[k].budgetLow, models[k].budgetLow) << i << " " << k;
        }
    }
    EXPECT_GT(withFloor, 20);
    EXPECT_GT(withoutFloor, 20);
}

TEST(ShareBudget, KeepsTheSumWithinTheHighBudget) {
    std::mt19937 random = MakeRandom();
    std::uniform_real_distribution<> unit(0, 1);
    for (int i = 0; i < 2000; ++i) {
        std::vector<PrxSlice> slices = RandomSlices(random, 1 + random() % 100, 2, unit(random));
        const int64_t high = PrxSumBodies(slices) * static_cast<int64_t>(1 + random() % 99) / 100;
        const PrxPictureBudget budget{high, high * 8 / 9, high / 9 / static_cast<int64_t>(slices.size())};
        if (!PrxShareBudget(slices, budget)) continue;
        int64_t sum = 0;
        for (const PrxSlice& slice : slices) {
            ASSERT_GE(slice.budgetHigh, 0);
            ASSERT_LE(slice.budgetLow, slice.budgetHigh);
            sum += slice.budgetHigh;
        }
        ASSERT_LE(sum, high);
    }
}

TEST(ShareBudget, GivesSmallSlicesWhatTheyTake) {
    std::vector<PrxSlice> slices = SlicesOf(10, {400, 100, 100}, 80);
    slices[3] = SliceOf({10, 5, 5}, 40);
    ASSERT_TRUE(PrxShareBudget(slices, {4500, 4000, 50}));
    EXPECT_EQ(slices[3].budgetHigh, 20);
    EXPECT_EQ(slices[3].budgetLow, 20);
    EXPECT_EQ(slices[0].budgetHigh, slices[9].budgetHigh);
}

TEST(ShareBudget, SetsDcValuesAsideWhileThereIsRoomForThem) {
    // 30 bytes of DC in each slice: 300 are fixed. (3000 - 300) / (6000 - 300) of the other 570 bytes is
    // left.
    std::vector<PrxSlice> slices = SlicesOf(10, {400, 100, 100}, 80);
    ASSERT_TRUE(PrxShareBudget(slices, {3300, 3000, 0}));
    EXPECT_EQ(slices[0].budgetLow, ((570 * (2700 * 65536 / 5700)) >> 16) + 30);
}

TEST(ShareBudget, DropsDcValuesIfTheyReachTheLowBudget) {
    // DC takes 300 bytes of each 600, as many in all as the low budget has.
    std::vector<PrxSlice> slices = SlicesOf(10, {400, 100, 100}, 800);
    ASSERT_TRUE(PrxShareBudget(slices, {3300, 3000, 0}));
    EXPECT_EQ(slices[0].budgetLow, 300);
    EXPECT_EQ(slices[0].budgetHigh, (300 * (3300 * 65536 / 3000)) >> 16);
    ASSERT_TRUE(PrxShareBudget(slices, {1650, 1500, 0}));
    EXPECT_LT(slices[0].budgetLow, slices[0].DcSize());
}

TEST(ShareBudget, HasNothingToShareAmongSmallSlicesOnly) {
    std::vector<PrxSlice> slices = SlicesOf(10, {10, 5, 5}, 40);
    EXPECT_FALSE(PrxShareBudget(slices, {150, 140, 1000}));
}

TEST(ShareBudget, GivesUpWhereNoSliceWouldGetAByte) {
    std::vector<PrxSlice> slices = SlicesOf(10, {30, 5, 5}, 800);
    EXPECT_FALSE(PrxShareBudget(slices, {5, 4, 0}));
}

TEST(SumBodies, CountsPlanesWithoutHeadersBeyond32Bits) {
    const std::vector<PrxSlice> slices = SlicesOf(4, {1 << 29, 1 << 28, 1 << 28}, 0);
    EXPECT_EQ(PrxSumBodies(slices), int64_t{1} << 32);
}

} // namespace
