#include "prores/PrxRowPassV210.h"

#include "prores/V210Row.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace {

TEST(PrxRowPassV210, PacksThreeCodesToAWordTheFirstInTheLowBits) {
    std::mt19937 random = MakeRandom();
    V210Rows rows(6, random);
    for (int32_t i = 0; i < 12; ++i)
        rows.SetWord(0, i, static_cast<uint16_t>((i + 1) << 6 | 0x3F));
    rows.Run(PrxScalarV210RowPass);
    EXPECT_EQ(rows.Packed(0, 0), 3u << 20 | 2u << 10 | 1u); // Cr0 Y0 Cb0
    EXPECT_EQ(rows.Packed(0, 1), 6u << 20 | 5u << 10 | 4u); // Y2 Cb1 Y1
    EXPECT_EQ(rows.Packed(0, 2), 9u << 20 | 8u << 10 | 7u); // Cb2 Y3 Cr1
    EXPECT_EQ(rows.Packed(0, 3), 12u << 20 | 11u << 10 | 10u);
}

TEST(PrxRowPassV210, WritesFEC0As1019And0100As4) {
    std::mt19937 random = MakeRandom();
    V210Rows rows(6, random);
    rows.SetWord(1, 1, 0xFEC0);
    rows.SetWord(1, 2, 0x0100);
    rows.Run(PrxScalarV210RowPass);
    EXPECT_EQ(rows.Code(1, 1), 1019u);
    EXPECT_EQ(rows.Code(1, 2), 4u);
}

TEST(PrxRowPassV210, FillsThePartialLastGroupWithBlackAtEveryWidth) {
    std::mt19937 random = MakeRandom();
    for (int32_t width = 1; width <= 40; ++width) {
        V210Rows rows(width, random);
        rows.Run(PrxScalarV210RowPass);
        const int32_t codes = (width + 5) / 6 * 12;
        for (int32_t row = 0; row < V210Rows::rowCount; ++row) {
            for (int32_t i = 0; i < codes; ++i) {
                const bool isLuma = i % 2 == 1;
                const int32_t pixel = i / 2; // chroma words belong to the pair of the pixel before or at them
                const bool exists = isLuma ? pixel < width : pixel / 2 * 2 < width;
                const uint32_t black = isLuma ? 0x1000 >> 6 : 0x8000 >> 6;
                EXPECT_EQ(rows.Code(row, i), exists ? rows.Word(row, i) / 64u : black)
                    << "width " << width << ", code " << i;
            }
        }
    }
}

TEST(PrxRowPassV210, KeepsTheCrOfAnOddLastPixel) {
    std::mt19937 random = MakeRandom();
    V210Rows rows(1, random);
    rows.SetWord(0, 0, 100 << 6);
    rows.SetWord(0, 1, 200 << 6);
    rows.SetWord(0, 2, 300 << 6);
    rows.Run(PrxScalarV210RowPass);
    EXPECT_EQ(rows.Packed(0, 0), 300u << 20 | 200u << 10 | 100u);
    EXPECT_EQ(rows.Packed(0, 1), 64u << 20 | 512u << 10 | 64u);
}

TEST(PrxRowPassV210, WritesNothingToATargetRowThatIsTooShort) {
    std::mt19937 random = MakeRandom();
    V210Rows rows(14, random);
    PrxRowPassJob job = rows.Job(0, 14);
    job.targetRowBytes = 3 * 16 - 1;
    const std::vector<uint8_t> before = rows.Target();
    PrxScalarV210RowPass(job, {0, 0, 1});
    EXPECT_EQ(rows.Target(), before);
}

TEST(PrxRowPassV210, LeavesTheBytesBetweenRowsAlone) {
    std::mt19937 random = MakeRandom();
    V210Rows rows(20, random);
    rows.Run(PrxScalarV210RowPass);
    const std::vector<uint8_t> target = rows.Target();
    for (size_t i = 4 * 16; i < 4 * 16 + V210Rows::gap; ++i)
        EXPECT_EQ(target[i], V210Rows::untouched);
}

TEST(PrxRowPassV210, WritesEachGroupThatHasAPixelInTheStretch) {
    std::mt19937 random = MakeRandom();
    V210Rows rows(96, random);
    rows.Run(PrxScalarV210RowPass, 32, 64);
    for (int32_t group = 0; group < 16; ++group)
        EXPECT_EQ(rows.IsTouched(0, group), group >= 5 && group <= 10) << group;
}

TEST(PrxRowPassV210, TakesThePixelsOfAGroupOutsideTheStretchFromTheRowBuffer) {
    std::mt19937 random = MakeRandom();
    V210Rows rows(48, random);
    rows.Run(PrxScalarV210RowPass, 16, 32);
    for (int32_t i = 12 * 2; i < 12 * 6; ++i)
        EXPECT_EQ(rows.Code(0, i), rows.Word(0, i) / 64u) << i;
}

TEST(PrxRowPassV210, GivesTheSameRowInStretchesAsInOne) {
    std::mt19937 random = MakeRandom();
    for (const int32_t width : {17, 33, 48, 130}) {
        V210Rows rows(width, random);
        for (int32_t first = 0; first < width; first += 16)
            rows.Run(PrxScalarV210RowPass, first, std::min(first + 16, width));
        const std::vector<uint8_t> inStretches = rows.Target();
        rows.Run(PrxScalarV210RowPass);
        EXPECT_EQ(inStretches, rows.Target());
    }
}

} // namespace
