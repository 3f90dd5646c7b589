#include "prores/encoder/PrxForwardTransformVector.h"

#include "prores/encoder/ForwardTransformModel.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

/// Runs a test for each instruction set.
void ForEachVectorForm(const std::function<void(PrxForwardTransform)>& test) {
    const std::vector<int64_t> targets = VectorTargets();
    ASSERT_FALSE(targets.empty()) << "no vector instruction set was dispatched";
    for (const int64_t target : targets) {
        const ForcedTarget forced(target);
        SCOPED_TRACE(hwy::TargetName(target));
        const PrxForwardTransform form = PrxVectorForwardTransform();
        ASSERT_NE(form, nullptr);
        test(form);
        if (testing::Test::HasFatalFailure()) return;
    }
}

std::vector<int16_t> TransformWith(PrxForwardTransform form, std::vector<int16_t> blocks) {
    form(blocks.data(), static_cast<int32_t>(blocks.size() / 64));
    return blocks;
}

void ExpectReference(PrxForwardTransform form, const std::vector<int16_t>& blocks) {
    ASSERT_EQ(TransformWith(form, blocks), TransformWith(PrxScalarForwardTransform, blocks));
}

TEST(PrxForwardTransformVector, EqualsTheReferenceForEachKindOfSamples) {
    std::mt19937 random = MakeRandom();
    ForEachVectorForm([&](PrxForwardTransform form) {
        for (const Samples kind : sampleKinds) {
            for (int32_t round = 0; round < 2000; ++round) {
                const TestBlock block = MakeSamples(random, kind), other = MakeSamples(random, kind);
                std::vector<int16_t> blocks(block.begin(), block.end());
                blocks.insert(blocks.end(), other.begin(), other.end());
                ASSERT_NO_FATAL_FAILURE(ExpectReference(form, blocks)) << static_cast<int>(kind);
            }
        }
    });
}

TEST(PrxForwardTransformVector, EqualsTheReferenceForAnyCountOfMixedBlocks) {
    std::mt19937 random = MakeRandom();
    ForEachVectorForm([&](PrxForwardTransform form) {
        for (int32_t count = 1; count <= 17; ++count)
            for (int32_t round = 0; round < 100; ++round)
                ASSERT_NO_FATAL_FAILURE(ExpectReference(form, MakeMixedBlocks(random, count)))
                    << count << " blocks";
    });
}

TEST(PrxForwardTransformVector, EqualsTheReferenceForEachLoneSample) {
    std::mt19937 random = MakeRandom();
    ForEachVectorForm([&](PrxForwardTransform form) {
        for (size_t position = 0; position < 4 * 64; ++position) {
            std::vector<int16_t> blocks(4 * 64);
            blocks[position] = static_cast<int16_t>(random() % 0xFFFF + 1);
            ASSERT_NO_FATAL_FAILURE(ExpectReference(form, blocks)) << "position " << position;
        }
    });
}

TEST(PrxForwardTransformVector, FlatBlocksOfAllSamplesBesideOthersEqualTheReference) {
    std::mt19937 random = MakeRandom();
    ForEachVectorForm([&](PrxForwardTransform form) {
        for (int32_t sample = INT16_MIN; sample <= INT16_MAX; sample += 5) {
            std::vector<int16_t> blocks = MakeMixedBlocks(random, 4);
            std::fill_n(blocks.data() + 64 * (random() % 4), 64, static_cast<int16_t>(sample));
            ASSERT_NO_FATAL_FAILURE(ExpectReference(form, blocks)) << "sample " << sample;
        }
    });
}

TEST(PrxForwardTransformVector, TouchesNothingOutsideTheBlocks) {
    std::mt19937 random = MakeRandom();
    ForEachVectorForm([&](PrxForwardTransform form) {
        for (const auto guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before}) {
            for (int32_t count = 1; count <= 13; ++count) {
                const std::vector<int16_t> samples = MakeMixedBlocks(random, count);
                const GuardedBytes memory(2 * samples.size(), guard);
                auto* blocks = reinterpret_cast<int16_t*>(memory.data());
                std::ranges::copy(samples, blocks);
                form(blocks, count);
                EXPECT_TRUE(std::ranges::equal(TransformWith(PrxScalarForwardTransform, samples),
                                               std::vector<int16_t>(blocks, blocks + samples.size())));
            }
        }
    });
}

TEST(PrxForwardTransformVector, NeedsNoAlignment) {
    std::mt19937 random = MakeRandom();
    ForEachVectorForm([&](PrxForwardTransform form) {
        const std::vector<int16_t> samples = MakeMixedBlocks(random, 5);
        std::vector<int16_t> blocks(samples);
        blocks.insert(blocks.begin(), 0);
        form(blocks.data() + 1, 5);
        blocks.erase(blocks.begin());
        EXPECT_EQ(blocks, TransformWith(PrxScalarForwardTransform, samples));
    });
}

TEST(PrxForwardTransformVector, NoBlocksTouchNothing) {
    ForEachVectorForm([](PrxForwardTransform form) {
        int16_t sample = 77;
        form(&sample, 0);
        EXPECT_EQ(sample, 77);
    });
}

TEST(PrxForwardTransformVector, IsWhatTheSelectionGives) {
    ForEachVectorForm([](PrxForwardTransform form) { EXPECT_EQ(PrxSelectForwardTransform(), form); });
}

} // namespace
