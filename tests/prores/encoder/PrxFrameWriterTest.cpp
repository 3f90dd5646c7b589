#include "prores/encoder/PrxFrameWriter.h"

#include "prores/PrxFormats.h"
#include "prores/encoder/PrxQuantMatrices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

namespace {

using HeaderBytes = std::array<uint8_t, prxFirstPictureOffset>;

PrxFrameHeader ExampleHeader() {
    PrxFrameHeader header{};
    header.width = 0x1234;
    header.height = 0x5678;
    header.chromaFormat = prxChroma422;
    header.interlaceMode = 2;
    header.colorPrimaries = 9;
    header.transferCharacteristic = 16;
    header.matrixCoefficients = 6;
    header.sourcePixelFormat = 10;
    header.lumaMatrix = PrxLumaWeights(2);
    header.chromaMatrix = PrxChromaWeights(2);
    return header;
}

HeaderBytes Written(const PrxFrameHeader& header) {
    HeaderBytes bytes;
    bytes.fill(0xcc);
    PrxWriteFrameHeader(header, {3, 8}, 0x01020304, bytes.data());
    return bytes;
}

TEST(FrameHeader, IsWrittenInTheStandardsOrder) {
    const HeaderBytes bytes = Written(ExampleHeader());
    const std::vector<uint8_t> expected = {1,    2,    3,   4,   'i', 'c',  'p',  'f',  0,    148,
                                           0,    0,    'r', 'v', 'l', '0',  0x12, 0x34, 0x56, 0x78,
                                           0x88, 0x38, 9,   16,  6,   0xa0, 0,    3};
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), bytes.begin()));
    EXPECT_TRUE(std::ranges::equal(PrxLumaWeights(2), std::span(bytes).subspan(28, 64)));
    EXPECT_TRUE(std::ranges::equal(PrxChromaWeights(2), std::span(bytes).subspan(92, 64)));
}

TEST(FrameHeader, ReadsBackAsItWasWritten) {
    const PrxFrameHeader header = ExampleHeader();
    const HeaderBytes bytes = Written(header);
    PrxFrameHeader read{};
    EXPECT_EQ(PrxParseFrameHeader({bytes.data() + 8, bytes.size() - 8, nullptr}, &read), 148U);
    EXPECT_EQ(read.width, header.width);
    EXPECT_EQ(read.height, header.height);
    EXPECT_EQ(read.chromaFormat, header.chromaFormat);
    EXPECT_EQ(read.interlaceMode, header.interlaceMode);
    EXPECT_EQ(read.sourcePixelFormat, header.sourcePixelFormat);
    EXPECT_TRUE(read.loadLumaMatrix && read.loadChromaMatrix);
    EXPECT_EQ(read.lumaMatrix, header.lumaMatrix);
    EXPECT_EQ(read.chromaMatrix, header.chromaMatrix);
}

TEST(FrameHeader, HasVersion1For444AndForAlphaOnly) {
    PrxFrameHeader header = ExampleHeader();
    EXPECT_EQ(Written(header)[11], 0);
    header.chromaFormat = prxChroma444;
    EXPECT_EQ(Written(header)[11], 1);
    header.chromaFormat = prxChroma422;
    header.alphaType = 2;
    EXPECT_EQ(Written(header)[11], 1);
    EXPECT_EQ(Written(header)[25], 0xa2);
}

TEST(FrameHeader, WritesTheWeightOfDroppedCoefficientsAs63) {
    PrxFrameHeader header = ExampleHeader();
    header.lumaMatrix = PrxLumaWeights(4);
    header.chromaMatrix = PrxChromaWeights(4);
    const HeaderBytes bytes = Written(header);
    EXPECT_EQ(std::count(bytes.begin() + 28, bytes.end(), 255), 0);
    EXPECT_EQ(bytes[28 + 7], 63);
    EXPECT_EQ(bytes[28 + 6], 15);
    EXPECT_EQ(bytes[92 + 6], 63);
}

TEST(SourceFormatCode, IsThePlaceOfTheFormatInItsList) {
    EXPECT_EQ(PrxSourceFormatCode(prxFormat2vuy), 1);
    EXPECT_EQ(PrxSourceFormatCode(prxFormatV210), 2);
    EXPECT_EQ(PrxSourceFormatCode(prxFormatV216), 3);
    EXPECT_EQ(PrxSourceFormatCode(prxFormatR408), 4);
    EXPECT_EQ(PrxSourceFormatCode(prxFormatV408), 5);
    EXPECT_EQ(PrxSourceFormatCode(prxFormatR4fl), 6);
    EXPECT_EQ(PrxSourceFormatCode(prxFormatArgb), 7);
    EXPECT_EQ(PrxSourceFormatCode(prxFormatBgra), 8);
    EXPECT_EQ(PrxSourceFormatCode(prxFormatN302), 9);
    EXPECT_EQ(PrxSourceFormatCode(prxFormatB64a), 10);
    EXPECT_EQ(PrxSourceFormatCode(prxFormatR10k), 11);
    EXPECT_EQ(PrxSourceFormatCode(prxFormatL302), 12);
    EXPECT_EQ(PrxSourceFormatCode(prxFormatY408), 13);
    EXPECT_EQ(PrxSourceFormatCode(prxFormatY416), 14);
    EXPECT_EQ(PrxSourceFormatCode(prxFormatR210), 15);
}

TEST(SourceFormatCode, Is0ForOtherFormats) {
    EXPECT_EQ(PrxSourceFormatCode(prxFormatYuvs), 0);
    EXPECT_EQ(PrxSourceFormatCode(prxFormatW216), 0);
    EXPECT_EQ(PrxSourceFormatCode(0x78787878), 0);
}

TEST(Stuffing, FillsUpToAMultipleOf16With50To65Zeros) {
    for (size_t used = 100; used < 116; ++used) {
        std::vector<uint8_t> output(300, 0xcc);
        const size_t size = PrxAddStuffing(output, used);
        EXPECT_EQ(size % 16, 0U);
        EXPECT_GE(size, used + 50);
        EXPECT_LE(size, used + 65);
        EXPECT_EQ(std::ranges::count(output, 0), static_cast<ptrdiff_t>(size - used));
        EXPECT_EQ(output[used - 1], 0xcc);
        EXPECT_EQ(output[size], 0xcc);
    }
}

TEST(Stuffing, IsAddedIfItJustFits) {
    std::vector<uint8_t> output(160);
    EXPECT_EQ(PrxAddStuffing(output, 110), 160U);
}

TEST(Stuffing, IsLeftOutAltogetherIfItDoesNotFit) {
    std::vector<uint8_t> output(159, 0xcc);
    EXPECT_EQ(PrxAddStuffing(output, 110), 110U);
    EXPECT_EQ(std::ranges::count(output, 0), 0);
}

} // namespace
