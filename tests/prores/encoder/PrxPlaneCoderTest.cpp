#include "prores/encoder/PrxPlaneCoder.h"

#include "prores/encoder/PlaneCodeModel.h"
#include "prores/encoder/PrxPlaneCoderVector.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>

namespace {

constexpr uint32_t blockCounts[] = {2, 4, 8, 16, 32};

/// Runs a test on planes of every shape and filling.
void ForEachPlane(std::mt19937& random, std::span<const plane::Filling> fillings, int32_t rounds,
                  const std::function<void(const plane::Plane&)>& test) {
    for (const plane::Filling& filling : fillings) {
        for (const uint32_t blockCount : blockCounts) {
            for (const uint32_t distance : {64u, 128u}) {
                for (const bool interlaced : {false, true}) {
                    for (int32_t round = 0; round < rounds; ++round) {
                        test(plane::MakePlane(random, blockCount, distance, interlaced, filling));
                        if (testing::Test::HasFatalFailure()) return;
                    }
                }
            }
        }
    }
}

plane::Coded Write(const PrxPlaneCoder& coder, const plane::Plane& plane, int64_t budget) {
    GuardedBytes output(static_cast<size_t>(budget), GuardedBytes::Guard::Behind);
    PrxBitWriter writer(output.data(), budget);
    plane::Coded coded;
    coded.statistics = coder.write(plane.View(), writer);
    const uint32_t size = writer.Flush();
    coded.bytes.assign(output.begin(), output.begin() + size);
    return coded;
}

plane::Coded WriteScalar(const plane::Plane& plane, int64_t budget = 20000) {
    return Write(PrxScalarPlaneCoder(), plane, budget);
}

/// A plane with one AC level behind `run` zeros.
plane::Plane PlaneWithRun(uint32_t blockCount, uint32_t run, int level) {
    plane::Plane plane = plane::MakeEmptyPlane(blockCount);
    const size_t position = blockCount + run;
    constexpr uint8_t scan[] = {0,  1,  8,  9,  2,  3,  10, 11, 16, 17, 24, 25, 18, 19, 26, 27,
                                4,  5,  12, 20, 13, 6,  7,  14, 21, 28, 29, 22, 15, 23, 30, 31,
                                32, 33, 40, 48, 41, 34, 35, 42, 49, 56, 57, 50, 43, 36, 37, 44,
                                51, 58, 59, 52, 45, 38, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};
    plane.levels[position % blockCount * 64 + scan[position / blockCount]] = plane::LevelOf(level);
    return plane;
}

} // namespace

TEST(PrxPlaneCoder, DecodersReadBackTheLevelsThatWereCoded) {
    std::mt19937 random = MakeRandom();
    ForEachPlane(random, plane::DecodableFillings(), 4, [](const plane::Plane& plane) {
        const plane::Coded coded = WriteScalar(plane);
        ASSERT_EQ(plane::DecodeWithModel(plane, coded.bytes), plane.InCodingOrder());
        ASSERT_EQ(plane::DecodeWithEngine(plane, coded.bytes), plane.InCodingOrder());
    });
}

TEST(PrxPlaneCoder, WritesTheBytesOfAModelWrittenFromTheStandard) {
    std::mt19937 random = MakeRandom();
    ForEachPlane(random, plane::AllFillings(), 2, [](const plane::Plane& plane) {
        const plane::Coded coded = WriteScalar(plane);
        const plane::Coded expected = plane::CodePlane(plane, 20000);
        ASSERT_EQ(coded.bytes, expected.bytes);
        ASSERT_EQ(coded.statistics, expected.statistics);
    });
}

TEST(PrxPlaneCoder, CountsWhatItWrites) {
    std::mt19937 random = MakeRandom();
    ForEachPlane(random, plane::AllFillings(), 4, [](const plane::Plane& plane) {
        const plane::Coded coded = WriteScalar(plane);
        const PrxPlaneStatistics counted = PrxScalarPlaneCoder().count(plane.View());
        ASSERT_EQ(counted, coded.statistics);
        ASSERT_EQ((counted.dcBits + counted.acBits + 7) / 8, static_cast<int32_t>(coded.bytes.size()));
    });
}

TEST(PrxPlaneCoder, ABudgetCutsAtAWholeCode) {
    std::mt19937 random = MakeRandom();
    ForEachPlane(random, plane::AllFillings(), 1, [&](const plane::Plane& plane) {
        const auto size = static_cast<uint32_t>(WriteScalar(plane).bytes.size());
        for (int32_t round = 0; round < 20; ++round) {
            const uint32_t budget = random() % (size + 2);
            const plane::Coded coded = WriteScalar(plane, budget);
            const plane::Coded expected = plane::CodePlane(plane, budget);
            ASSERT_EQ(coded.bytes, expected.bytes) << "budget " << budget << " of " << size;
            ASSERT_EQ(coded.statistics, expected.statistics) << "budget " << budget << " of " << size;
        }
    });
}

TEST(PrxPlaneCoder, OfACutPlaneADecoderReadsTheFirstCoefficientsInCodingOrder) {
    std::mt19937 random = MakeRandom();
    ForEachPlane(random, plane::DecodableFillings(), 1, [&](const plane::Plane& plane) {
        const auto size = static_cast<uint32_t>(WriteScalar(plane).bytes.size());
        const std::vector<int> values = plane.InCodingOrder();
        for (int32_t round = 0; round < 20; ++round) {
            const uint32_t budget = random() % (size + 2);
            const std::vector<int> read = plane::DecodeWithModel(plane, WriteScalar(plane, budget).bytes);
            const auto cut = std::mismatch(read.begin(), read.end(), values.begin()).first;
            ASSERT_TRUE(std::all_of(cut, read.end(), [](int value) { return value == 0; }))
                << "budget " << budget << " of " << size;
        }
    });
}

TEST(PrxPlaneCoder, ABudgetOf0StoresNothingAndADecoderSeesZeros) {
    std::mt19937 random = MakeRandom();
    const plane::Plane plane = plane::MakePlane(random, 8, 64, false, plane::DecodableFillings().back());
    const plane::Coded coded = WriteScalar(plane, 0);
    EXPECT_TRUE(coded.bytes.empty());
    EXPECT_EQ(coded.statistics, PrxPlaneStatistics());
    EXPECT_EQ(plane::DecodeWithEngine(plane, coded.bytes), std::vector<int>(512, 0));
}

TEST(PrxPlaneCoder, TheStatisticsOfACutPlaneAreThoseOfTheCodesThatFitted) {
    plane::Plane plane = plane::MakeEmptyPlane(2);
    plane.levels[1] = plane::LevelOf(5);
    plane.levels[64 + 1] = plane::LevelOf(9);
    // DC: 6 and 4 bits. A run of 0 behind 4, a 5 behind 2 and a sign: 1, 6 and 1 bits. A run of 0 behind 0, a
    // 9 behind 5 and a sign: 1, 6 and 1 bits, and these are 26.
    const PrxPlaneStatistics all = WriteScalar(plane).statistics;
    EXPECT_EQ(all.dcBits, 10);
    EXPECT_EQ(all.acBits, 16);
    EXPECT_EQ(all.levelHistogram[0], 2);
    const PrxPlaneStatistics cut = WriteScalar(plane, 3).statistics;
    EXPECT_EQ(cut.dcBits, 10);
    EXPECT_EQ(cut.acBits, 8);
    EXPECT_EQ(cut.runBits, 1);
    EXPECT_EQ(cut.levelHistogram, (std::array<int32_t, 8>{1, 1, 1, 0, 0, 0, 0, 0}));
}

TEST(PrxPlaneCoder, ALongCoefficientIsNeverCutBetweenItsRunAndItsLevel) {
    const plane::Plane plane = PlaneWithRun(32, 2015, 16000);
    const plane::Coded whole = WriteScalar(plane);
    const int32_t upToRun = whole.statistics.dcBits + whole.statistics.runBits;
    const plane::Coded cut = WriteScalar(plane, (upToRun + 7) / 8);
    EXPECT_GT(whole.statistics.acBits, 32);
    EXPECT_EQ(cut.statistics.acBits, 0);
    EXPECT_EQ(cut.statistics.runBits, 0);
    EXPECT_EQ(cut.statistics.levelHistogram[0], 0);
    EXPECT_EQ(cut.bytes.size(), static_cast<size_t>(cut.statistics.dcBits + 7) / 8);
}

TEST(PrxPlaneCoder, LevelsAbove1024TakeTheLongPathOfTheCode) {
    for (const int level : {1023, 1024, 1025, -1025, 2000, 16383, -16383}) {
        const plane::Plane plane = PlaneWithRun(8, 3, level);
        const plane::Coded coded = WriteScalar(plane);
        EXPECT_EQ(plane::DecodeWithModel(plane, coded.bytes), plane.InCodingOrder()) << level;
        EXPECT_EQ(plane::DecodeWithEngine(plane, coded.bytes), plane.InCodingOrder()) << level;
    }
}

TEST(PrxPlaneCoder, RunsBeyond1023AreCoded) {
    for (const uint32_t run : {1022u, 1023u, 1024u, 1025u, 2014u, 2015u}) {
        const plane::Plane plane = PlaneWithRun(32, run, 7);
        const plane::Coded coded = WriteScalar(plane);
        EXPECT_EQ(plane::DecodeWithModel(plane, coded.bytes), plane.InCodingOrder()) << run;
        EXPECT_EQ(plane::DecodeWithEngine(plane, coded.bytes), plane.InCodingOrder()) << run;
    }
}

TEST(PrxPlaneCoder, ThePreviousDifferenceChoosesTheBookAndTheSignOfTheNext) {
    plane::Plane plane = plane::MakeEmptyPlane(8);
    constexpr int dcs[] = {5, 5, 4, 2, -1, -10, -10, -9};
    for (size_t block = 0; block < 8; ++block)
        plane.levels[64 * block] = plane::LevelOf(dcs[block]);
    const plane::Coded coded = WriteScalar(plane);
    stream::BitWriter expected;
    stream::PutCode(expected, 0xB8, 10); // 5
    stream::PutCode(expected, 0x70, 0);  // 0, behind 3
    stream::PutCode(expected, 0x04, 1);  // -1, behind 0
    stream::PutCode(expected, 0x28, 4);  // -2, behind -1
    stream::PutCode(expected, 0x4D, 6);  // -3, behind -2
    stream::PutCode(expected, 0x70, 18); // -9, behind -3
    stream::PutCode(expected, 0x70, 0);  // 0, behind -9
    stream::PutCode(expected, 0x04, 2);  // 1, behind 0
    EXPECT_EQ(coded.bytes, expected.Data());
    EXPECT_EQ(coded.statistics.dcBits, static_cast<int32_t>(expected.Count()));
}

TEST(PrxPlaneCoder, AFirstDcOtherThan0CountsAsAChange) {
    plane::Plane plane = plane::MakeEmptyPlane(4);
    EXPECT_EQ(PrxScalarPlaneCoder().count(plane.View()).dcChanges, 0);
    for (size_t block = 0; block < 4; ++block)
        plane.levels[64 * block] = plane::LevelOf(-7);
    EXPECT_EQ(PrxScalarPlaneCoder().count(plane.View()).dcChanges, 1);
    plane.levels[128] = plane::LevelOf(7);
    EXPECT_EQ(PrxScalarPlaneCoder().count(plane.View()).dcChanges, 3);
}

TEST(PrxPlaneCoder, TheHistogramCountsMagnitudesAboveItsThresholds) {
    constexpr int magnitudes[] = {1, 2, 4, 5, 13, 14, 40, 41, 121, 122, 364, 365, 1093, 1094};
    plane::Plane plane = plane::MakeEmptyPlane(4);
    for (size_t i = 0; i < std::size(magnitudes); ++i)
        plane.levels[i + 1] = plane::LevelOf(i % 2 != 0 ? -magnitudes[i] : magnitudes[i]);
    EXPECT_EQ(PrxScalarPlaneCoder().count(plane.View()).levelHistogram,
              (std::array<int32_t, 8>{14, 13, 11, 9, 7, 5, 3, 1}));
}

TEST(PrxPlaneCoder, AMagnitudeOf0IsNoLevelWhateverItsSign) {
    plane::Plane plane = PlaneWithRun(8, 20, 3);
    const plane::Coded expected = WriteScalar(plane);
    plane.levels[1] = 1;
    EXPECT_EQ(WriteScalar(plane).bytes, expected.bytes);
}

TEST(PrxPlaneCoder, TheSelectedCoderIsTheVectorFormOfThisMachine) {
    const std::optional<PrxPlaneCoder> vector = PrxVectorPlaneCoder();
    ASSERT_TRUE(vector);
    EXPECT_EQ(PrxSelectPlaneCoder().count, vector->count);
    EXPECT_EQ(PrxSelectPlaneCoder().write, vector->write);
}
