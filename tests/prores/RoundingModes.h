#pragma once

#include <gtest/gtest.h>

#include <cfenv>

inline constexpr int roundingModes[] = {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};

/// What single-precision arithmetic makes of sums that lie between two floats.
struct RoundedSums {
    float aboveOne;
    float belowOne;
    float belowMinusOne;

    bool operator==(const RoundedSums&) const = default;
};

inline RoundedSums RoundSums() {
    const volatile float one = 1.0f;
    const volatile float little = 1e-10f;
    const volatile float above = one + little;
    const volatile float below = one - little;
    const volatile float belowMinus = -one - little;
    return {above, below, belowMinus};
}

/// Calls `run` in each mode of the caller: the result has to be `expected`, and the mode to stay, that of the
/// vector unit as well as that of <cfenv>.
template <typename Run, typename Result>
void ExpectInAnyRoundingMode(const Run& run, const Result& expected) {
    for (const int mode : roundingModes) {
        std::fesetround(mode);
        const RoundedSums before = RoundSums();
        const Result result = run();
        const RoundedSums after = RoundSums();
        const int modeAfter = std::fegetround();
        std::fesetround(FE_TONEAREST);
        EXPECT_TRUE(result == expected) << "mode " << mode;
        EXPECT_TRUE(before == after) << "mode " << mode;
        EXPECT_EQ(modeAfter, mode);
    }
}
