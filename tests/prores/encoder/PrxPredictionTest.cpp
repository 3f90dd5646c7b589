#include "prores/encoder/PrxPrediction.h"

#include "prores/encoder/RateControlModel.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace {

constexpr int32_t chroma422 = 2;
constexpr int32_t chroma444 = 3;

TEST(InterpolateScale, IsTheFirstScaleWhereTheSizeIsTheFirst) {
    EXPECT_EQ(PrxInterpolateScale(900, 9, 900, 27, 300), 9 * 65536);
}

TEST(InterpolateScale, FindsTheGeometricMeanHalfWay) {
    // 65536 times the root of 3 is 113511.68.
    EXPECT_EQ(PrxInterpolateScale(600, 9, 900, 27, 300), 9 * 113512);
}

TEST(InterpolateScale, StopsJustShortOfTheSecondScale) {
    EXPECT_EQ(PrxInterpolateScale(300, 9, 900, 27, 300), 9 * 196397);
    EXPECT_EQ(PrxInterpolateScale(0, 9, 900, 27, 300), 9 * 196397);
}

TEST(InterpolateScale, IsTheSecondScaleIfTheSizeDoesNotFall) {
    EXPECT_EQ(PrxInterpolateScale(500, 216, 900, 648, 900), 648 * 65536);
    EXPECT_EQ(PrxInterpolateScale(500, 216, 900, 648, 901), 648 * 65536);
}

TEST(InterpolateScale, MayPassTheLargestScale) {
    EXPECT_GT(PrxInterpolateScale(310, 216, 900, 648, 300), 512 * 65536);
}

TEST(InterpolateScale, StaysAtTheFirstScaleForAnEvenLargerSize) {
    EXPECT_EQ(PrxInterpolateScale(1200, 9, 900, 27, 300), 9 * 65536);
}

TEST(InterpolateScale, TakesSizesOfMoreThan32Bits) {
    const int64_t unit = int64_t{1} << 33;
    EXPECT_EQ(PrxInterpolateScale(2 * unit, 9, 3 * unit, 27, unit), 9 * 113512);
}

TEST(PlaneAt, IsTheFirstSizeUpToTheFirstScale) {
    EXPECT_EQ(PrxPlaneAt(9, 9, 100, 40), 100);
    EXPECT_EQ(PrxPlaneAt(8, 9, 100, 40), 100);
}

TEST(PlaneAt, IsTheFirstSizeIfAScaleIs0) {
    EXPECT_EQ(PrxPlaneAt(0, -1, 100, 40), 100);
    EXPECT_EQ(PrxPlaneAt(5, 0, 100, 40), 100);
}

TEST(PlaneAt, IsTheSecondSizeFromThreeTimesTheScaleOn) {
    EXPECT_EQ(PrxPlaneAt(27, 9, 100, 40), 40);
    EXPECT_EQ(PrxPlaneAt(28, 9, 100, 40), 40);
}

TEST(PlaneAt, FallsWithTheLogarithmInBetween) {
    // The index is 512, whose entry is -41349: 65536 times the logarithm of a half to base 3.
    EXPECT_EQ(PrxPlaneAt(18, 9, 1000, 0), 369);
    EXPECT_EQ(PrxPlaneAt(18, 9, 100, 40), 62);
}

TEST(PlaneAt, RisesIfTheSecondSizeIsLarger) { EXPECT_EQ(PrxPlaneAt(18, 9, 40, 100), 78); }

PrxSlice SliceOf(uint32_t log2Width, const PrxPlaneStatistics& luma, int32_t lumaSize) {
    PrxSlice slice{};
    slice.log2Width = log2Width;
    slice.outcome.planes[0] = luma;
    slice.outcome.planeSize = {lumaSize, 0, 0};
    return slice;
}

TEST(PredictSlice, TakesOffTwoBitsOfEachDcChangeForEachTripling) {
    // 100 bits - 2 * 2 * 10, more than 2 for each of the 4 blocks; with 7 for the last byte 67 / 8.
    const PrxSlice slice = SliceOf(0, {.dcBits = 100, .dcChanges = 10}, 1000);
    EXPECT_EQ(PrxPredictSlice(slice, chroma422, 2).planes[0], 8);
}

TEST(PredictSlice, KeepsTwoBitsOfEachBlocksDc) {
    const PrxSlice slice = SliceOf(3, {.dcBits = 100, .dcChanges = 30}, 1000);
    EXPECT_EQ(PrxPredictSlice(slice, chroma422, 3).planes[0], (64 + 7) / 8);
}

TEST(PredictSlice, KeepsAllDcBitsIfTheyAreFewerThanTwoForEachBlock) {
    const PrxSlice slice = SliceOf(3, {.dcBits = 40, .dcChanges = 30}, 1000);
    EXPECT_EQ(PrxPredictSlice(slice, chroma422, 3).planes[0], (40 + 7) / 8);
}

TEST(PredictSlice, PredictsNoRunBitsIfNoLevelIsLeft) {
    const PrxSlice slice =
        SliceOf(0, {.dcBits = 8, .runBits = 500, .levelHistogram = {100, 0, 0, 0, 0, 0, 0, 0}}, 1000);
    EXPECT_EQ(PrxPredictSlice(slice, chroma422, 1).planes[0], (8 + 7) / 8);
}

TEST(PredictSlice, AddsRunsThatGrowAsLevelsVanish) {
    // ratio 65536 * 50 / 100 = 32768, index 512, root 46341; spread 151 * 50 * 65536 / (2 * 51 * 100) =
    // 48509; (46341 * 48509 + 32768) >> 16 = 34301; run (34301 * 50 + 32768 + 300 * 65536 / 2) >> 16 = 176.
    // Levels: (131072 * 50 + 32768) >> 16 = 100. In all (8 + 176 + 100 + 7) / 8.
    const PrxSlice slice =
        SliceOf(0, {.dcBits = 8, .runBits = 300, .levelHistogram = {100, 50, 0, 0, 0, 0, 0, 0}}, 1000);
    EXPECT_EQ(PrxPredictSlice(slice, chroma422, 1).planes[0], 36);
}

TEST(PredictSlice, PredictsNoMoreRunBitsThanThereAre) {
    // By the rule runs would take 27 bits more than half of the 10.
    const PrxSlice slice =
        SliceOf(0, {.dcBits = 8, .runBits = 10, .levelHistogram = {100, 50, 0, 0, 0, 0, 0, 0}}, 1000);
    EXPECT_EQ(PrxPredictSlice(slice, chroma422, 1).planes[0], (8 + 10 + 100 + 7) / 8);
}

TEST(PredictSlice, PredictsNoPlaneLargerThanItIs) {
    const PrxSlice slice = SliceOf(0, {.dcBits = 800}, 50);
    EXPECT_EQ(PrxPredictSlice(slice, chroma422, 1).planes[0], 50);
}

TEST(PredictSlice, CountsTwiceAsManyChromaBlocksIn444) {
    PrxSlice slice{};
    slice.log2Width = 3;
    slice.outcome.planes[1] = {.dcBits = 100, .dcChanges = 50};
    slice.outcome.planeSize[1] = 1000;
    EXPECT_EQ(PrxPredictSlice(slice, chroma422, 1).planes[1], (2 * 16 + 7) / 8);
    EXPECT_EQ(PrxPredictSlice(slice, chroma444, 1).planes[1], (2 * 32 + 7) / 8);
}

TEST(PredictSlice, AgreesWithTheModelOnRandomStatistics) {
    std::mt19937 random = MakeRandom();
    for (int i = 0; i < 2000; ++i) {
        const int32_t chromaFormat = i % 2 == 0 ? chroma422 : chroma444;
        PrxSlice slice{};
        slice.log2Width = random() % 4;
        slice.outcome = RandomOutcome(random, slice.log2Width, chromaFormat, (i % 100) / 99.0);
        rate_model::Slice model = ModelOf(slice);
        for (uint32_t step = 1; step < 8; ++step) {
            rate_model::Predict(model, chromaFormat, static_cast<int>(step));
            const PrxSliceEstimate estimate = PrxPredictSlice(slice, chromaFormat, step);
            for (size_t p = 0; p < 3; ++p)
                ASSERT_EQ(estimate.planes[p], model.estimate[step][p]) << i << " " << step << " " << p;
            ASSERT_EQ(estimate.sum, model.estimate[step][3]);
        }
    }
}

} // namespace
