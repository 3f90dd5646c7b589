// The vector form gives the bytes of the scalar form, for each instruction set of this machine, and touches
// nothing behind the pixels and groups of a row.

#include "prores/PrxRowPassV210Vector.h"

#include "prores/V210Row.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

namespace {

/// Target rows after one stretch of random pixels.
std::vector<uint8_t> Packed(PrxRowPass pass, int32_t width, int32_t firstPixel, int32_t endPixel,
                            std::mt19937 random) {
    V210Rows rows(width, random);
    rows.Run(pass, firstPixel, endPixel);
    return rows.Target();
}

TEST(PrxRowPassV210Vector, EqualsTheScalarFormAtEveryWidthForEachInstructionSet) {
    const std::mt19937 random = MakeRandom();
    ASSERT_FALSE(VectorTargets().empty());
    for (const int64_t target : VectorTargets()) {
        const ForcedTarget forced(target);
        ASSERT_NE(PrxSelectVectorV210RowPass(), nullptr);
        for (int32_t width = 1; width <= 130; ++width)
            ASSERT_EQ(Packed(PrxSelectVectorV210RowPass(), width, 0, width, random),
                      Packed(PrxScalarV210RowPass, width, 0, width, random))
                << hwy::TargetName(target) << ", width " << width;
    }
}

TEST(PrxRowPassV210Vector, EqualsTheScalarFormInStretchesForEachInstructionSet) {
    const std::mt19937 random = MakeRandom();
    constexpr int32_t width = 130;
    ASSERT_FALSE(VectorTargets().empty());
    for (const int64_t target : VectorTargets()) {
        const ForcedTarget forced(target);
        for (int32_t first = 0; first < width; first += 16) {
            for (int32_t next = first + 16; next < width + 16; next += 16) {
                const int32_t end = std::min(next, width);
                ASSERT_EQ(Packed(PrxSelectVectorV210RowPass(), width, first, end, random),
                          Packed(PrxScalarV210RowPass, width, first, end, random))
                    << hwy::TargetName(target) << ", pixels " << first << " to " << end;
            }
        }
    }
}

TEST(PrxRowPassV210Vector, IsThePassSelected) {
    for (const int64_t target : VectorTargets()) {
        const ForcedTarget forced(target);
        ASSERT_NE(PrxSelectVectorV210RowPass(), nullptr);
        EXPECT_EQ(PrxSelectV210RowPass(), PrxSelectVectorV210RowPass());
    }
}

} // namespace
