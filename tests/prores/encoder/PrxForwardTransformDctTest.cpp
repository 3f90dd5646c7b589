#include "prores/encoder/PrxForwardTransform.h"

#include "prores/encoder/ForwardTransformModel.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

// The transform beside half of the orthonormal discrete cosine transform in double precision.

namespace {

constexpr int32_t rounds = 60000;

struct Errors {
    double largest = 0;
    int64_t beyond1 = 0; ///< of `rounds` times 64
    std::array<double, 64> means = {};
};

Errors Measure(Samples kind, std::mt19937& random) {
    const PrxForwardTransform transform = PrxSelectForwardTransform();
    Errors errors;
    for (int32_t round = 0; round < rounds; ++round) {
        TestBlock block = MakeSamples(random, kind);
        const std::array<double, 64> exact = ExactForwardDct(block);
        transform(block.data(), 1);
        for (size_t i = 0; i < 64; ++i) {
            const double error = block[i] - exact[i];
            errors.largest = std::max(errors.largest, std::abs(error));
            errors.beyond1 += std::abs(error) > 1 ? 1 : 0;
            errors.means[i] += error / rounds;
        }
    }
    return errors;
}

// The largest error of a run lies between 0.85 and 0.98; one above 1 is possible in principle.
TEST(PrxForwardTransformDct, StaysWithin1OfHalfTheExactTransform) {
    std::mt19937 random = MakeRandom();
    for (const Samples kind : {Samples::Picture, Samples::Noise}) {
        const Errors errors = Measure(kind, random);
        EXPECT_LE(errors.beyond1, 2);
        EXPECT_LT(errors.largest, 1.1);
        EXPECT_GT(errors.largest, 0.7) << "the bound is loose";
    }
}

// At worst all products of the column pass are cut off by nearly 1 or nearly 0, together with the errors of
// the factors: 0.5 for the last rounding, 0.8 for the products, 0.2 for the factors.
TEST(PrxForwardTransformDct, StaysWithin1AndAHalfForTheExtremesOf12Bits) {
    std::mt19937 random = MakeRandom();
    const double largest = Measure(Samples::Extremes, random).largest;
    EXPECT_LT(largest, 1.5);
    EXPECT_GT(largest, 0.9) << "the bound is loose";
}

// The first result of each row has a rounder that makes up for what the column pass cuts off. The mean of so
// many errors, whose deviation is 0.3, is known to 0.0013; a single product that were rounded in another way
// would show as nearly 0.1 or more.
TEST(PrxForwardTransformDct, FirstResultsOfAllRowsHaveNoBias) {
    std::mt19937 random = MakeRandom();
    const Errors errors = Measure(Samples::Noise, random);
    for (size_t y = 0; y < 8; ++y)
        EXPECT_NEAR(errors.means[8 * y], 0, 0.0075) << "row " << y;
}

TEST(PrxForwardTransformDct, OtherResultsHaveNoBias) {
    std::mt19937 random = MakeRandom();
    const Errors errors = Measure(Samples::Noise, random);
    for (size_t i = 0; i < 64; ++i)
        EXPECT_NEAR(errors.means[i], 0, 0.0075) << "position " << i;
}

} // namespace
