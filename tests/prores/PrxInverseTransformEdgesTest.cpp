#include "prores/PrxInverseTransform.h"

#include "prores/RoundingModes.h"
#include "prores/TransformForms.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <utility>

// Behaviour that a transform of other rounding or width would not have, in the reference form and in the
// vector forms.

namespace {

bool IsFull(BlockSize size) { return size.values() == 64; }
bool IsFixedPoint(BlockSize size) { return size.values() > 2; }

std::vector<int16_t> Flat(BlockSize size, int16_t value) {
    return std::vector<int16_t>(static_cast<size_t>(size.values()), value);
}

TEST(PrxInverseTransformEdges, ZeroBlockGivesZerosAtDepths8And10) {
    ForEachForm([](BlockSize size, PrxInverseTransform form) {
        for (const int32_t depth : {8, 10})
            EXPECT_EQ(TransformWith(form, LoneDc(size, 0, 1, depth)), Flat(size, 0)) << "depth " << depth;
    });
}

TEST(PrxInverseTransformEdges, ZeroBlockAtDepth13ShowsTheTraceOfTheRowRounders) {
    std::vector<int16_t> expected(64);
    for (size_t x = 0; x < 8; ++x) {
        expected[x] = 1;
        expected[3 * 8 + x] = x % 2 == 0 ? -1 : 0;
        expected[4 * 8 + x] = x % 2 == 1 ? -1 : 0;
    }
    ForEachForm([&](BlockSize size, PrxInverseTransform form) {
        if (!IsFull(size)) return;
        EXPECT_EQ(TransformWith(form, LoneDc(size, 0, 1, 13)), expected);
    });
}

/// Near an exact half, 8 of 16, the checkerboard and the row rounders show.
bool IsNearHalf(int32_t value) { return (value & 15) >= 6 && (value & 15) <= 9; }

TEST(PrxInverseTransformEdges, LoneDcGivesAFlatBlockAtDepth10) {
    ForEachForm([](BlockSize size, PrxInverseTransform form) {
        if (!IsFull(size)) return;
        for (int32_t coefficient = -2000; coefficient <= 2000; ++coefficient) {
            const int32_t value = coefficient * 9 >> 1;
            if (IsNearHalf(value)) continue;
            const auto flat = static_cast<int16_t>((value + 8) >> 4);
            ASSERT_EQ(TransformWith(form, LoneDc(size, static_cast<int16_t>(coefficient), 9, 10)),
                      Flat(size, flat))
                << coefficient;
        }
    });
}

TEST(PrxInverseTransformEdges, LoneDcAtAnExactHalfGivesACheckerboardOfNeighbours) {
    ForEachForm([](BlockSize size, PrxInverseTransform form) {
        if (!IsFull(size)) return;
        const std::vector<int16_t> samples = TransformWith(form, LoneDc(size, 2 * (16 * 5 + 8), 1, 10));
        for (size_t y : {1u, 2u, 5u, 6u, 7u})
            for (size_t x = 0; x < 8; ++x)
                EXPECT_EQ(samples[8 * y + x], (x + y) % 2 == 0 ? 6 : 5) << x << ", " << y;
    });
}

/// A block of each coefficient from -2000 to 2000 that has nothing but it.
Blocks LoneDcs(BlockSize size, int32_t depth) {
    Blocks blocks = {size, {}, std::vector<int16_t>(64, 9), depth};
    for (int32_t coefficient = -2000; coefficient <= 2000; ++coefficient) {
        blocks.coefficients.resize(blocks.coefficients.size() + static_cast<size_t>(size.values()));
        *(blocks.coefficients.end() - size.values()) = static_cast<int16_t>(coefficient);
    }
    return blocks;
}

TEST(PrxInverseTransformEdges, LoneDcIsNotAFlatFillButTheModelsBlockForEachCoefficient) {
    std::map<std::pair<int32_t, int32_t>, std::vector<int16_t>> models; // which are slow
    for (const int32_t depth : sampleDepths) {
        models.clear();
        ForEachForm([&](BlockSize size, PrxInverseTransform form) {
            const Blocks blocks = LoneDcs(size, depth);
            std::vector<int16_t>& model = models[{size.hShift, size.vShift}];
            if (model.empty()) model = ModelOf(blocks);
            const std::vector<int16_t> samples = TransformWith(form, blocks);
            const auto differing = std::ranges::mismatch(samples, model).in1 - samples.begin();
            EXPECT_EQ(differing, std::ssize(samples))
                << "coefficient " << differing / size.values() - 2000 << ", depth " << depth;
        });
    }
}

TEST(PrxInverseTransformEdges, ProductBeyond16BitsWrapsBeforeItIsHalved) {
    // 200 * 200 is -25536 in 16 bits, and -12768 halved: -798 at depth 10.
    ForEachForm([](BlockSize size, PrxInverseTransform form) {
        if (!IsFixedPoint(size)) return;
        EXPECT_EQ(TransformWith(form, LoneDc(size, 200, 200, 10)), Flat(size, -798));
    });
}

TEST(PrxInverseTransformEdges, SumOfARowWrapsAt32Bits) {
    // The first sum of the row, 169809 * 16383 + 23212, is -1512963237 in 32 bits, and -32768 after shift and
    // saturation; the other sums of this row matter to other columns. A sum of more bits would give 32767,
    // and the column with its signs reversed.
    Blocks blocks = {{0, 0}, std::vector<int16_t>(64), std::vector<int16_t>(64, 2), 8};
    std::fill_n(blocks.coefficients.begin() + 8, 8, int16_t{16383});
    const std::array<int16_t, 8> column = {-512, -362, -290, -102, 102, 290, 362, 511};
    ForEachForm([&](BlockSize size, PrxInverseTransform form) {
        if (!IsFull(size)) return;
        const std::vector<int16_t> samples = TransformWith(form, blocks);
        for (size_t y = 0; y < 8; ++y)
            EXPECT_EQ(samples[8 * y], column[y]) << "row " << y;
    });
}

/// A row's rounder, and a place in the row whose factor in the first sum is odd, so that its multiples bring
/// the sum to any value of the bits that the shift drops.
struct RowRounder {
    BlockSize size;
    int32_t row;
    int32_t rounder;
    int32_t place;
    int32_t factor;
};

constexpr RowRounder rowRounders[] = {
    {{0, 0}, 0, 8192, 1, 22725},  {{0, 0}, 1, 23212, 0, 22725}, {{0, 0}, 2, 18081, 0, 21407},
    {{0, 0}, 3, 13635, 5, 15137}, {{0, 0}, 4, 8192, 1, 22725},  {{0, 0}, 5, 3637, 5, 15137},
    {{0, 0}, 6, 4096, 0, 21407},  {{0, 0}, 7, 2988, 0, 22725},  {{0, 1}, 0, 0, 1, 22725},
    {{0, 1}, 1, 18081, 0, 21407}, {{0, 1}, 2, 8192, 1, 22725},  {{0, 1}, 3, 4096, 0, 21407},
    {{1, 2}, 0, 0, 1, 21407},     {{1, 2}, 1, 8192, 1, 21407},
};

/// A block whose one coefficient brings the first sum of a row, rounder included, to `low` in its low 15
/// bits.
Blocks WithSum(const RowRounder& row, int32_t low) {
    Blocks blocks = {row.size, std::vector<int16_t>(static_cast<size_t>(row.size.values())),
                     std::vector<int16_t>(64, 2), 13};
    int32_t value = -16384;
    while (((row.factor * value + row.rounder) & 0x7FFF) != low)
        ++value;
    blocks.coefficients[static_cast<size_t>(row.row * row.size.width() + row.place)] =
        static_cast<int16_t>(value);
    return blocks;
}

TEST(PrxInverseTransformEdges, RowsStepWhereTheirRoundersSay) {
    ForEachForm([](BlockSize size, PrxInverseTransform form) {
        for (const RowRounder& row : rowRounders) {
            if (row.size.hShift != size.hShift || row.size.vShift != size.vShift) continue;
            // At a step of the row pass and just before it; two steps, as every second shows at 13 bits.
            for (const int32_t low : {0x0000, 0x3FFF, 0x4000, 0x7FFF}) {
                const Blocks blocks = WithSum(row, low);
                EXPECT_EQ(TransformWith(form, blocks), ModelOf(blocks)) << "row " << row.row << ", " << low;
            }
        }
    });
}

TEST(PrxInverseTransformEdges, TwoByTwoBlocksReachBothEndsOf16BitsAtDepth13) {
    const PrxInverseTransform form = PrxScalarInverseTransform(2, 2);
    const std::vector<int16_t> table(64, 2);
    EXPECT_EQ(TransformWith(form, {{2, 2}, {16383, -16384, -16384, 16383}, table, 13})[3], 32767);
    EXPECT_EQ(TransformWith(form, {{2, 2}, {-16384, -16384, -16384, -16384}, table, 13})[0], -32768);
}

TEST(PrxInverseTransformEdges, ProductsOfTheSmallestBlocksDoNotWrap) {
    // 200 * 200 halved is 20000: 1250 at depth 10.
    ForEachForm([](BlockSize size, PrxInverseTransform form) {
        if (IsFixedPoint(size)) return;
        EXPECT_EQ(TransformWith(form, LoneDc(size, 200, 200, 10)), Flat(size, 1250));
    });
}

/// The sample of a block of one coefficient.
int16_t Single(int16_t coefficient, int16_t factor, int32_t depth) {
    return TransformWith(PrxScalarInverseTransform(3, 3), LoneDc({3, 3}, coefficient, factor, depth))[0];
}

TEST(PrxInverseTransformEdges, OddProductsOfTheSmallestBlocksAreHalvedDownwards) {
    EXPECT_EQ(Single(1, 2 * 16 * 7 + 17, 10), 8);   // 120.5 counts as 120, 7.5
    EXPECT_EQ(Single(-1, 2 * 16 * 7 + 15, 10), -8); // -119.5 counts as -120, -7.5
}

TEST(PrxInverseTransformEdges, HalvesOfASingleSampleRoundToEven) {
    const int16_t halves[] = {-40, -24, -8, 8, 24, 40};
    const int16_t rounded[] = {-2, -2, 0, 0, 2, 2};
    for (size_t i = 0; i < std::size(halves); ++i)
        EXPECT_EQ(Single(halves[i], 2, 10), rounded[i]) << halves[i];
}

TEST(PrxInverseTransformEdges, SampleBeyond16BitsOfASmallestBlockKeepsItsLowBits) {
    const int32_t value = (32767 * 32765) >> 1;
    EXPECT_EQ(Single(32767, 32765, 10), static_cast<int16_t>(((value + 8) >> 4) & 0xFFFF));
    EXPECT_EQ(Single(INT16_MIN, INT16_MIN, 13), 0);
}

TEST(PrxInverseTransformEdges, NoFormDependsOnTheRoundingModeOfTheThreadOrChangesIt) {
    std::mt19937 random = MakeRandom();
    ForEachForm([&](BlockSize size, PrxInverseTransform form) {
        const Blocks blocks = {size, MakeCoefficients(random, size, 100, Filling::Dense),
                               MakeQuantTable(random, Filling::Dense), 10};
        ExpectInAnyRoundingMode([&] { return TransformWith(form, blocks); }, ModelOf(blocks));
    });
}

} // namespace
