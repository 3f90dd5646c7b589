#include "prores/PrxColorCoefficients.h"

#include "RgbModel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace {

using Check = std::function<void(const PrxColorCoefficients&, int32_t matrix, int32_t outMax, double scale)>;

void ForEachCase(const Check& check) {
    for (const int32_t matrix : colorMatrices) {
        for (const int32_t outMax : {255, 1023, 65535}) {
            for (const PrxInputScale scale : {prxInputScaleSample, prxInputScaleWord})
                check(PrxGetColorCoefficients(matrix, outMax, scale), matrix, outMax, scale);
        }
    }
}

/// Whether no other float is nearer to `exact`.
bool IsNearestFloat(float value, long double exact) {
    const auto distance = [exact](float v) { return std::fabs(static_cast<long double>(v) - exact); };
    return distance(value) <= distance(std::nextafter(value, -INFINITY)) &&
           distance(value) <= distance(std::nextafter(value, INFINITY));
}

} // namespace

TEST(ColorCoefficients, WhiteIsTheLargestCode) {
    ForEachCase([](const PrxColorCoefficients& factors, int32_t, int32_t outMax, double scale) {
        EXPECT_TRUE(IsNearestFloat(factors.yScale, outMax / (219.0L * scale)));
    });
}

TEST(ColorCoefficients, ChromaFactorsAreThoseOfTheStandardRoundedOnce) {
    ForEachCase([](const PrxColorCoefficients& factors, int32_t matrix, int32_t outMax, double scale) {
        const auto [crToR, cbToG, crToG, cbToB] = BaseFactorsModel(matrix);
        const long double range = outMax / (224.0L * scale);
        EXPECT_TRUE(IsNearestFloat(factors.crToR, crToR * range));
        EXPECT_TRUE(IsNearestFloat(factors.cbToG, cbToG * range));
        EXPECT_TRUE(IsNearestFloat(factors.crToG, crToG * range));
        EXPECT_TRUE(IsNearestFloat(factors.cbToB, cbToB * range));
    });
}

TEST(ColorCoefficients, FactorsFollowFromTheLumaWeightsOfTheStandards) {
    struct Weights {
        int32_t matrix;
        double red;
        double blue;
    };
    for (const Weights& weights : {Weights{1, 0.2126, 0.0722}, {6, 0.299, 0.114}, {9, 0.2627, 0.0593}}) {
        const PrxColorCoefficients& factors =
            PrxGetColorCoefficients(weights.matrix, 65535, prxInputScaleWord);
        const double range = 65535 / (224.0 * 256);
        const double green = 1 - weights.red - weights.blue;
        EXPECT_NEAR(factors.crToR / range, 2 * (1 - weights.red), 1e-6);
        EXPECT_NEAR(factors.cbToB / range, 2 * (1 - weights.blue), 1e-6);
        EXPECT_NEAR(factors.cbToG / range, -2 * (1 - weights.blue) * weights.blue / green, 1e-6);
        EXPECT_NEAR(factors.crToG / range, -2 * (1 - weights.red) * weights.red / green, 1e-6);
    }
}

TEST(ColorCoefficients, BlueOfBt2020In8BitsIsHeldInSinglePrecision) {
    const PrxColorCoefficients& factors = PrxGetColorCoefficients(9, 255, prxInputScaleSample);
    EXPECT_EQ(factors.cbToB, static_cast<float>(1.8814 * 255 / (224 * 32)));
}

TEST(ColorCoefficients, HalvedChromaFactorsTimesTwoAreTheFactors) {
    ForEachCase([](const PrxColorCoefficients& factors, int32_t, int32_t, double) {
        const PrxColorCoefficients halved = PrxHalveChromaFactors(factors);
        EXPECT_EQ(halved.yScale, factors.yScale);
        EXPECT_EQ(halved.crToR * 2, factors.crToR);
        EXPECT_EQ(halved.cbToG * 2, factors.cbToG);
        EXPECT_EQ(halved.crToG * 2, factors.crToG);
        EXPECT_EQ(halved.cbToB * 2, factors.cbToB);
    });
}
