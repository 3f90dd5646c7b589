#include "host/Half.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cfenv>
#include <cmath>
#include <vector>

namespace {

/// The value of a half by the definition of binary16 (IEEE 754-2008, 3.4), in double precision.
double ModelValue(uint16_t half) {
    const int exponent = (half >> 10) & 31;
    const int fraction = half & 0x3ff;
    const double sign = (half & 0x8000) != 0 ? -1.0 : 1.0;
    if (exponent == 31) return fraction == 0 ? sign * HUGE_VAL : std::nan("");
    if (exponent == 0) return sign * std::ldexp(fraction, -24);
    return sign * std::ldexp(1024 + fraction, exponent - 25);
}

bool IsNan(uint16_t half) { return (half & 0x7c00) == 0x7c00 && (half & 0x03ff) != 0; }

float FloatOfBits(uint32_t bits) { return std::bit_cast<float>(bits); }

TEST(Half, EveryHalfReadsAsItsExactValue) {
    for (uint32_t bits = 0; bits < 65536; ++bits) {
        const uint16_t half = static_cast<uint16_t>(bits);
        if (IsNan(half)) continue;
        const float value = HalfToFloat(half);
        ASSERT_EQ(value, ModelValue(half)) << std::hex << bits;
        ASSERT_EQ(std::signbit(value), (half & 0x8000) != 0) << std::hex << bits;
    }
}

/// Bits of every half as a single, computed while the thread rounds in a direction.
std::vector<uint32_t> ReadAllHalves(int rounding) {
    std::vector<uint32_t> read(65536);
    const int before = std::fegetround();
    std::fesetround(rounding);
    for (uint32_t bits = 0; bits < 65536; ++bits) {
        const volatile uint16_t half =
            static_cast<uint16_t>(bits); // read here, not before the direction is set
        const volatile uint32_t value = std::bit_cast<uint32_t>(HalfToFloat(half));
        read[bits] = value;
    }
    std::fesetround(before);
    return read;
}

TEST(Half, AHalfReadsTheSameInEveryRoundingDirection) {
    const std::vector<uint32_t> nearest = ReadAllHalves(FE_TONEAREST);
    EXPECT_EQ(ReadAllHalves(FE_DOWNWARD), nearest);
    EXPECT_EQ(ReadAllHalves(FE_UPWARD), nearest);
    EXPECT_EQ(ReadAllHalves(FE_TOWARDZERO), nearest);
}

TEST(Half, ZeroKeepsItsSignWhenRoundingDownward) {
    const std::vector<uint32_t> read = ReadAllHalves(FE_DOWNWARD);
    EXPECT_EQ(read[0x0000], 0u);
    EXPECT_EQ(read[0x8000], 0x80000000u);
}

TEST(Half, EveryHalfNanReadsAsANanOfTheSameSign) {
    for (uint32_t bits = 0; bits < 65536; ++bits) {
        const uint16_t half = static_cast<uint16_t>(bits);
        if (!IsNan(half)) continue;
        ASSERT_TRUE(std::isnan(HalfToFloat(half))) << std::hex << bits;
        ASSERT_EQ(std::bit_cast<uint32_t>(HalfToFloat(half)) >> 31, bits >> 15) << std::hex << bits;
    }
}

TEST(Half, EveryHalfSurvivesTheRoundTrip) {
    for (uint32_t bits = 0; bits < 65536; ++bits) {
        const uint16_t half = static_cast<uint16_t>(bits);
        const uint16_t quiet = IsNan(half) ? half | 0x0200 : half;
        ASSERT_EQ(FloatToHalf(HalfToFloat(half)), quiet) << std::hex << bits;
    }
}

TEST(Half, ValuesBetweenTwoHalvesRoundToTheNearestAndTiesToEven) {
    for (uint16_t lower = 0; lower < 0x7bff; ++lower) {
        const uint16_t upper = lower + 1;
        const uint16_t even = (lower & 1) == 0 ? lower : upper;
        const float middle = static_cast<float>((ModelValue(lower) + ModelValue(upper)) / 2);
        ASSERT_EQ(FloatToHalf(middle), even) << lower;
        ASSERT_EQ(FloatToHalf(std::nextafter(middle, 0.0f)), lower) << lower;
        ASSERT_EQ(FloatToHalf(std::nextafter(middle, HUGE_VALF)), upper) << lower;
        ASSERT_EQ(FloatToHalf(-middle), even | 0x8000) << lower;
    }
}

TEST(Half, RoundingIsNearestOverAllExponentsOfASingle) {
    for (uint64_t bits = 0; bits < 0x7f800000; bits += 9973) {
        const double value = FloatOfBits(static_cast<uint32_t>(bits));
        const uint16_t half = FloatToHalf(static_cast<float>(value));
        if (value >= 65520.0) {
            ASSERT_EQ(half, 0x7c00) << value;
            continue;
        }
        const double error = std::abs(ModelValue(half) - value);
        for (const int neighbour : {std::max(half - 1, 0), std::min(half + 1, 0x7bff)}) {
            ASSERT_LE(error, std::abs(ModelValue(static_cast<uint16_t>(neighbour)) - value)) << value;
        }
    }
}

TEST(Half, TheLastFiniteHalfEndsWhereInfinityBegins) {
    EXPECT_EQ(FloatToHalf(65519.996f), 0x7bff);
    EXPECT_EQ(FloatToHalf(65520.0f), 0x7c00);
    EXPECT_EQ(FloatToHalf(65536.0f), 0x7c00);
    EXPECT_EQ(FloatToHalf(HUGE_VALF), 0x7c00);
    EXPECT_EQ(FloatToHalf(-HUGE_VALF), 0xfc00);
}

TEST(Half, ASingleTooSmallForASubnormalHalfIsASignedZero) {
    EXPECT_EQ(FloatToHalf(std::ldexp(1.0f, -25)), 0x0000);
    EXPECT_EQ(FloatToHalf(std::nextafter(std::ldexp(1.0f, -25), 1.0f)), 0x0001);
    EXPECT_EQ(FloatToHalf(-std::ldexp(1.0f, -30)), 0x8000);
    EXPECT_EQ(FloatToHalf(-0.0f), 0x8000);
    EXPECT_EQ(FloatToHalf(FloatOfBits(1)), 0x0000);
}

TEST(Half, ANanStaysANanEvenIfItsPayloadIsInTheBitsThatAreCutOff) {
    EXPECT_EQ(FloatToHalf(FloatOfBits(0x7f800001)), 0x7e00);
    EXPECT_EQ(FloatToHalf(FloatOfBits(0xffc00000)), 0xfe00);
    EXPECT_EQ(FloatToHalf(FloatOfBits(0x7fffffff)), 0x7fff);
}

} // namespace
