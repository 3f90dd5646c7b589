#include "prores/PrxInverseTransform.h"

#include "prores/TransformForms.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

std::vector<int16_t> Transform(const Blocks& blocks) {
    return TransformWith(PrxScalarInverseTransform(blocks.size.hShift, blocks.size.vShift), blocks);
}

void ExpectModel(BlockSize size) {
    std::mt19937 random = MakeRandom();
    for (int32_t round = 0; round < 2100; ++round) {
        const Filling filling = fillings[static_cast<size_t>(round) % std::size(fillings)];
        const int32_t depth = sampleDepths[static_cast<size_t>(round) % std::size(sampleDepths)];
        const Blocks blocks = {size, MakeCoefficients(random, size, 1, filling),
                               MakeQuantTable(random, filling), depth};
        ASSERT_EQ(Transform(blocks), ModelOf(blocks)) << "round " << round << ", depth " << depth;
    }
}

TEST(PrxInverseTransform, EightByEightBlocksEqualPlainArithmetic) { ExpectModel({0, 0}); }
TEST(PrxInverseTransform, EightByFourBlocksEqualPlainArithmetic) { ExpectModel({0, 1}); }
TEST(PrxInverseTransform, FourByEightBlocksEqualPlainArithmetic) { ExpectModel({1, 0}); }
TEST(PrxInverseTransform, FourByFourBlocksEqualPlainArithmetic) { ExpectModel({1, 1}); }
TEST(PrxInverseTransform, FourByTwoBlocksEqualPlainArithmetic) { ExpectModel({1, 2}); }
TEST(PrxInverseTransform, TwoByFourBlocksEqualPlainArithmetic) { ExpectModel({2, 1}); }
TEST(PrxInverseTransform, TwoByTwoBlocksEqualPlainArithmetic) { ExpectModel({2, 2}); }
TEST(PrxInverseTransform, TwoByOneBlocksEqualPlainArithmetic) { ExpectModel({2, 3}); }
TEST(PrxInverseTransform, OneByTwoBlocksEqualPlainArithmetic) { ExpectModel({3, 2}); }
TEST(PrxInverseTransform, OneByOneBlocksEqualPlainArithmetic) { ExpectModel({3, 3}); }

TEST(PrxInverseTransform, BlocksOfOneCallAreIndependent) {
    std::mt19937 random = MakeRandom();
    const std::vector<int16_t> table = MakeQuantTable(random, Filling::Anything);
    for (const BlockSize size : blockSizes) {
        const Blocks blocks = {size, MakeCoefficients(random, size, 5, Filling::Anything), table, 10};
        EXPECT_EQ(Transform(blocks), ModelOf(blocks)) << NameOf(size);
    }
}

TEST(PrxInverseTransform, PairsOfShiftsThatNoModeMakesHaveNone) {
    for (int32_t hShift = -1; hShift <= 4; ++hShift) {
        for (int32_t vShift = -1; vShift <= 4; ++vShift) {
            const bool known = std::ranges::any_of(
                blockSizes, [&](BlockSize size) { return size.hShift == hShift && size.vShift == vShift; });
            EXPECT_EQ(PrxScalarInverseTransform(hShift, vShift) != nullptr, known)
                << hShift << ", " << vShift;
            EXPECT_EQ(PrxSelectInverseTransform(hShift, vShift) != nullptr, known)
                << hShift << ", " << vShift;
        }
    }
}

} // namespace
