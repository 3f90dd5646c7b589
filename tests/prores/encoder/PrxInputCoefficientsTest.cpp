#include "prores/encoder/PrxInputCoefficients.h"

#include "prores/encoder/RgbInputModel.h"

#include <gtest/gtest.h>

namespace {

using rgb_input_model::Ranges;

struct KnownFactors {
    int32_t colorMatrix;
    PrxInputCoefficients factors;
};

std::array<float, 9> AsArray(const PrxInputCoefficients& factors) {
    return {factors.yR,  factors.yG,  factors.yB,  factors.cbR, factors.cbG,
            factors.cbB, factors.crR, factors.crG, factors.crB};
}

void ExpectKnown(const std::vector<KnownFactors>& all, int32_t inMax, PrxInputTarget target, double half) {
    for (const KnownFactors& known : all) {
        const auto found = AsArray(PrxGetInputCoefficients(known.colorMatrix, inMax, target));
        const auto expected = AsArray(known.factors);
        for (size_t i = 0; i < found.size(); ++i)
            EXPECT_NEAR(found[i], expected[i], half) << "matrix " << known.colorMatrix << ", factor " << i;
    }
}

/// Calls `check` with the factors of each matrix, range and target, and the same in double precision.
template <typename Check>
void ForAllFactors(const Check& check) {
    for (const int32_t colorMatrix : {1, 6, 9})
        for (const int32_t inMax : {255, 1023, 65535})
            for (const auto target : {prxInputTargetSamples, prxInputTargetWords}) {
                const Ranges ranges =
                    target == prxInputTargetSamples ? rgb_input_model::samples : rgb_input_model::words;
                std::array<double, 9> exact;
                for (size_t channel = 0; channel < 3; ++channel) {
                    std::array<double, 3> unit = {};
                    unit[channel] = 1;
                    const auto column = rgb_input_model::Exact(unit, colorMatrix, ranges, inMax);
                    exact[channel] = column.y;
                    exact[3 + channel] = column.cb;
                    exact[6 + channel] = column.cr;
                }
                check(AsArray(PrxGetInputCoefficients(colorMatrix, inMax, target)), exact);
            }
}

} // namespace

TEST(PrxInputCoefficients, SampleFactorsOf8BitsHaveTheirKnownDigits) {
    ExpectKnown({{1,
                  {2.921374f, 9.827689f, 0.992113f, -1.610300f, -5.417151f, 7.027451f, 7.027451f, -6.383075f,
                   -0.644376f}},
                 {6,
                  {4.108612f, 8.066071f, 1.566494f, -2.371566f, -4.655885f, 7.027451f, 7.027451f, -5.884613f,
                   -1.142838f}},
                 {9,
                  {3.609807f, 9.316518f, 0.814852f, -1.962487f, -5.064964f, 7.027451f, 7.027451f, -6.462243f,
                   -0.565208f}}},
                255, prxInputTargetSamples, 0.51e-6);
}

TEST(PrxInputCoefficients, SampleFactorsOf16BitsHaveTheirKnownDigits) {
    const auto& factors = PrxGetInputCoefficients(1, 65535, prxInputTargetSamples);
    EXPECT_NEAR(factors.yR, 0.011367215, 0.51e-9);
    EXPECT_NEAR(factors.yG, 0.038240038, 0.51e-9);
    EXPECT_NEAR(factors.yB, 0.003860362, 0.51e-9);
    EXPECT_NEAR(factors.cbB, 0.027344167, 0.51e-9);
}

TEST(PrxInputCoefficients, WordFactorsOf16BitsHaveTheirKnownDigits) {
    ExpectKnown({{1,
                  {0.181875437f, 0.611840606f, 0.061765786f, -0.02506303f, -0.084313639f, 0.109376669f,
                   0.109376669f, -0.099347465f, -0.010029204f}},
                 {9,
                  {0.224735066f, 0.580016673f, 0.050730072f, -0.030544542f, -0.078832127f, 0.109376669f,
                   0.109376669f, -0.100579657f, -0.008797011f}},
                 {6,
                  {0.255789071f, 0.502167821f, 0.097524926f, -0.03691154f, -0.072465129f, 0.109376669f,
                   0.109376669f, -0.091589309f, -0.017787362f}}},
                65535, prxInputTargetWords, 0.51e-9);
}

TEST(PrxInputCoefficients, EachIsTheFloatNearestToItsDoubleValue) {
    ForAllFactors([](const std::array<float, 9>& factors, const std::array<double, 9>& exact) {
        for (size_t i = 0; i < factors.size(); ++i)
            EXPECT_EQ(factors[i], static_cast<float>(exact[i])) << "factor " << i;
    });
}

TEST(PrxInputCoefficients, GreyHasNoChroma) {
    ForAllFactors([](const std::array<float, 9>& factors, const std::array<double, 9>&) {
        EXPECT_NEAR(factors[3] + factors[4] + factors[5], 0, 1e-7 * factors[5]);
        EXPECT_NEAR(factors[6] + factors[7] + factors[8], 0, 1e-7 * factors[6]);
    });
}

TEST(PrxInputCoefficients, AnyOtherMatrixIsThatOfBt601) {
    for (const int32_t colorMatrix : {-1, 0, 2, 5, 10, 1000})
        for (const auto target : {prxInputTargetSamples, prxInputTargetWords})
            EXPECT_EQ(&PrxGetInputCoefficients(colorMatrix, 1023, target),
                      &PrxGetInputCoefficients(6, 1023, target));
}
