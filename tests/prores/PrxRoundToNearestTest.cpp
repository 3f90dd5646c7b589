// The guard rules the arithmetic of its life, and only that.

#include "prores/PrxRoundToNearest.h"

#include "RoundingModes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

/// What arithmetic gives while a mode is in force.
RoundedSums RoundSumsIn(int mode) {
    std::fesetround(mode);
    const RoundedSums sums = RoundSums();
    std::fesetround(FE_TONEAREST);
    return sums;
}

[[gnu::noinline]] void StoreRoundedSums(RoundedSums* const& sums) { *sums = RoundSums(); }

[[gnu::noinline]] void StoreNearestInteger(const double& value, long* const& integer) {
    *integer = std::lrint(value);
}

TEST(PrxRoundToNearest, TheModesOfTheTestsDiffer) {
    EXPECT_GT(RoundSumsIn(FE_UPWARD).aboveOne, 1.0f);
    EXPECT_LT(RoundSumsIn(FE_DOWNWARD).belowOne, 1.0f);
    EXPECT_LT(RoundSumsIn(FE_DOWNWARD).belowMinusOne, -1.0f);
    EXPECT_LT(RoundSumsIn(FE_TOWARDZERO).belowOne, 1.0f);
    EXPECT_EQ(RoundSumsIn(FE_TOWARDZERO).belowMinusOne, -1.0f);
    EXPECT_EQ(RoundSumsIn(FE_TONEAREST), (RoundedSums{1.0f, 1.0f, -1.0f}));
}

TEST(PrxRoundToNearest, RoundsToNearestDuringItsLifeAndRestoresEachMode) {
    ExpectInAnyRoundingMode(
        [] {
            const PrxRoundToNearest rounding;
            return RoundSums();
        },
        RoundSumsIn(FE_TONEAREST));
}

TEST(PrxRoundToNearest, NestsInItself) {
    ExpectInAnyRoundingMode(
        [] {
            const PrxRoundToNearest outer;
            { const PrxRoundToNearest inner; }
            return RoundSums();
        },
        RoundSumsIn(FE_TONEAREST));
}

TEST(PrxRoundToNearest, GivesBackAModeThatWasSetInsideAnother) {
    for (const int mode : roundingModes) {
        const RoundedSums expected = RoundSumsIn(mode);
        std::fesetround(FE_UPWARD);
        RoundedSums between;
        {
            const PrxRoundToNearest outer;
            std::fesetround(mode);
            { const PrxRoundToNearest inner; }
            between = RoundSums();
        }
        const RoundedSums after = RoundSums();
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(between, expected) << "mode " << mode;
        if (mode != FE_TONEAREST) {
            EXPECT_EQ(after, RoundSumsIn(FE_UPWARD)) << "mode " << mode;
        }
    }
}

TEST(PrxRoundToNearest, RunsAFunctionWithItsArgumentsAndRestoresEachMode) {
    ExpectInAnyRoundingMode(
        [] {
            RoundedSums sums = {};
            PrxRunRoundingToNearest<&StoreRoundedSums>(&sums);
            return sums;
        },
        RoundSumsIn(FE_TONEAREST));
    ExpectInAnyRoundingMode(
        [] {
            long integer = 0;
            PrxRunRoundingToNearest<&StoreNearestInteger>(2.5, &integer);
            return integer;
        },
        2L);
}

} // namespace
