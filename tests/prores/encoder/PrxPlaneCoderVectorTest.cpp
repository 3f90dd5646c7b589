// The coder has a form for one more instruction set than others have.
#define HWY_WANT_AVX3_DL

#include "prores/encoder/PrxPlaneCoderVector.h"

#include "prores/PrxScan.h"
#include "prores/encoder/PlaneCodeModel.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>

namespace {

constexpr uint32_t blockCounts[] = {2, 4, 8, 16, 32};

/// Runs a test for each instruction set.
void ForEachVectorForm(const std::function<void(const PrxPlaneCoder&)>& test) {
    const std::vector<int64_t> targets = VectorTargets();
    ASSERT_FALSE(targets.empty()) << "no vector instruction set was dispatched";
    for (const int64_t target : targets) {
        const ForcedTarget forced(target);
        SCOPED_TRACE(hwy::TargetName(target));
        const std::optional<PrxPlaneCoder> coder = PrxVectorPlaneCoder();
        ASSERT_TRUE(coder);
        test(*coder);
        if (testing::Test::HasFatalFailure()) return;
    }
}

/// Runs a test for each instruction set, on planes of every shape and filling, whose levels end, or start, at
/// memory that may not be touched.
void ForEachPlane(std::mt19937& random, int32_t rounds,
                  const std::function<void(const PrxPlaneCoder&, const PrxPlaneLevels&)>& test) {
    ForEachVectorForm([&](const PrxPlaneCoder& coder) {
        for (const plane::Filling& filling : plane::AllFillings()) {
            for (const uint32_t blockCount : blockCounts) {
                for (int32_t round = 0; round < rounds; ++round) {
                    const plane::Plane plane = plane::MakePlane(random, blockCount, round % 2 != 0 ? 64 : 128,
                                                                random() % 2 != 0, filling);
                    for (const auto guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before}) {
                        const GuardedBytes levels(plane.levels.size() * 2, guard);
                        std::memcpy(levels.data(), plane.levels.data(), levels.size());
                        PrxPlaneLevels view = plane.View();
                        view.levels = reinterpret_cast<const uint16_t*>(levels.data());
                        test(coder, view);
                        if (testing::Test::HasFatalFailure()) return;
                    }
                }
            }
        }
    });
}

plane::Coded Write(const PrxPlaneCoder& coder, const PrxPlaneLevels& levels, size_t budget) {
    const GuardedBytes output(budget, GuardedBytes::Guard::Behind);
    PrxBitWriter writer(output.data(), static_cast<int64_t>(budget));
    plane::Coded coded;
    coded.statistics = coder.write(levels, writer);
    const uint32_t size = writer.Flush();
    coded.bytes.assign(output.begin(), output.begin() + size);
    return coded;
}

void ExpectReference(const PrxPlaneCoder& coder, const PrxPlaneLevels& levels, size_t budget) {
    const plane::Coded coded = Write(coder, levels, budget);
    const plane::Coded expected = Write(PrxScalarPlaneCoder(), levels, budget);
    ASSERT_EQ(coded.bytes, expected.bytes) << levels.blockCount << " blocks, budget " << budget;
    ASSERT_EQ(coded.statistics, expected.statistics) << levels.blockCount << " blocks, budget " << budget;
}

} // namespace

TEST(PrxPlaneCoderVector, CountsAsTheReferenceDoes) {
    std::mt19937 random = MakeRandom();
    ForEachPlane(random, 8, [](const PrxPlaneCoder& coder, const PrxPlaneLevels& levels) {
        ASSERT_EQ(coder.count(levels), PrxScalarPlaneCoder().count(levels));
    });
}

TEST(PrxPlaneCoderVector, WritesAsTheReferenceDoes) {
    std::mt19937 random = MakeRandom();
    ForEachPlane(random, 8, [](const PrxPlaneCoder& coder, const PrxPlaneLevels& levels) {
        ExpectReference(coder, levels, 20000);
    });
}

TEST(PrxPlaneCoderVector, BudgetsCutAsInTheReference) {
    std::mt19937 random = MakeRandom();
    ForEachPlane(random, 2, [&](const PrxPlaneCoder& coder, const PrxPlaneLevels& levels) {
        const size_t size = Write(PrxScalarPlaneCoder(), levels, 20000).bytes.size();
        for (int32_t round = 0; round < 12; ++round) {
            ExpectReference(coder, levels, random() % (size + 2));
            if (testing::Test::HasFatalFailure()) return;
        }
        ExpectReference(coder, levels, size);
    });
}

TEST(PrxPlaneCoderVector, WritesEveryLevelBehindEveryOther) {
    ForEachVectorForm([](const PrxPlaneCoder& coder) {
        for (int level = 1; level < 1200; ++level) {
            plane::Plane plane = plane::MakeEmptyPlane(32);
            for (size_t i = 1; i < 64; ++i)
                plane.levels[i] = plane::LevelOf(i % 3 == 0 ? -level : static_cast<int>(i / 3) + 1);
            ExpectReference(coder, plane.View(), 20000);
            if (testing::Test::HasFatalFailure()) return;
        }
    });
}

TEST(PrxPlaneCoderVector, WritesEveryRunBehindEveryShortOne) {
    ForEachVectorForm([](const PrxPlaneCoder& coder) {
        for (size_t first = 0; first < 17; ++first) {
            for (size_t second = first + 1; second < 64 * 31; second += second < 100 ? 1 : 61) {
                plane::Plane plane = plane::MakeEmptyPlane(32);
                for (const size_t position : {first + 32, second + 32})
                    plane.levels[position % 32 * 64 + PrxScanTable(false, 0)[position / 32]] = 5;
                ExpectReference(coder, plane.View(), 20000);
                if (testing::Test::HasFatalFailure()) return;
            }
        }
    });
}
