#include "prores/encoder/PrxChromaLowPass.h"

#include "prores/PrxFormats.h"
#include "prores/RoundingModes.h"
#include "prores/encoder/PrxChromaLowPassVector.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>
#include <vector>

namespace {

struct Format {
    uint32_t pixelFormat;
    int32_t cb; ///< place among a pixel's four channels
    int32_t cr;
};
constexpr Format byteFormats[] = {{prxFormatY408, 2, 3}, {prxFormatR408, 2, 3}, {prxFormatV408, 0, 2}};
constexpr Format wordFormat = {prxFormatY416, 2, 3};
constexpr Format floatFormat = {prxFormatR4fl, 2, 3};

template <typename T>
std::vector<T> RandomRow(int32_t width, std::mt19937& random) {
    std::vector<T> row(static_cast<size_t>(4 * width));
    const bool extreme = random() % 4 == 0;
    for (T& value : row) {
        if constexpr (std::is_floating_point_v<T>) {
            value = std::ldexp(static_cast<T>(random() % 20000) - 5000, static_cast<int>(random() % 40) - 20);
        } else {
            value = static_cast<T>(extreme ? (random() % 2 == 0 ? 0 : ~0U) : random());
        }
    }
    return row;
}

/// `row` after `lowPass`, which touches nothing outside.
template <typename T>
std::vector<T> Filtered(PrxChromaLowPass lowPass, const std::vector<T>& row, GuardedBytes::Guard guard,
                        int32_t first = 0) {
    const GuardedBytes memory(row.size() * sizeof(T), guard);
    std::memcpy(memory.data(), row.data(), memory.size());
    lowPass(memory.data(), static_cast<int32_t>(row.size() / 4), first);
    std::vector<T> filtered(row.size());
    std::memcpy(filtered.data(), memory.data(), memory.size());
    return filtered;
}

/// What the filter should make of `row`, in exact arithmetic.
template <typename T>
std::vector<T> Model(const Format& format, const std::vector<T>& row) {
    std::vector<T> filtered = row;
    const auto width = static_cast<int32_t>(row.size() / 4);
    for (int32_t x = 0; x < width; x += 2) {
        for (const int32_t channel : {format.cb, format.cr}) {
            const auto at = [&](int32_t pixel) {
                return static_cast<long double>(row[static_cast<size_t>(4 * pixel + channel)]);
            };
            const long double left = at(x == 0 ? x : x - 1);
            const long double mean = (left + 2 * at(x) + at(x + 1 == width ? x : x + 1)) / 4;
            filtered[static_cast<size_t>(4 * x + channel)] =
                static_cast<T>(std::is_floating_point_v<T> ? mean : std::floor(mean + 0.5L));
        }
    }
    return filtered;
}

template <typename T>
void CompareWithModel(const Format& format, std::mt19937& random) {
    const auto lowPass = PrxGetScalarChromaLowPass(format.pixelFormat);
    ASSERT_NE(lowPass, nullptr);
    for (int32_t width = 1; width <= 40; ++width) {
        const auto row = RandomRow<T>(width, random);
        for (const auto guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before})
            ASSERT_EQ(Filtered(lowPass, row, guard), Model(format, row)) << "width " << width;
    }
}

template <typename T>
void CompareForms(const Format& format, std::mt19937& random) {
    const auto vector = PrxSelectVectorChromaLowPass(format.pixelFormat);
    ASSERT_NE(vector, nullptr);
    const auto scalar = PrxGetScalarChromaLowPass(format.pixelFormat);
    for (int32_t width = 1; width <= 100; ++width) {
        const auto row = RandomRow<T>(width, random);
        for (const auto guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before})
            for (const int32_t first : {0, 2, 8})
                ASSERT_EQ(Filtered(vector, row, guard, first), Filtered(scalar, row, guard, first))
                    << "width " << width << " from " << first;
    }
}

} // namespace

TEST(PrxChromaLowPass, BytesOfEvenPixelsAreRoundedMeansOfTheOldNeighbours) {
    std::mt19937 random = MakeRandom();
    for (const Format& format : byteFormats)
        CompareWithModel<uint8_t>(format, random);
}

TEST(PrxChromaLowPass, WordsOfEvenPixelsAreRoundedMeansOfTheOldNeighbours) {
    std::mt19937 random = MakeRandom();
    CompareWithModel<uint16_t>(wordFormat, random);
}

TEST(PrxChromaLowPass, FloatsOfEvenPixelsAreMeansOfTheOldNeighbours) {
    std::mt19937 random = MakeRandom();
    CompareWithModel<float>(floatFormat, random);
}

TEST(PrxChromaLowPass, ASinglePixelStaysAsItIs) {
    const std::vector<uint8_t> pixel = {1, 2, 3, 4};
    EXPECT_EQ(Filtered(PrxGetChromaLowPass(prxFormatY408), pixel, GuardedBytes::Guard::Behind), pixel);
}

TEST(PrxChromaLowPass, FloatsAreComputedInDoublePrecision) {
    // In single precision the sum would lose the small neighbour, and overflow with the large ones.
    constexpr float large = 3e38F;
    const std::vector<float> row = {0, 0, 16777216.0F, large, 0, 0, 2.0F, large};
    const auto filtered = Filtered(PrxGetChromaLowPass(prxFormatR4fl), row, GuardedBytes::Guard::Behind);
    EXPECT_EQ(filtered[2], 12582912.5F);
    EXPECT_EQ(filtered[3], large);
}

TEST(PrxChromaLowPass, FloatsDoNotDependOnTheRoundingModeOfTheThread) {
    std::mt19937 random = MakeRandom();
    const auto row = RandomRow<float>(33, random);
    ExpectInAnyRoundingMode(
        [&] { return Filtered(PrxGetChromaLowPass(prxFormatR4fl), row, GuardedBytes::Guard::Behind); },
        Model(floatFormat, row));
}

TEST(PrxChromaLowPass, OtherFormatsHaveNone) {
    for (const uint32_t format :
         {prxFormat2vuy, prxFormatYuvs, prxFormatV210, prxFormatV216, prxFormatW216, prxFormatArgb,
          prxFormatBgra, prxFormatB64a, prxFormatR10k, prxFormatR210, prxFormatN302, prxFormatL302}) {
        EXPECT_EQ(PrxGetChromaLowPass(format), nullptr);
        EXPECT_EQ(PrxGetScalarChromaLowPass(format), nullptr);
    }
}

TEST(PrxChromaLowPass, VectorsGiveTheRowsOfTheReferenceFormOnEveryInstructionSet) {
    std::mt19937 random = MakeRandom();
    ASSERT_FALSE(VectorTargets().empty());
    for (const int64_t target : VectorTargets()) {
        const ForcedTarget forced(target);
        for (const Format& format : byteFormats)
            CompareForms<uint8_t>(format, random);
        CompareForms<uint16_t>(wordFormat, random);
    }
}
