#include "prores/PrxInverseTransform.h"

#include "prores/TransformModel.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

// The transforms beside the inverse discrete cosine transform in double precision. Full blocks and those of
// at least 2 by 2 values are compared with the transform of as many points; smaller ones with the means of
// the full block's samples.

namespace {

using Plane = std::vector<double>;

/// The frequency `u` at point `i` of `points`; the mean square over all points is 1.
double Cosine(int32_t u, int32_t i, int32_t points) {
    return (u == 0 ? 1.0 : std::numbers::sqrt2) * std::cos((2 * i + 1) * u * std::numbers::pi / (2 * points));
}

/// The same of `count` means over 8 points.
double MeanCosine(int32_t u, int32_t i, int32_t count) {
    const int32_t step = 8 / count;
    double sum = 0;
    for (int32_t k = 0; k < step; ++k)
        sum += Cosine(u, i * step + k, 8);
    return sum / step;
}

/// What each sample takes of each coefficient: rows of samples, columns of coefficients.
Plane MakeBasis(BlockSize size) {
    const auto cosine = size.values() <= 2 ? MeanCosine : Cosine;
    const int32_t width = size.width();
    Plane basis;
    for (int32_t i = 0; i < size.values(); ++i)
        for (int32_t k = 0; k < size.values(); ++k)
            basis.push_back(cosine(k % width, i % width, width) *
                            cosine(k / width, i / width, size.height()));
    return basis;
}

/// Dequantised coefficients of a random block of samples at 14 bits: a level and noise of `amplitude` around
/// it.
std::vector<int16_t> RandomSpectrum(const Plane& basis, std::mt19937& random, double amplitude) {
    std::uniform_real_distribution<double> noise(-amplitude, amplitude);
    std::uniform_real_distribution<double> level(amplitude - 8192, 8192 - amplitude);
    const auto values = static_cast<size_t>(std::sqrt(static_cast<double>(basis.size())));
    Plane sums(values);
    const double base = level(random);
    for (size_t i = 0; i < values; ++i) {
        const double sample = (base + noise(random)) / static_cast<double>(values);
        for (size_t k = 0; k < values; ++k)
            sums[k] += sample * basis[i * values + k];
    }
    std::vector<int16_t> coefficients;
    for (const double sum : sums)
        coefficients.push_back(static_cast<int16_t>(std::lround(sum)));
    return coefficients;
}

struct Errors {
    double largest = 0;
    double mean = 0;
    double rms = 0;
};

/// Errors over many blocks from flat to full contrast, in steps of a sample of `depth` bits.
Errors Measure(BlockSize size, int32_t depth, std::mt19937& random) {
    // A table of twos makes coefficients their own dequantised values.
    const std::vector<int16_t> table(64, 2);
    const Plane basis = MakeBasis(size);
    const auto values = static_cast<size_t>(size.values());
    const size_t blocks = 4000 + 64000 / values;
    std::vector<int16_t> samples(values);
    Errors errors;
    double squares = 0;
    for (size_t block = 0; block < blocks; ++block) {
        const std::vector<int16_t> x = RandomSpectrum(basis, random, std::exp2(2 + block % 11));
        PrxSelectInverseTransform(size.hShift, size.vShift)(x.data(), samples.data(), 1, depth, table.data());
        for (size_t i = 0; i < values; ++i) {
            double exact = 0;
            for (size_t k = 0; k < values; ++k)
                exact += basis[i * values + k] * x[k];
            const double error = samples[i] - std::ldexp(exact, depth - 14);
            errors.largest = std::max(errors.largest, std::abs(error));
            errors.mean += error / static_cast<double>(blocks * values);
            squares += error * error;
        }
    }
    errors.rms = std::sqrt(squares / static_cast<double>(blocks * values));
    return errors;
}

/// Errors of a size at 8, 10 and 13 bits. A half, or 0.289 for the root of the mean square, is what rounding
/// to samples alone makes, and 0.354 where half of the values are exact halves; the rest stems from the 14
/// bits between the passes, and grows as fewer of them are dropped.
struct Expected {
    BlockSize size;
    double largest[3]; ///< with room for what random blocks seldom reach
    double rms[3];
};

constexpr Expected expectations[] = {
    {{0, 0}, {0.65, 0.90, 3.30}, {0.289, 0.295, 0.566}}, {{0, 1}, {0.56, 0.68, 1.70}, {0.289, 0.290, 0.388}},
    {{1, 0}, {0.65, 0.90, 3.30}, {0.289, 0.295, 0.566}}, {{1, 1}, {0.56, 0.68, 1.70}, {0.289, 0.290, 0.388}},
    {{1, 2}, {0.53, 0.57, 0.90}, {0.289, 0.289, 0.323}}, {{2, 1}, {0.54, 0.63, 1.30}, {0.289, 0.291, 0.414}},
    {{2, 2}, {0.51, 0.51, 0.51}, {0.289, 0.290, 0.353}}, {{2, 3}, {0.51, 0.51, 0.51}, {0.289, 0.289, 0.292}},
    {{3, 2}, {0.51, 0.51, 0.51}, {0.289, 0.289, 0.292}}, {{3, 3}, {0.51, 0.51, 0.51}, {0.289, 0.290, 0.354}},
};

class PrxInverseTransformDct : public testing::TestWithParam<Expected> {};

TEST_P(PrxInverseTransformDct, StaysCloseToTheExactTransform) {
    std::mt19937 random = MakeRandom();
    const auto& [size, largest, rms] = GetParam();
    for (size_t i = 0; i < std::size(sampleDepths); ++i) {
        const Errors errors = Measure(size, sampleDepths[i], random);
        EXPECT_LT(errors.largest, largest[i]) << "depth " << sampleDepths[i];
        EXPECT_NEAR(errors.rms, rms[i], 0.03 * rms[i]) << "depth " << sampleDepths[i];
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, PrxInverseTransformDct, testing::ValuesIn(expectations),
                         [](const auto& test) {
                             return std::to_string(test.param.size.width()) + "by" +
                                    std::to_string(test.param.size.height());
                         });

TEST(PrxInverseTransformDctBias, ErrorsOfFullBlocksHaveNoBias) {
    std::mt19937 random = MakeRandom();
    for (const int32_t depth : sampleDepths)
        EXPECT_NEAR(Measure({0, 0}, depth, random).mean, 0, 0.01) << "depth " << depth;
}

} // namespace
