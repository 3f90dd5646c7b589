// RGB pixels in memory: the layouts, the codes and alpha.

#include "prores/PrxRgbPacking.h"

#include "RgbModel.h"

#include <gtest/gtest.h>

namespace {

/// Factors by which luma gives all channels, and Cr and Cb what red and blue differ from that by.
constexpr PrxColorCoefficients plainFactors = {.yScale = 1, .crToR = 1, .cbToG = 0, .crToG = 0, .cbToB = 1};

/// A pixel with these codes, and what stands behind it.
template <uint32_t PixelFormat>
std::vector<uint8_t> Stored(int32_t r, int32_t g, int32_t b, uint32_t alpha) {
    std::vector<uint8_t> bytes(PixelBytesModel(PixelFormat) + 1, 0xEE);
    PrxStoreRgbPixel<PixelFormat>(static_cast<float>(g), static_cast<float>(b - g), static_cast<float>(r - g),
                                  plainFactors, alpha, bytes.data());
    return bytes;
}

using Bytes = std::vector<uint8_t>;

TEST(PrxRgbPacking, CodesRoundHalvesToTheEvenOne) {
    EXPECT_EQ(PrxRgbCode(0.5f, 255), 0u);
    EXPECT_EQ(PrxRgbCode(1.5f, 255), 2u);
    EXPECT_EQ(PrxRgbCode(2.5f, 255), 2u);
    EXPECT_EQ(PrxRgbCode(-0.5f, 255), 0u);
    EXPECT_EQ(PrxRgbCode(254.5f, 255), 254u);
}

TEST(PrxRgbPacking, CodesAreLimited) {
    for (const int32_t outMax : {255, 1023, 65535}) {
        EXPECT_EQ(PrxRgbCode(-1.0f, outMax), 0u);
        EXPECT_EQ(PrxRgbCode(-1e6f, outMax), 0u);
        EXPECT_EQ(PrxRgbCode(static_cast<float>(outMax) + 0.5f, outMax), static_cast<uint64_t>(outMax));
        EXPECT_EQ(PrxRgbCode(1e6f, outMax), static_cast<uint64_t>(outMax));
    }
}

TEST(PrxRgbPacking, ArgbHasAlphaInItsFirstByte) {
    EXPECT_EQ(Stored<prxFormatArgb>(1, 2, 3, 4), (Bytes{4, 1, 2, 3, 0xEE}));
}

TEST(PrxRgbPacking, BgraHasAlphaInItsLastByte) {
    EXPECT_EQ(Stored<prxFormatBgra>(1, 2, 3, 4), (Bytes{3, 2, 1, 4, 0xEE}));
}

TEST(PrxRgbPacking, B64aHasBigEndianWordsWithAlphaFirst) {
    EXPECT_EQ(Stored<prxFormatB64a>(0x1122, 0x3344, 0x5566, 0x7788),
              (Bytes{0x77, 0x88, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0xEE}));
}

TEST(PrxRgbPacking, R10kHasItsPaddingInTheLowBitsOfABigEndianWord) {
    EXPECT_EQ(Stored<prxFormatR10k>(1023, 0, 0, 0), (Bytes{0xFF, 0xC0, 0, 0, 0xEE}));
    EXPECT_EQ(Stored<prxFormatR10k>(0, 1023, 0, 0), (Bytes{0, 0x3F, 0xF0, 0, 0xEE}));
    EXPECT_EQ(Stored<prxFormatR10k>(0, 0, 1023, 0), (Bytes{0, 0, 0x0F, 0xFC, 0xEE}));
}

TEST(PrxRgbPacking, R210HasItsPaddingInTheHighBitsOfABigEndianWord) {
    EXPECT_EQ(Stored<prxFormatR210>(1023, 0, 0, 0), (Bytes{0x3F, 0xF0, 0, 0, 0xEE}));
    EXPECT_EQ(Stored<prxFormatR210>(0, 1023, 0, 0), (Bytes{0, 0x0F, 0xFC, 0, 0xEE}));
    EXPECT_EQ(Stored<prxFormatR210>(0, 0, 1023, 0), (Bytes{0, 0, 0x03, 0xFF, 0xEE}));
}

TEST(PrxRgbPacking, N302IsR10kWithItsBytesReversed) {
    EXPECT_EQ(Stored<prxFormatN302>(1023, 0, 0, 0), (Bytes{0, 0, 0xC0, 0xFF, 0xEE}));
    EXPECT_EQ(Stored<prxFormatN302>(0, 1023, 0, 0), (Bytes{0, 0xF0, 0x3F, 0, 0xEE}));
    EXPECT_EQ(Stored<prxFormatN302>(0, 0, 1023, 0), (Bytes{0xFC, 0x0F, 0, 0, 0xEE}));
}

TEST(PrxRgbPacking, TheLayoutsTellSizeRangeAndAlphaOfEachFormat) {
    for (const uint32_t format : rgbFormats) {
        const PrxRgbLayout layout = PrxRgbLayoutOf(format);
        EXPECT_EQ(layout.outMax, OutMaxModel(format)) << format;
        EXPECT_EQ(static_cast<size_t>(layout.bytesPerPixel), PixelBytesModel(format)) << format;
        EXPECT_EQ(layout.hasAlpha, HasAlphaModel(format)) << format;
        if (layout.hasAlpha) {
            EXPECT_EQ(static_cast<size_t>(layout.AlphaBytes()), AlphaBytesModel(format)) << format;
        }
    }
}

TEST(PrxRgbPacking, AlphaSamplesAreBytesOrNativeWords) {
    const uint16_t words[] = {0x0102, 0xFEDC};
    const auto* row = reinterpret_cast<const uint8_t*>(words);
    EXPECT_EQ((PrxRgbAlpha<prxFormatB64a, true>(row, 1)), 0xFEDCu);
    EXPECT_EQ((PrxRgbAlpha<prxFormatArgb, true>(row, 3)), row[3]);
    EXPECT_EQ((PrxRgbAlpha<prxFormatBgra, true>(row, 1)), row[1]);
}

TEST(PrxRgbPacking, AlphaIsOpaqueWithoutSamplesAndZeroWhereAPixelHasNone) {
    EXPECT_EQ((PrxRgbAlpha<prxFormatArgb, false>(nullptr, 0)), 255u);
    EXPECT_EQ((PrxRgbAlpha<prxFormatBgra, false>(nullptr, 0)), 255u);
    EXPECT_EQ((PrxRgbAlpha<prxFormatB64a, false>(nullptr, 0)), 65535u);
    EXPECT_EQ((PrxRgbAlpha<prxFormatR210, false>(nullptr, 0)), 0u);
}

} // namespace
