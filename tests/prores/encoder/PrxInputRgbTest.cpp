#include "prores/encoder/PrxInputRgb.h"

#include "prores/RoundingModes.h"
#include "prores/encoder/RgbInputModel.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace {

using namespace rgb_input_model;

/// Samples of one pixel.
Ycbcr<int32_t> ConvertPixel(uint32_t format, const Codes& codes, int32_t colorMatrix) {
    const std::vector<Codes> pixels(256, codes);
    const auto blocks = ConvertBlocks(PrxGetScalarRgbConverter(format), format, pixels, colorMatrix);
    return {blocks[0], blocks[64 * 4], blocks[64 * 5]};
}

/// Pixels of which none has the code of another in the same channel.
std::vector<Codes> DistinctPixels() {
    std::vector<Codes> pixels(256);
    for (int32_t i = 0; i < 256; ++i)
        pixels[static_cast<size_t>(i)] = {i, (i + 85) % 256, (i + 170) % 256};
    return pixels;
}

/// Calls `check(format, max, colorMatrix)`.
template <typename Check>
void ForAllCases(const Check& check) {
    for (const uint32_t format : macroblockFormats)
        for (const int32_t colorMatrix : colorMatrices)
            check(format, OutMaxModel(format), colorMatrix);
}

} // namespace

TEST(PrxInputRgb, SamplesAreThoseOfSinglePrecisionStepByStep) {
    std::mt19937 random = MakeRandom();
    ForAllCases([&](uint32_t format, int32_t max, int32_t colorMatrix) {
        for (int32_t i = 0; i < 20; ++i) {
            const auto pixels = RandomPixels(256, max, i < 4, random);
            ASSERT_EQ(ConvertBlocks(PrxGetScalarRgbConverter(format), format, pixels, colorMatrix),
                      BlocksModel(pixels, colorMatrix, max))
                << RgbCaseName(format, colorMatrix, false);
        }
    });
}

TEST(PrxInputRgb, SamplesAreNearestToTheExactMatrix) {
    std::mt19937 random = MakeRandom();
    ForAllCases([&](uint32_t format, int32_t max, int32_t colorMatrix) {
        for (const Codes& codes : RandomPixels(100, max, false, random)) {
            const auto found = ConvertPixel(format, codes, colorMatrix);
            const auto exact = Exact(codes, colorMatrix, samples, max);
            EXPECT_NEAR(found.y, exact.y - 1792, 0.501);
            EXPECT_NEAR(found.cb, exact.cb, 0.501);
            EXPECT_NEAR(found.cr, exact.cr, 0.501);
        }
    });
}

TEST(PrxInputRgb, BlackAndWhiteAreTheEndsOfVideoRange) {
    ForAllCases([](uint32_t format, int32_t max, int32_t colorMatrix) {
        EXPECT_EQ(ConvertPixel(format, {0, 0, 0}, colorMatrix), (Ycbcr<int32_t>{-1792, 0, 0}));
        EXPECT_EQ(ConvertPixel(format, {max, max, max}, colorMatrix), (Ycbcr<int32_t>{1712, 0, 0}));
    });
}

TEST(PrxInputRgb, BlueAndRedAndTheirComplementsAreTheEndsOfChroma) {
    ForAllCases([](uint32_t format, int32_t max, int32_t colorMatrix) {
        EXPECT_EQ(ConvertPixel(format, {0, 0, max}, colorMatrix).cb, 1792);
        EXPECT_EQ(ConvertPixel(format, {max, max, 0}, colorMatrix).cb, -1792);
        EXPECT_EQ(ConvertPixel(format, {max, 0, 0}, colorMatrix).cr, 1792);
        EXPECT_EQ(ConvertPixel(format, {0, max, max}, colorMatrix).cr, -1792);
    });
}

TEST(PrxInputRgb, LumaLosesItsOffsetAfterItIsRounded) {
    std::mt19937 random = MakeRandom();
    int32_t different = 0;
    for (const Codes& codes : RandomPixels(1 << 20, 4095, false, random)) { // dark: small floats are finer
        const float luma = Single(codes, 1, samples, 65535).y;
        const int32_t expected = NearestEvenModel(luma) - 1792;
        if (NearestEvenModel(SumModel(luma, -1792)) == expected) continue;
        ++different;
        ASSERT_EQ(ConvertPixel(prxFormatB64a, codes, 1).y, expected);
    }
    EXPECT_GT(different, 10);
}

TEST(PrxInputRgb, TiesOfLumaGoToTheEvenSample) {
    std::mt19937 random = MakeRandom();
    int32_t ties = 0;
    for (const Codes& codes : RandomPixels(1 << 20, 65535, false, random)) {
        const float luma = Single(codes, 1, samples, 65535).y;
        if (luma - std::floor(luma) != 0.5F) continue;
        ++ties;
        ASSERT_EQ(ConvertPixel(prxFormatB64a, codes, 1).y % 2, 0);
    }
    EXPECT_GT(ties, 10);
}

TEST(PrxInputRgb, TiesOfChromaGoToTheEvenSample) {
    std::mt19937 random = MakeRandom();
    int32_t ties = 0;
    for (const Codes& codes : RandomPixels(1 << 20, 65535, false, random)) {
        const float chroma = Single(codes, 1, samples, 65535).cb;
        if (chroma - std::floor(chroma) != 0.5F) continue;
        ++ties;
        ASSERT_EQ(ConvertPixel(prxFormatB64a, codes, 1).cb % 2, 0);
    }
    EXPECT_GT(ties, 10);
}

TEST(PrxInputRgb, TermsAreAddedFromGreenToRedToBlue) {
    std::mt19937 random = MakeRandom();
    int32_t different = 0;
    for (const Codes& codes : RandomPixels(1 << 20, 65535, false, random)) {
        const auto expected = NearestEvenModel(Single(codes, 1, samples, 65535).y);
        if (NearestEvenModel(Single(codes, 1, samples, 65535, {0, 2, 1}).y) == expected) continue;
        ++different;
        ASSERT_EQ(ConvertPixel(prxFormatB64a, codes, 1).y, expected - 1792);
    }
    EXPECT_GT(different, 10);
}

TEST(PrxInputRgb, AlphaPlaysNoPart) {
    std::mt19937 random = MakeRandom();
    const auto pixels = RandomPixels(256, 255, false, random);
    for (const uint32_t format : {prxFormatArgb, prxFormatB64a}) {
        std::vector<std::vector<int16_t>> results;
        for (const uint32_t alpha : {0, 255}) {
            const auto packed = Pack(format, pixels, alpha);
            results.emplace_back(12 * 64);
            PrxGetScalarRgbConverter(format)(
                {packed.data(), static_cast<ptrdiff_t>(packed.size() / 16), 16, 16, results.back().data()},
                1);
        }
        EXPECT_EQ(results[0], results[1]);
    }
}

TEST(PrxInputRgb, AWidthOfOnePixelIsSixteenCopiesOfItOnEachRow) {
    const auto pixels = DistinctPixels();
    auto repeated = pixels;
    for (size_t i = 0; i < repeated.size(); ++i)
        repeated[i] = pixels[i / 16 * 16];
    ForAllCases([&](uint32_t format, int32_t max, int32_t colorMatrix) {
        EXPECT_EQ(
            ConvertBlocks(PrxGetScalarRgbConverter(format), format, pixels, colorMatrix, {.columns = 1}),
            BlocksModel(repeated, colorMatrix, max));
    });
}

TEST(PrxInputRgb, OneRowIsRepeatedSixteenTimes) {
    const auto pixels = DistinctPixels();
    auto repeated = pixels;
    for (size_t i = 0; i < repeated.size(); ++i)
        repeated[i] = pixels[i % 16];
    ForAllCases([&](uint32_t format, int32_t max, int32_t colorMatrix) {
        EXPECT_EQ(ConvertBlocks(PrxGetScalarRgbConverter(format), format, pixels, colorMatrix, {.rows = 1}),
                  BlocksModel(repeated, colorMatrix, max));
    });
}

TEST(PrxInputRgb, RowsMayStandUpsideDownInMemory) {
    const auto pixels = DistinctPixels();
    auto flipped = pixels;
    for (size_t i = 0; i < flipped.size(); ++i)
        flipped[i] = pixels[(15 - i / 16) * 16 + i % 16];
    for (const uint32_t format : macroblockFormats) {
        const auto packed = Pack(format, pixels);
        const auto rowBytes = static_cast<ptrdiff_t>(packed.size() / 16);
        std::vector<int16_t> blocks(12 * 64);
        PrxGetScalarRgbConverter(format)({packed.data() + 15 * rowBytes, -rowBytes, 16, 16, blocks.data()},
                                         1);
        EXPECT_EQ(blocks, BlocksModel(flipped, 1, OutMaxModel(format)));
    }
}

TEST(PrxInputRgb, RoundsToNearestInAnyModeOfTheThreadAndLeavesTheMode) {
    std::mt19937 random = MakeRandom();
    for (const uint32_t format : macroblockFormats) {
        const auto pixels = RandomPixels(256, OutMaxModel(format), false, random);
        const auto expected = BlocksModel(pixels, 9, OutMaxModel(format));
        ExpectInAnyRoundingMode(
            [&] { return ConvertBlocks(PrxGetScalarRgbConverter(format), format, pixels, 9); }, expected);
        ExpectInAnyRoundingMode([&] { return ConvertBlocks(PrxGetRgbConverter(format), format, pixels, 9); },
                                expected);
    }
}

TEST(PrxInputRgb, HasConvertersOfItsFormatsOnly) {
    for (const uint32_t format : macroblockFormats) {
        EXPECT_NE(PrxGetScalarRgbConverter(format), nullptr);
        EXPECT_NE(PrxGetRgbConverter(format), nullptr);
    }
    for (const uint32_t format :
         {prxFormatBgra, prxFormatL302, prxFormatV216, prxFormatY408, prxFormatR4fl}) {
        EXPECT_EQ(PrxGetScalarRgbConverter(format), nullptr);
        EXPECT_EQ(PrxGetRgbConverter(format), nullptr);
        EXPECT_EQ(PrxGetScalarRgbRowConverter(format), nullptr);
        EXPECT_EQ(PrxGetRgbRowConverter(format), nullptr);
    }
}
