#include "prores/PrxInverseTransformVector.h"

#include "prores/TransformForms.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

void ExpectReference(PrxInverseTransform form, const Blocks& blocks) {
    const PrxInverseTransform reference = PrxScalarInverseTransform(blocks.size.hShift, blocks.size.vShift);
    ASSERT_EQ(TransformWith(form, blocks), TransformWith(reference, blocks)) << "depth " << blocks.depth;
}

TEST(PrxInverseTransformVector, EqualsTheReferenceForAllCountsDepthsAndFillings) {
    std::mt19937 random = MakeRandom();
    ForEachVectorForm([&](BlockSize size, PrxInverseTransform form) {
        for (int32_t count = 1; count <= 12; ++count) {
            for (const int32_t depth : sampleDepths) {
                for (const Filling filling : fillings) {
                    for (int32_t round = 0; round < 4; ++round)
                        ASSERT_NO_FATAL_FAILURE(
                            ExpectReference(form, {size, MakeCoefficients(random, size, count, filling),
                                                   MakeQuantTable(random, filling), depth}))
                            << count << " blocks";
                }
            }
        }
    });
}

TEST(PrxInverseTransformVector, EqualsTheReferenceForEachLoneCoefficient) {
    std::mt19937 random = MakeRandom();
    ForEachVectorForm([&](BlockSize size, PrxInverseTransform form) {
        const auto values = static_cast<size_t>(4 * size.values());
        for (size_t position = 0; position < values; ++position) {
            for (const int32_t depth : sampleDepths) {
                Blocks blocks = {size, std::vector<int16_t>(values), MakeQuantTable(random, Filling::Sparse),
                                 depth};
                blocks.coefficients[position] = static_cast<int16_t>(random() % 2000 + 1);
                ASSERT_NO_FATAL_FAILURE(ExpectReference(form, blocks)) << "position " << position;
            }
        }
    });
}

TEST(PrxInverseTransformVector, EqualsTheReferenceWhereTheRowPassWrapsOrSaturates) {
    std::mt19937 random = MakeRandom();
    ForEachVectorForm([&](BlockSize size, PrxInverseTransform form) {
        for (int32_t round = 0; round < 500; ++round) {
            Blocks blocks = {size, std::vector<int16_t>(static_cast<size_t>(4 * size.values())),
                             std::vector<int16_t>(64, 1), sampleDepths[round % 3]};
            for (int16_t& coefficient : blocks.coefficients)
                coefficient = random() % 2 == 0 ? INT16_MIN : INT16_MAX;
            ASSERT_NO_FATAL_FAILURE(ExpectReference(form, blocks)) << "round " << round;
        }
    });
}

/// Transforms blocks whose arrays all end, or start, at forbidden memory, and compares with the reference.
void ExpectNoByteOutside(const Blocks& blocks, PrxInverseTransform form, GuardedBytes::Guard guard) {
    const auto count = static_cast<int32_t>(blocks.coefficients.size()) / blocks.size.values();
    const size_t bytes = blocks.coefficients.size() * sizeof(int16_t);
    const GuardedBytes coefficients(bytes, guard);
    const GuardedBytes samples(bytes, guard);
    const GuardedBytes table(64 * sizeof(int16_t), guard);
    std::memcpy(coefficients.data(), blocks.coefficients.data(), bytes);
    std::memcpy(table.data(), blocks.table.data(), table.size());
    form(reinterpret_cast<const int16_t*>(coefficients.data()), reinterpret_cast<int16_t*>(samples.data()),
         count, blocks.depth, reinterpret_cast<const int16_t*>(table.data()));
    const std::vector<int16_t> expected =
        TransformWith(PrxScalarInverseTransform(blocks.size.hShift, blocks.size.vShift), blocks);
    EXPECT_EQ(std::memcmp(samples.data(), expected.data(), bytes), 0) << count << " blocks";
}

TEST(PrxInverseTransformVector, TouchesNoByteOutsideItsArrays) {
    std::mt19937 random = MakeRandom();
    ForEachVectorForm([&](BlockSize size, PrxInverseTransform form) {
        for (int32_t count = 1; count <= 12; ++count) {
            const Blocks blocks = {size, MakeCoefficients(random, size, count, Filling::Dense),
                                   MakeQuantTable(random, Filling::Dense), 10};
            ExpectNoByteOutside(blocks, form, GuardedBytes::Guard::Behind);
            ExpectNoByteOutside(blocks, form, GuardedBytes::Guard::Before);
        }
    });
}

TEST(PrxInverseTransformVector, TakesArraysOfNoAlignment) {
    std::mt19937 random = MakeRandom();
    ForEachVectorForm([&](BlockSize size, PrxInverseTransform form) {
        const Blocks blocks = {size, MakeCoefficients(random, size, 4, Filling::Dense),
                               MakeQuantTable(random, Filling::Dense), 10};
        std::vector<int16_t> coefficients(blocks.coefficients.size() + 1);
        std::vector<int16_t> samples(coefficients.size());
        std::vector<int16_t> table(65);
        std::ranges::copy(blocks.coefficients, coefficients.begin() + 1);
        std::ranges::copy(blocks.table, table.begin() + 1);
        form(coefficients.data() + 1, samples.data() + 1, 4, blocks.depth, table.data() + 1);
        samples.erase(samples.begin());
        EXPECT_EQ(samples, TransformWith(PrxScalarInverseTransform(size.hShift, size.vShift), blocks));
    });
}

TEST(PrxInverseTransformVector, NoBlocksTouchNothing) {
    ForEachVectorForm([](BlockSize, PrxInverseTransform form) {
        int16_t samples = 77;
        form(nullptr, &samples, 0, 10, nullptr);
        EXPECT_EQ(samples, 77);
    });
}

TEST(PrxInverseTransformVector, IsWhatTheSelectionGives) {
    ForEachVectorForm([](BlockSize size, PrxInverseTransform form) {
        EXPECT_EQ(PrxSelectInverseTransform(size.hShift, size.vShift), form);
    });
}

TEST(PrxInverseTransformVector, SmallBlocksAreLeftToTheReference) {
    for (const BlockSize size : blockSizes) {
        if (size.values() >= 16) continue;
        EXPECT_EQ(PrxVectorInverseTransform(size.hShift, size.vShift), nullptr);
        EXPECT_EQ(PrxSelectInverseTransform(size.hShift, size.vShift),
                  PrxScalarInverseTransform(size.hShift, size.vShift));
    }
}

} // namespace
