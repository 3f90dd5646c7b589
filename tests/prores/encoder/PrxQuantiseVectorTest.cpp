#include "prores/encoder/PrxQuantiseVector.h"

#include "prores/encoder/QuantiserModel.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>

namespace {

/// Runs a test for each instruction set.
void ForEachVectorForm(const std::function<void(PrxQuantiser)>& test) {
    const std::vector<int64_t> targets = VectorTargets();
    ASSERT_FALSE(targets.empty()) << "no vector instruction set was dispatched";
    for (const int64_t target : targets) {
        const ForcedTarget forced(target);
        SCOPED_TRACE(hwy::TargetName(target));
        const PrxQuantiser form = PrxVectorQuantiser();
        ASSERT_NE(form, nullptr);
        test(form);
        if (testing::Test::HasFatalFailure()) return;
    }
}

void ExpectReference(PrxQuantiser form, const PrxQuantTables& tables, const TestSlice& slice) {
    ASSERT_EQ(QuantiseWith(form, tables, slice), QuantiseWith(PrxQuantiseSlice, tables, slice))
        << slice.mbCount << " macroblocks of " << slice.blocksPerMb;
}

TEST(PrxQuantiseVector, EqualsTheReferenceForAllSizesOfSlices) {
    std::mt19937 random = MakeRandom();
    ForEachVectorForm([&](PrxQuantiser form) {
        for (const int32_t blocksPerMb : {8, 12}) {
            for (int32_t mbCount = 1; mbCount <= 8; ++mbCount) {
                for (const int32_t amplitude : {0, 50, 8191, 32767}) {
                    PrxQuantTables tables;
                    PrxBuildQuantTables(&tables, static_cast<int32_t>(random() % 512 + 1),
                                        static_cast<int32_t>(random() % 5));
                    ASSERT_NO_FATAL_FAILURE(
                        ExpectReference(form, tables, MakeSlice(random, mbCount, blocksPerMb, amplitude)));
                }
            }
        }
    });
}

TEST(PrxQuantiseVector, EqualsTheReferenceForAllCoefficientsAndMatrices) {
    TestSlice slice = {128, 8, {}};
    for (int32_t i = 0; i < 0x10000; ++i)
        slice.coefficients.push_back(static_cast<int16_t>(i));
    ForEachVectorForm([&](PrxQuantiser form) {
        for (int32_t matrixIndex = 0; matrixIndex < 5; ++matrixIndex) {
            for (const int32_t scale : {1, 2, 5, 37, 512}) {
                PrxQuantTables tables;
                PrxBuildQuantTables(&tables, scale, matrixIndex);
                ASSERT_NO_FATAL_FAILURE(ExpectReference(form, tables, slice))
                    << "matrix " << matrixIndex << ", scale " << scale;
            }
        }
    });
}

TEST(PrxQuantiseVector, EqualsTheReferenceForAnyTables) {
    std::mt19937 random = MakeRandom();
    ForEachVectorForm([&](PrxQuantiser form) {
        for (int32_t round = 0; round < 300; ++round) {
            PrxQuantTables tables;
            for (size_t i = 0; i < 64; ++i) {
                tables.luma[i] = static_cast<int16_t>(random() & 0xFFFF);
                tables.chroma[i] = static_cast<int16_t>(random() & 0xFFFF);
            }
            ASSERT_NO_FATAL_FAILURE(ExpectReference(form, tables, MakeSlice(random, 2, 12, 32767)));
        }
    });
}

TEST(PrxQuantiseVector, TouchesNothingOutsideTheBlocks) {
    std::mt19937 random = MakeRandom();
    PrxQuantTables tables;
    PrxBuildQuantTables(&tables, 4, 2);
    ForEachVectorForm([&](PrxQuantiser form) {
        for (const auto guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before}) {
            for (int32_t mbCount = 1; mbCount <= 8; ++mbCount) {
                const TestSlice slice = MakeSlice(random, mbCount, mbCount % 2 == 0 ? 8 : 12, 8191);
                const GuardedBytes from(2 * slice.values(), guard), to(2 * slice.values(), guard);
                std::memcpy(from.data(), slice.coefficients.data(), from.size());
                form(tables, reinterpret_cast<const int16_t*>(from.data()), mbCount, slice.blocksPerMb,
                     reinterpret_cast<uint16_t*>(to.data()));
                const CacheLines<uint16_t> expected = QuantiseWith(PrxQuantiseSlice, tables, slice);
                EXPECT_EQ(std::memcmp(to.data(), expected.data(), to.size()), 0);
            }
        }
    });
}

TEST(PrxQuantiseVector, NoMacroblocksTouchNothing) {
    ForEachVectorForm([](PrxQuantiser form) {
        alignas(64) uint16_t level = 77;
        form(PrxQuantTables(), nullptr, 0, 8, &level);
        EXPECT_EQ(level, 77);
    });
}

TEST(PrxQuantiseVector, IsWhatTheSelectionGives) {
    ForEachVectorForm([](PrxQuantiser form) { EXPECT_EQ(PrxSelectQuantiser(), form); });
}

} // namespace
