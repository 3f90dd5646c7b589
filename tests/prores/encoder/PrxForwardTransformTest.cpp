#include "prores/encoder/PrxForwardTransform.h"

#include "prores/encoder/ForwardTransformModel.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

TestBlock Transform(TestBlock block) {
    PrxForwardDct(block.data());
    return block;
}

TestBlock Flat(int16_t sample) {
    TestBlock block;
    block.fill(sample);
    return block;
}

/// `sample` in one column, and 0 elsewhere.
TestBlock Column(size_t x, int16_t sample) {
    TestBlock block = {};
    for (size_t y = 0; y < 8; ++y)
        block[8 * y + x] = sample;
    return block;
}

TestBlock OnlyFirst(int16_t value) {
    TestBlock block = {};
    block[0] = value;
    return block;
}

TEST(PrxForwardTransform, EqualsPlainArithmetic) {
    std::mt19937 random = MakeRandom();
    for (int32_t round = 0; round < 3000; ++round) {
        for (const Samples kind : sampleKinds) {
            const TestBlock block = MakeSamples(random, kind);
            ASSERT_EQ(Transform(block), ModelForwardDct(block))
                << "round " << round << ", kind " << static_cast<int>(kind);
        }
    }
}

TEST(PrxForwardTransform, EqualsPlainArithmeticForEachLoneSample) {
    std::mt19937 random = MakeRandom();
    for (size_t i = 0; i < 64; ++i) {
        for (int32_t round = 0; round < 100; ++round) {
            TestBlock block = {};
            block[i] = static_cast<int16_t>(random() & 0xFFFF);
            ASSERT_EQ(Transform(block), ModelForwardDct(block)) << "sample " << block[i] << " at " << i;
        }
    }
}

TEST(PrxForwardTransform, BlocksOfOneCallAreIndependent) {
    std::mt19937 random = MakeRandom();
    std::vector<int16_t> blocks = MakeMixedBlocks(random, 9);
    const std::vector<int16_t> samples = blocks;
    PrxScalarForwardTransform(blocks.data(), 9);
    for (size_t block = 0; block < 9; ++block) {
        TestBlock alone;
        std::copy_n(samples.data() + 64 * block, 64, alone.begin());
        alone = Transform(alone);
        EXPECT_TRUE(std::equal(alone.begin(), alone.end(), blocks.data() + 64 * block)) << "block " << block;
    }
}

TEST(PrxForwardTransform, FlatBlockOfTheLowestSampleGivesOnlyMinus8192) {
    EXPECT_EQ(Transform(Flat(-2048)), OnlyFirst(-8192));
}

TEST(PrxForwardTransform, FlatBlocksGiveFourTimesTheirSampleIn16Bits) {
    for (int32_t sample = INT16_MIN; sample <= INT16_MAX; ++sample)
        ASSERT_EQ(Transform(Flat(static_cast<int16_t>(sample))), OnlyFirst(static_cast<int16_t>(4 * sample)))
            << sample;
}

TEST(PrxForwardTransform, RowsAllAlikeKeepTheTraceOfTheSecondRowsRounder) {
    // Without the shortcut for flat blocks, the rounder of row 1 alone is above 2^18.
    TestBlock expected = {};
    expected[8] = 1;
    TestBlock transformed = Transform(Column(7, 40));
    std::fill_n(transformed.begin(), 8, int16_t{0});
    EXPECT_EQ(transformed, expected);
}

TEST(PrxForwardTransform, MeanOfTheFirstRowTakesColumn1ByALittleTooMuchAndColumn3ByALittleTooLittle) {
    // Half a coefficient rounds up, unless one factor of 16384 is 16385 or 16383.
    for (const size_t x : {0u, 1u, 2u, 5u, 6u, 7u})
        EXPECT_EQ(Transform(Column(x, 1))[0], 1) << "column " << x;
    for (const size_t x : {3u, 4u})
        EXPECT_EQ(Transform(Column(x, 1))[0], 0) << "column " << x;
    for (const size_t x : {0u, 2u, 3u, 4u, 5u, 7u})
        EXPECT_EQ(Transform(Column(x, -1))[0], 0) << "column " << x;
    for (const size_t x : {1u, 6u})
        EXPECT_EQ(Transform(Column(x, -1))[0], -1) << "column " << x;
}

TEST(PrxForwardTransform, SamplesBeyond12BitsSaturateInTheColumnPass) {
    // A sum of 8 * 32767 becomes 32767, and 32767 / 16 is the coefficient.
    EXPECT_EQ(Transform(Column(0, 32767))[0], 2048);
    EXPECT_EQ(Transform(Column(0, -32768))[0], -2048);
}

TEST(PrxForwardTransform, SumsOfTheRowPassWrapAt32Bits) {
    // Row 1 of the column pass is 32767 throughout, and (65534 saturated to 32767) * 4 * 22725 + 330955 is
    // 2978851255, which is -1316116041 in 32 bits.
    TestBlock block = Flat(-32768);
    std::fill_n(block.begin(), 32, int16_t{32767});
    EXPECT_EQ(Transform(block)[8], -5021);
}

} // namespace
