#include "prores/PrxFormats.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

uint32_t FourCC(const std::string& text) {
    return static_cast<uint32_t>(text[0]) << 24 | static_cast<uint32_t>(text[1]) << 16 |
           static_cast<uint32_t>(text[2]) << 8 | static_cast<uint32_t>(text[3]);
}

struct Format {
    uint32_t pixelFormat;
    uint32_t bytesPerGroup;
    uint32_t pixelsPerGroup;
    uint32_t alphaSampleSize;
    int32_t precisionClass;
};

const std::vector<Format> formats = {
    {FourCC("2vuy"), 2, 1, 0, 8},
    {FourCC("yuvs"), 2, 1, 0, 0},
    {FourCC("v210"), 8, 3, 0, 0},
    {FourCC("v216"), 4, 1, 0, 13},
    {FourCC("w216"), 4, 1, 0, 10},
    {FourCC("v408"), 4, 1, 1, 8},
    {FourCC("r408"), 4, 1, 1, 8},
    {FourCC("y408"), 4, 1, 1, 8},
    {FourCC("y416"), 8, 1, 2, 13},
    {FourCC("r4fl"), 16, 1, 4, 13},
    {32, 4, 1, 1, 13},
    {FourCC("BGRA"), 4, 1, 1, 13},
    {FourCC("b64a"), 8, 1, 2, 13},
    {FourCC("R10k"), 4, 1, 0, 13},
    {FourCC("r210"), 4, 1, 0, 13},
    {FourCC("n302"), 4, 1, 0, 13},
    {FourCC("l302"), 4, 1, 0, 13},
};

const std::vector<uint32_t> unknownFormats = {0, 24, FourCC("apch"), FourCC("V216"), 0xffffffff};

} // namespace

TEST(PrxFormats, EachFormatHasItsGroupSize) {
    for (const Format& format : formats) {
        const PrxGroupSize group = PrxGetGroupSize(format.pixelFormat);
        EXPECT_EQ(group.bytesPerGroup, format.bytesPerGroup) << format.pixelFormat;
        EXPECT_EQ(group.pixelsPerGroup, format.pixelsPerGroup) << format.pixelFormat;
    }
}

TEST(PrxFormats, EachFormatHasItsAlphaSampleSize) {
    for (const Format& format : formats) {
        EXPECT_EQ(PrxGetAlphaSampleSize(format.pixelFormat), format.alphaSampleSize) << format.pixelFormat;
    }
}

TEST(PrxFormats, EachFormatThatAWriterMakesHasItsPrecisionClass) {
    for (const Format& format : formats) {
        EXPECT_EQ(PrxGetPrecisionClass(format.pixelFormat), format.precisionClass) << format.pixelFormat;
    }
}

TEST(PrxFormats, AnUnknownFormatHasGroupsOfNoBytesAndNothingElse) {
    for (const uint32_t pixelFormat : unknownFormats) {
        EXPECT_EQ(PrxGetGroupSize(pixelFormat).bytesPerGroup, 0U);
        EXPECT_EQ(PrxGetGroupSize(pixelFormat).pixelsPerGroup, 1U);
        EXPECT_EQ(PrxGetAlphaSampleSize(pixelFormat), 0U);
        EXPECT_EQ(PrxGetPrecisionClass(pixelFormat), 0);
        EXPECT_FALSE(PrxIs422Format(pixelFormat));
    }
}

TEST(PrxFormats, FourFormatsOfCallersHave422Chroma) {
    std::vector<uint32_t> found;
    for (const Format& format : formats) {
        if (PrxIs422Format(format.pixelFormat)) found.push_back(format.pixelFormat);
    }
    EXPECT_EQ(found, (std::vector{FourCC("2vuy"), FourCC("yuvs"), FourCC("v210"), FourCC("v216")}));
}

TEST(PrxFormats, TheNamesOfFormatsAreTheirFourCCs) {
    EXPECT_EQ(prxFormat2vuy, FourCC("2vuy"));
    EXPECT_EQ(prxFormatYuvs, FourCC("yuvs"));
    EXPECT_EQ(prxFormatV210, FourCC("v210"));
    EXPECT_EQ(prxFormatV216, FourCC("v216"));
    EXPECT_EQ(prxFormatW216, FourCC("w216"));
    EXPECT_EQ(prxFormatV408, FourCC("v408"));
    EXPECT_EQ(prxFormatR408, FourCC("r408"));
    EXPECT_EQ(prxFormatY408, FourCC("y408"));
    EXPECT_EQ(prxFormatY416, FourCC("y416"));
    EXPECT_EQ(prxFormatR4fl, FourCC("r4fl"));
    EXPECT_EQ(prxFormatArgb, 32U);
    EXPECT_EQ(prxFormatBgra, FourCC("BGRA"));
    EXPECT_EQ(prxFormatB64a, FourCC("b64a"));
    EXPECT_EQ(prxFormatR10k, FourCC("R10k"));
    EXPECT_EQ(prxFormatR210, FourCC("r210"));
    EXPECT_EQ(prxFormatN302, FourCC("n302"));
    EXPECT_EQ(prxFormatL302, FourCC("l302"));
}

TEST(PrxFormats, TheNamesOfCodecsAreTheirFourCCs) {
    EXPECT_EQ(prxCodecApch, FourCC("apch"));
    EXPECT_EQ(prxCodecApcn, FourCC("apcn"));
    EXPECT_EQ(prxCodecApcs, FourCC("apcs"));
    EXPECT_EQ(prxCodecApco, FourCC("apco"));
    EXPECT_EQ(prxCodecAp4h, FourCC("ap4h"));
    EXPECT_EQ(prxCodecAp4x, FourCC("ap4x"));
}

TEST(PrxFormats, TheCodecsFallIntoTwoFamilies) {
    for (const char* codec : {"apch", "apcn", "apcs", "apco"}) {
        EXPECT_TRUE(PrxIs422Codec(FourCC(codec))) << codec;
        EXPECT_FALSE(PrxIs444Codec(FourCC(codec))) << codec;
        EXPECT_TRUE(PrxIsCodec(FourCC(codec))) << codec;
    }
    for (const char* codec : {"ap4h", "ap4x"}) {
        EXPECT_FALSE(PrxIs422Codec(FourCC(codec))) << codec;
        EXPECT_TRUE(PrxIs444Codec(FourCC(codec))) << codec;
        EXPECT_TRUE(PrxIsCodec(FourCC(codec))) << codec;
    }
}

TEST(PrxFormats, OtherValuesAreNoCodec) {
    for (const uint32_t value :
         {uint32_t{0}, FourCC("icpf"), FourCC("aprn"), FourCC("APCH"), FourCC("v216")}) {
        EXPECT_FALSE(PrxIsCodec(value));
        EXPECT_FALSE(PrxIs422Codec(value));
        EXPECT_FALSE(PrxIs444Codec(value));
    }
}
