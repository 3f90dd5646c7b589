#include "prores/encoder/PrxInputRgb.h"

#include "prores/RoundingModes.h"
#include "prores/encoder/RgbInputModel.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace {

using namespace rgb_input_model;

std::vector<uint16_t> Convert(uint32_t format, const std::vector<Codes>& pixels, int32_t colorMatrix) {
    return ConvertRow(PrxGetScalarRgbRowConverter(format), format, pixels, colorMatrix);
}

/// Calls `check(format, max, colorMatrix)`.
template <typename Check>
void ForAllCases(const Check& check) {
    for (const uint32_t format : rowFormats)
        for (const int32_t colorMatrix : colorMatrices)
            check(format, OutMaxModel(format), colorMatrix);
}

/// Cb of even pixel `x`, 0 for no colour.
int32_t CbOf(const std::vector<uint16_t>& row, size_t x) { return row[2 * x] - 32768; }

constexpr Codes black = {0, 0, 0};
constexpr Codes blue = {0, 0, 255};

} // namespace

TEST(PrxInputRgbRow, WordsAreThoseOfSinglePrecisionStepByStep) {
    std::mt19937 random = MakeRandom();
    ForAllCases([&](uint32_t format, int32_t max, int32_t colorMatrix) {
        for (size_t width = 1; width <= 70; ++width) {
            const auto pixels = RandomPixels(width, max, width % 4 == 0, random);
            ASSERT_EQ(Convert(format, pixels, colorMatrix), RowModel(pixels, colorMatrix, max))
                << RgbCaseName(format, colorMatrix, false) << ", width " << width;
        }
    });
}

TEST(PrxInputRgbRow, LumaIsNearestToTheExactMatrix) {
    std::mt19937 random = MakeRandom();
    ForAllCases([&](uint32_t format, int32_t max, int32_t colorMatrix) {
        const auto pixels = RandomPixels(100, max, false, random);
        const auto row = Convert(format, pixels, colorMatrix);
        for (size_t x = 0; x < pixels.size(); ++x)
            EXPECT_NEAR(row[2 * x + 1], Exact(pixels[x], colorMatrix, words, max).y + 4096, 0.51);
    });
}

TEST(PrxInputRgbRow, ChromaIsNearestToTheExactMeanOfWeightsOneTwoOne) {
    std::mt19937 random = MakeRandom();
    ForAllCases([&](uint32_t format, int32_t max, int32_t colorMatrix) {
        const auto pixels = RandomPixels(100, max, false, random);
        const auto row = Convert(format, pixels, colorMatrix);
        for (size_t x = 2; x < pixels.size(); x += 2) {
            const auto left = Exact(pixels[x - 1], colorMatrix, words, max);
            const auto own = Exact(pixels[x], colorMatrix, words, max);
            const auto right = Exact(pixels[x + 1], colorMatrix, words, max);
            EXPECT_NEAR(row[2 * x], 32768 + left.cb + 2 * own.cb + right.cb, 0.51);
            EXPECT_NEAR(row[2 * x + 2], 32768 + left.cr + 2 * own.cr + right.cr, 0.51);
        }
    });
}

TEST(PrxInputRgbRow, BlackIs4096AndWhite60160) {
    ForAllCases([](uint32_t format, int32_t max, int32_t colorMatrix) {
        const std::vector<Codes> pixels = {{0, 0, 0}, {0, 0, 0}, {max, max, max}, {max, max, max}};
        const auto row = Convert(format, pixels, colorMatrix);
        const std::vector<uint16_t> grey = {32768, 4096, 32768, 4096, 32768, 60160, 32768, 60160};
        EXPECT_EQ(row, grey);
    });
}

TEST(PrxInputRgbRow, BlueAndYellowAreTheEndsOfCb) {
    ForAllCases([](uint32_t format, int32_t max, int32_t colorMatrix) {
        EXPECT_EQ(Convert(format, {2, {0, 0, max}}, colorMatrix)[0], 32768 + 28672);
        EXPECT_EQ(Convert(format, {2, {max, max, 0}}, colorMatrix)[0], 32768 - 28672);
    });
}

TEST(PrxInputRgbRow, AnOddPixelGivesAQuarterOfItsChromaToBothNeighbours) {
    const auto row = Convert(prxFormatArgb, {black, black, black, blue, black, black}, 1);
    EXPECT_EQ(CbOf(row, 0), 0);
    EXPECT_EQ(CbOf(row, 2), 7168);
    EXPECT_EQ(CbOf(row, 4), 7168);
}

TEST(PrxInputRgbRow, AnEvenPixelKeepsHalfOfItsChromaAndGivesNoneAway) {
    const auto row = Convert(prxFormatArgb, {black, black, blue, black, black, black}, 1);
    EXPECT_EQ(CbOf(row, 0), 0);
    EXPECT_EQ(CbOf(row, 2), 14336);
    EXPECT_EQ(CbOf(row, 4), 0);
}

TEST(PrxInputRgbRow, TheFirstPixelStandsOnItsOwnLeft) {
    EXPECT_EQ(CbOf(Convert(prxFormatArgb, {blue, black}, 1), 0), 3 * 7168);
}

TEST(PrxInputRgbRow, TheLastPixelOfAnOddWidthStandsOnItsOwnRight) {
    EXPECT_EQ(CbOf(Convert(prxFormatArgb, {black, black, blue}, 1), 2), 3 * 7168);
}

TEST(PrxInputRgbRow, AnOddWidthStoresAWholePairWithTheLastLumaTwice) {
    for (const size_t width : {1, 3, 5, 17, 19}) {
        std::vector<Codes> pixels(width, black);
        pixels.back() = {255, 255, 255};
        const auto row = Convert(prxFormatArgb, pixels, 1);
        EXPECT_EQ(row[row.size() - 3], 60160);
        EXPECT_EQ(row[row.size() - 1], 60160);
    }
}

TEST(PrxInputRgbRow, WritesNothingBehindTheLastPair) {
    for (const auto convert :
         {PrxGetScalarRgbRowConverter(prxFormatB64a), PrxGetRgbRowConverter(prxFormatB64a)}) {
        for (size_t width = 1; width <= 70; ++width) {
            const auto packed = Pack(prxFormatB64a, std::vector<Codes>(width, blue));
            std::vector<uint8_t> row(4 * width + 256, 0xA5);
            convert(packed.data(), static_cast<int32_t>(width), 1, row.data());
            const size_t used = (width + 1) / 2 * 8;
            EXPECT_EQ(row[used - 1], 16) << "width " << width;
            EXPECT_EQ(std::count(row.begin() + static_cast<ptrdiff_t>(used), row.end(), 0xA5),
                      static_cast<ptrdiff_t>(row.size() - used))
                << "width " << width;
        }
    }
}

TEST(PrxInputRgbRow, LumaLosesItsOffsetBeforeItIsRounded) {
    std::mt19937 random = MakeRandom();
    int32_t different = 0;
    for (const Codes& codes : RandomPixels(1 << 20, 65535, false, random)) {
        const float luma = Single(codes, 1, words, 65535).y;
        const int32_t expected = NearestEvenModel(SumModel(luma, -28672)) + 32768;
        if (NearestEvenModel(luma) + 4096 == expected) continue;
        ++different;
        ASSERT_EQ(Convert(prxFormatB64a, {codes}, 1)[1], expected);
    }
    EXPECT_GT(different, 10);
}

TEST(PrxInputRgbRow, TiesOfLumaGoToTheEvenWord) {
    std::mt19937 random = MakeRandom();
    int32_t ties = 0;
    for (const Codes& codes : RandomPixels(1 << 17, 65535, false, random)) {
        const float luma = Single(codes, 1, words, 65535).y;
        if (luma - std::floor(luma) != 0.5F) continue;
        ++ties;
        ASSERT_EQ(Convert(prxFormatB64a, {codes}, 1)[1] % 2, 0);
    }
    EXPECT_GT(ties, 10);
}

TEST(PrxInputRgbRow, RoundsToNearestInAnyModeOfTheThreadAndLeavesTheMode) {
    std::mt19937 random = MakeRandom();
    for (const uint32_t format : rowFormats) {
        const auto pixels = RandomPixels(67, OutMaxModel(format), false, random);
        const auto expected = RowModel(pixels, 1, OutMaxModel(format));
        for (const auto convert : {PrxGetScalarRgbRowConverter(format), PrxGetRgbRowConverter(format)})
            ExpectInAnyRoundingMode([&] { return ConvertRow(convert, format, pixels, 1); }, expected);
    }
}

TEST(PrxInputRgbRow, N302HasNoRowConverter) {
    EXPECT_EQ(PrxGetScalarRgbRowConverter(prxFormatN302), nullptr);
    EXPECT_EQ(PrxGetRgbRowConverter(prxFormatN302), nullptr);
    for (const uint32_t format : rowFormats)
        EXPECT_NE(PrxGetRgbRowConverter(format), nullptr);
}
