#include "prores/encoder/PrxRateTables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>

namespace {

/// How far `value` is from the nearest half.
long double DistanceFromHalf(long double value) { return std::abs(value - std::floor(value) - 0.5L); }

long double Power(size_t i) { return 65536 * std::exp2(std::log2(3.0L) * i / 1024); }
long double Root(size_t i) { return 65536 * std::sqrt(i / 1024.0L); }
long double Log(size_t i) { return 65536 * std::log2(i / 1024.0L) / std::log2(3.0L); }

TEST(RateTables, HoldPowersOf3RoundedToNearest) {
    for (size_t i = 0; i < 1024; ++i)
        EXPECT_EQ(PrxGetRateTables().power[i], std::llround(Power(i))) << i;
}

TEST(RateTables, HoldSquareRootsRoundedToNearest) {
    for (int64_t i = 0; i < 1024; ++i) {
        // With whole numbers only: 2 * root is within 1 of twice the true value, whose square this is.
        const int64_t square = 4 * i << 22;
        const int64_t twice = 2 * int64_t{PrxGetRateTables().root[static_cast<size_t>(i)]};
        EXPECT_LE(square, (twice + 1) * (twice + 1)) << i;
        EXPECT_TRUE(twice == 0 || (twice - 1) * (twice - 1) <= square) << i;
    }
}

TEST(RateTables, HoldLogarithmsToBase3RoundedToNearest) {
    for (size_t i = 1; i < 1024; ++i)
        EXPECT_EQ(PrxGetRateTables().log[i], std::llround(Log(i))) << i;
}

TEST(RateTables, HaveALogarithmOf0For0) { EXPECT_EQ(PrxGetRateTables().log[0], 0); }

TEST(RateTables, HoldNoValueNearAHalfThatAnotherLibraryCouldRoundTheOtherWay) {
    for (size_t i = 1; i < 1024; ++i) {
        EXPECT_GT(DistanceFromHalf(Power(i)), 0.0005L) << i;
        EXPECT_GT(DistanceFromHalf(Root(i)), 0.0005L) << i;
        EXPECT_GT(DistanceFromHalf(Log(i)), 0.0005L) << i;
    }
}

TEST(RateTables, TakeTheNearestIndexHalvesUp) {
    EXPECT_EQ(PrxRateTableIndex(0), 0U);
    EXPECT_EQ(PrxRateTableIndex(31), 0U);
    EXPECT_EQ(PrxRateTableIndex(32), 1U);
    EXPECT_EQ(PrxRateTableIndex(45875), 717U);
}

TEST(RateTables, AreNeverReadOutsideTheirEnds) {
    EXPECT_EQ(PrxRateTableIndex(65536), 1023U);
    EXPECT_EQ(PrxRateTableIndex(int64_t{1} << 40), 1023U);
    EXPECT_EQ(PrxRateTableIndex(-33), 0U);
}

} // namespace
