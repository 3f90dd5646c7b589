#include "prores/encoder/PrxScale.h"

#include "prores/PrxSliceHeader.h"

#include <gtest/gtest.h>

namespace {

TEST(QuantIndex, IsTheScaleItselfUpTo128) {
    for (int32_t scale = 1; scale <= 128; ++scale)
        EXPECT_EQ(PrxQuantIndexOf(scale), static_cast<uint32_t>(scale));
}

TEST(QuantIndex, LeadsBackToItselfThroughItsScale) {
    for (uint32_t index = 1; index <= prxMaxQuantIndex; ++index)
        EXPECT_EQ(PrxQuantIndexOf(PrxQuantiserOf(index)), index);
}

TEST(QuantIndex, CountsInStepsOf4From130On) {
    EXPECT_EQ(PrxQuantIndexOf(129), 128U);
    EXPECT_EQ(PrxQuantIndexOf(130), 129U);
    EXPECT_EQ(PrxQuantIndexOf(133), 129U);
    EXPECT_EQ(PrxQuantIndexOf(134), 130U);
}

TEST(QuantIndex, LimitsTheScaleTo1And512) {
    EXPECT_EQ(PrxQuantIndexOf(-7), 1U);
    EXPECT_EQ(PrxQuantIndexOf(0), 1U);
    EXPECT_EQ(PrxQuantIndexOf(512), 224U);
    EXPECT_EQ(PrxQuantIndexOf(100000), 224U);
}

/// A scale of 16.16, to the nearest 65536th.
constexpr int64_t Fixed(double scale) { return static_cast<int64_t>(scale * 65536 + 0.5); }

TEST(RoundScale, IsWholeUpTo36) {
    EXPECT_EQ(PrxRoundScale(Fixed(1)), 1);
    EXPECT_EQ(PrxRoundScale(Fixed(35.49)), 35);
    EXPECT_EQ(PrxRoundScale(Fixed(35.5)), 36);
    EXPECT_EQ(PrxRoundScale(Fixed(36.49)), 36);
}

TEST(RoundScale, IsEvenFromThereOnToBelow129) {
    EXPECT_EQ(PrxRoundScale(Fixed(36.5)), 36);
    EXPECT_EQ(PrxRoundScale(Fixed(36.99)), 36);
    EXPECT_EQ(PrxRoundScale(Fixed(37)), 38);
    EXPECT_EQ(PrxRoundScale(Fixed(38.99)), 38);
    EXPECT_EQ(PrxRoundScale(Fixed(39)), 40);
    EXPECT_EQ(PrxRoundScale(Fixed(127.99)), 128);
    EXPECT_EQ(PrxRoundScale(Fixed(128.99)), 128);
}

TEST(RoundScale, IsAMultipleOf4WhereTheEvenOneWouldBeMoreThan128) {
    EXPECT_EQ(PrxRoundScale(Fixed(129)), 128);
    EXPECT_EQ(PrxRoundScale(Fixed(129.99)), 128);
    EXPECT_EQ(PrxRoundScale(Fixed(130)), 132);
    EXPECT_EQ(PrxRoundScale(Fixed(131)), 132);
    EXPECT_EQ(PrxRoundScale(Fixed(133.99)), 132);
    EXPECT_EQ(PrxRoundScale(Fixed(134)), 136);
}

} // namespace
