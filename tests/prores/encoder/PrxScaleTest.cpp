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

} // namespace
