#include "prores/encoder/PrxQuantise.h"

#include "prores/encoder/QuantiserModel.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace {

PrxQuantTables MakeTables(int32_t scale, int32_t matrixIndex) {
    PrxQuantTables tables;
    PrxBuildQuantTables(&tables, scale, matrixIndex);
    return tables;
}

/// Tables of one reciprocal.
PrxQuantTables MakeTablesOf(int16_t reciprocal) {
    PrxQuantTables tables;
    std::ranges::fill(tables.luma, reciprocal);
    std::ranges::fill(tables.chroma, reciprocal);
    return tables;
}

/// The level of a coefficient at a reciprocal.
uint16_t Level(int16_t coefficient, int16_t reciprocal) {
    TestSlice slice = {1, 8, CacheLines<int16_t>(8 * 64)};
    slice.coefficients[0] = coefficient;
    return QuantiseWith(PrxQuantiseSlice, MakeTablesOf(reciprocal), slice)[0];
}

TEST(PrxBuildQuantTables, ReciprocalsAreQuotientsIn32BitFloatCutOff) {
    for (int32_t matrixIndex = 0; matrixIndex < 5; ++matrixIndex) {
        for (int32_t scale = 1; scale <= 512; ++scale) {
            const PrxQuantTables tables = MakeTables(scale, matrixIndex);
            const auto expected = [&](uint8_t weight) {
                volatile float quotient = 32768.0f / static_cast<float>(weight * scale);
                return weight == prxDroppedWeight ? 0.0f : std::trunc(quotient);
            };
            for (size_t i = 0; i < 64; ++i) {
                ASSERT_EQ(tables.luma[i], expected(PrxLumaWeights(matrixIndex)[i]));
                ASSERT_EQ(tables.chroma[i], expected(PrxChromaWeights(matrixIndex)[i]));
            }
        }
    }
}

TEST(PrxBuildQuantTables, Scale1AndWeight2GiveAReciprocalWhoseDoubleSaturatesAndChangesNoLevelByIt) {
    const PrxQuantTables tables = MakeTables(1, 0);
    ASSERT_EQ(tables.luma[0], 16384);
    // Twice that saturates to 32767. A product with it is that with 32768, a negative even number, and at
    // most 1/2 more, which is cut off.
    for (int32_t c = -8192; c <= 8192; ++c)
        ASSERT_EQ(Level(static_cast<int16_t>(c), tables.luma[0]), 2 * std::abs(c) + (c < 0 ? 1 : 0));
}

TEST(PrxBuildQuantTables, Scale512AndWeight41GiveReciprocal1) {
    EXPECT_EQ(PrxLumaWeights(3)[63], 41);
    EXPECT_EQ(MakeTables(512, 3).luma[63], 1);
    EXPECT_EQ(MakeTables(512, 3).chroma[63], 1);
}

TEST(PrxBuildQuantTables, ReciprocalsStayBelowTheirSaturationSinceNoWeightIs1) {
    for (int32_t matrixIndex = 0; matrixIndex < 5; ++matrixIndex) {
        const PrxQuantTables tables = MakeTables(1, matrixIndex);
        EXPECT_LE(std::ranges::max(tables.luma), 16384);
        EXPECT_LE(std::ranges::max(tables.chroma), 16384);
    }
}

TEST(PrxBuildQuantTables, FreshTablesHoldNothing) {
    const PrxQuantTables tables = {};
    EXPECT_EQ(tables.scale, 0);
    EXPECT_EQ(tables.matrixIndex, -1);
}

TEST(PrxBuildQuantTables, RemembersWhatTheTablesHold) {
    const PrxQuantTables tables = MakeTables(7, 3);
    EXPECT_EQ(tables.scale, 7);
    EXPECT_EQ(tables.matrixIndex, 3);
}

TEST(PrxBuildQuantTables, SecondCallForTheSameScaleAndMatrixChangesNothing) {
    PrxQuantTables tables = MakeTables(7, 3);
    tables.luma[5] = 1234;
    tables.chroma[6] = 2345;
    PrxBuildQuantTables(&tables, 7, 3);
    EXPECT_EQ(tables.luma[5], 1234);
    EXPECT_EQ(tables.chroma[6], 2345);
}

TEST(PrxBuildQuantTables, AnotherScaleOrMatrixRebuildsBothTables) {
    PrxQuantTables tables = MakeTables(7, 3);
    for (const auto& [scale, matrixIndex] : {std::pair{8, 3}, {8, 2}, {7, 3}}) {
        PrxBuildQuantTables(&tables, scale, matrixIndex);
        const PrxQuantTables expected = MakeTables(scale, matrixIndex);
        EXPECT_EQ(std::memcmp(tables.luma, expected.luma, sizeof(tables.luma)), 0);
        EXPECT_EQ(std::memcmp(tables.chroma, expected.chroma, sizeof(tables.chroma)), 0);
    }
}

/// Where each level of a slice comes from: luma of all macroblocks, then chroma of all.
size_t SourceOf(size_t index, const TestSlice& slice) {
    const size_t value = index % 64, block = index / 64;
    const auto mbCount = static_cast<size_t>(slice.mbCount), perMb = static_cast<size_t>(slice.blocksPerMb);
    const bool luma = block < 4 * mbCount;
    const size_t inPlane = luma ? block : block - 4 * mbCount;
    const size_t planeBlocks = luma ? 4 : perMb - 4;
    const size_t inMb = inPlane % planeBlocks + (luma ? 0 : 4);
    return 64 * (inPlane / planeBlocks * perMb + inMb) + value;
}

TEST(PrxQuantise, EqualsTheFiveStepsForAllCoefficients) {
    TestSlice slice = {128, 8, {}};
    for (int32_t c = INT16_MIN; c <= INT16_MAX; ++c)
        slice.coefficients.push_back(static_cast<int16_t>(c));
    for (const int16_t reciprocal : {16384, 16383, 10922, 8192, 2048, 819, 100, 7, 2, 1, 0}) {
        const CacheLines<uint16_t> levels = QuantiseWith(PrxQuantiseSlice, MakeTablesOf(reciprocal), slice);
        for (size_t i = 0; i < slice.values(); ++i)
            ASSERT_EQ(levels[i], ModelLevel(slice.coefficients[SourceOf(i, slice)], reciprocal))
                << i << ", reciprocal " << reciprocal;
    }
}

TEST(PrxQuantise, LevelsStandAsAllLumaAndThenAllChromaBlocks) {
    std::mt19937 random = MakeRandom();
    const PrxQuantTables tables = MakeTables(3, 4);
    for (const int32_t blocksPerMb : {8, 12}) {
        for (int32_t mbCount = 1; mbCount <= 8; ++mbCount) {
            const TestSlice slice = MakeSlice(random, mbCount, blocksPerMb, 8191);
            const CacheLines<uint16_t> levels = QuantiseWith(PrxQuantiseSlice, tables, slice);
            for (size_t i = 0; i < slice.values(); ++i) {
                const bool luma = i < 64u * 4u * static_cast<size_t>(mbCount);
                const int16_t reciprocal = luma ? tables.luma[i % 64] : tables.chroma[i % 64];
                ASSERT_EQ(levels[i], ModelLevel(slice.coefficients[SourceOf(i, slice)], reciprocal))
                    << i << " of " << mbCount << " macroblocks of " << blocksPerMb;
            }
        }
    }
}

TEST(PrxQuantise, LevelsOfExactReciprocalsRoundToNearestWithHalvesDown) {
    for (const int32_t divisor : {4, 8, 64, 1024, 4096}) {
        for (int32_t c = -8192; c <= 8192; ++c) {
            const double quotient = 2.0 * std::abs(c) / divisor;
            const auto magnitude = static_cast<int32_t>(std::ceil(quotient - 0.5));
            const int32_t sign = c < 0 && magnitude > 0 ? 1 : 0;
            ASSERT_EQ(Level(static_cast<int16_t>(c), static_cast<int16_t>(32768 / divisor)),
                      2 * magnitude + sign)
                << c << " by " << divisor;
        }
    }
}

TEST(PrxQuantise, LevelsStayWithinHalfAndTheReciprocalsErrorOfTheQuotient) {
    for (int32_t divisor = 3; divisor <= 20992; divisor += divisor / 8 + 1) {
        const int32_t reciprocal = 32768 / divisor;
        for (int32_t c = -8192; c <= 8192; c += 7) {
            const double magnitude = Level(static_cast<int16_t>(c), static_cast<int16_t>(reciprocal)) >> 1;
            const double quotient = 2.0 * std::abs(c) / divisor;
            ASSERT_LE(magnitude, quotient + 0.5) << c << " by " << divisor;
            ASSERT_GE(magnitude, 2.0 * std::abs(c) * reciprocal / 32768 - 0.5) << c << " by " << divisor;
        }
    }
}

TEST(PrxQuantise, NegativeCoefficientThatQuantisesToZeroGivesLevel0) {
    EXPECT_EQ(Level(-1, 8192), 0); // half of the unit, 4
    EXPECT_EQ(Level(-2, 8192), 3);
    EXPECT_EQ(Level(1, 8192), 0);
    EXPECT_EQ(Level(2, 8192), 2);
}

TEST(PrxQuantise, DroppedPositionsOfTheLastMatricesAlwaysGive0) {
    std::mt19937 random = MakeRandom();
    const PrxQuantTables tables = MakeTables(1, 4);
    for (size_t i = 56; i < 64; ++i) {
        EXPECT_EQ(tables.luma[i], 0);
        EXPECT_EQ(tables.chroma[i], 0);
    }
    const TestSlice slice = MakeSlice(random, 8, 12, 32767);
    const CacheLines<uint16_t> levels = QuantiseWith(PrxQuantiseSlice, tables, slice);
    for (size_t i = 0; i < levels.size(); ++i)
        EXPECT_TRUE(i % 64 < 56 || levels[i] == 0) << i;
}

TEST(PrxQuantise, CoefficientsBeyond8192WrapAround) {
    // Four times -8193 is 32764 in 16 bits; 32764 * 32767 / 65536 is 16381, and -2 * 8191 + 1 is the level.
    EXPECT_EQ(Level(-8193, 16384), static_cast<uint16_t>(-2 * 8191 + 1));
    EXPECT_EQ(Level(8193, 16384), static_cast<uint16_t>(-2 * 8191));
    EXPECT_EQ(Level(INT16_MIN, 16384), 0);
}

} // namespace
