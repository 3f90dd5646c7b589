#include "prores/encoder/PrxInputRgbVector.h"

#include "prores/RoundingModes.h"
#include "prores/encoder/RgbInputModel.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

namespace {

using namespace rgb_input_model;

/// Calls `check` with each instruction set forced in turn.
template <typename Check>
void OnEveryInstructionSet(const Check& check) {
    ASSERT_FALSE(VectorTargets().empty());
    for (const int64_t target : VectorTargets()) {
        const ForcedTarget forced(target);
        check();
        if (testing::Test::HasFatalFailure()) FAIL() << hwy::TargetName(target);
    }
}

void CompareMacroblocks(uint32_t format, const std::vector<Codes>& pixels, int32_t colorMatrix) {
    for (const auto guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before})
        for (const size_t gap : {0, 64, 3})
            for (const bool upwards : {false, true})
                ASSERT_EQ(ConvertBlocks(PrxGetVectorRgbConverter(format), format, pixels, colorMatrix,
                                        {16, 16, gap, upwards, guard}),
                          ConvertBlocks(PrxGetScalarRgbConverter(format), format, pixels, colorMatrix))
                    << RgbCaseName(format, colorMatrix, false) << ", gap " << gap;
}

void CompareRows(uint32_t format, const std::vector<Codes>& pixels, int32_t colorMatrix) {
    for (const auto guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before})
        ASSERT_EQ(ConvertRow(PrxGetVectorRgbRowConverter(format), format, pixels, colorMatrix, guard),
                  ConvertRow(PrxGetScalarRgbRowConverter(format), format, pixels, colorMatrix))
            << RgbCaseName(format, colorMatrix, false) << ", width " << pixels.size();
}

} // namespace

TEST(PrxInputRgbVector, MacroblocksAreThoseOfTheReferenceFormOnEveryInstructionSet) {
    std::mt19937 random = MakeRandom();
    OnEveryInstructionSet([&] {
        for (const uint32_t format : macroblockFormats)
            for (const int32_t colorMatrix : colorMatrices)
                for (int32_t i = 0; i < 8; ++i)
                    CompareMacroblocks(format, RandomPixels(256, OutMaxModel(format), i < 2, random),
                                       colorMatrix);
    });
}

TEST(PrxInputRgbVector, MacroblocksOfAnyShapeAreThoseOfTheReferenceForm) {
    std::mt19937 random = MakeRandom();
    OnEveryInstructionSet([&] {
        for (const uint32_t format : macroblockFormats) {
            const auto pixels = RandomPixels(256, OutMaxModel(format), false, random);
            for (int32_t size = 1; size <= 16; ++size)
                ASSERT_EQ(
                    ConvertBlocks(PrxGetVectorRgbConverter(format), format, pixels, 9, {size, 17 - size}),
                    ConvertBlocks(PrxGetScalarRgbConverter(format), format, pixels, 9, {size, 17 - size}));
        }
    });
}

TEST(PrxInputRgbVector, RowsOfAnyWidthAreThoseOfTheReferenceFormOnEveryInstructionSet) {
    std::mt19937 random = MakeRandom();
    OnEveryInstructionSet([&] {
        for (const uint32_t format : rowFormats)
            for (const int32_t colorMatrix : colorMatrices)
                for (size_t width = 1; width <= 70; ++width)
                    for (const bool extreme : {false, true})
                        CompareRows(format, RandomPixels(width, OutMaxModel(format), extreme, random),
                                    colorMatrix);
    });
}

TEST(PrxInputRgbVector, RoundsToNearestInAnyModeOfTheThreadAndLeavesTheMode) {
    std::mt19937 random = MakeRandom();
    OnEveryInstructionSet([&] {
        const auto pixels = RandomPixels(256, 65535, false, random);
        ExpectInAnyRoundingMode(
            [&] { return ConvertBlocks(PrxGetVectorRgbConverter(prxFormatB64a), prxFormatB64a, pixels, 6); },
            BlocksModel(pixels, 6, 65535));
        ExpectInAnyRoundingMode(
            [&] { return ConvertRow(PrxGetVectorRgbRowConverter(prxFormatB64a), prxFormatB64a, pixels, 6); },
            RowModel(pixels, 6, 65535));
    });
}

TEST(PrxInputRgbVector, HasNoFormOfWhatTheReferenceFormLacks) {
    for (const uint32_t format : {prxFormatBgra, prxFormatL302, prxFormatV216, prxFormatY408}) {
        EXPECT_EQ(PrxGetVectorRgbConverter(format), nullptr);
        EXPECT_EQ(PrxGetVectorRgbRowConverter(format), nullptr);
    }
    EXPECT_EQ(PrxGetVectorRgbRowConverter(prxFormatN302), nullptr);
}
