// Each code with its row size, its row size at the least, and who converts it in either direction.

#include "pixel/PixelFormatTable.h"

#include "PixelTestSupport.h"
#include "RecordedColorConvert.h"
#include "pixel/PixelConvert.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr int32_t none = -1; ///< the operation refuses the code
constexpr int32_t rows = -2; ///< a row converter; any other number is a layout of the host's

/// A code as written in docs/pixel-formats.md, at a width of 50 pixels.
struct Line {
    uint32_t fourCC;
    int32_t rowBytes;
    uint32_t least;
    int32_t read;
    int32_t write;
};

constexpr int32_t width = 50;

constexpr Line lines[] = {
    {24, 150, 150, rows, rows},
    {32, 200, 200, rows, rows},
    {FourCC("24BG"), 0, 150, rows, rows},
    {FourCC("2vuy"), 100, 100, 0, 0},
    {FourCC("2Vuy"), 100, 0, none, none},
    {FourCC("ABGR"), 0, 200, rows, rows},
    {FourCC("BGRA"), 200, 200, rows, rows},
    {FourCC("RGBA"), 0, 200, rows, rows},
    {FourCC("a48r"), 400, 400, rows, rows},
    {FourCC("abgr"), 0, 200, rows, rows},
    {FourCC("b48r"), 300, 300, rows, rows},
    {FourCC("b64a"), 400, 400, rows, rows},
    {FourCC("l48r"), 300, 300, rows, rows},
    {FourCC("l64r"), 400, 400, rows, rows},
    {FourCC("nv12"), 0, 50, 5376, none},
    {FourCC("r210"), 256, 200, rows, rows},
    {FourCC("r214"), 0, 300, rows, rows},
    {FourCC("r408"), 200, 200, 3584, 3584},
    {FourCC("r4fl"), 0, 800, 3840, 3840},
    {FourCC("raw "), 150, 0, none, none},
    {FourCC("rgb "), 150, 0, none, none},
    {FourCC("rgba"), 0, 200, rows, rows},
    {FourCC("rp16"), 100, 100, rows, none},
    {FourCC("uyvy"), 100, 100, 1280, 1280},
    {FourCC("v210"), 256, 144, 2816, 2816},
    {FourCC("v216"), 200, 200, 5632, 5632},
    {FourCC("v408"), 200, 200, 3328, 3328},
    {FourCC("v410"), 0, 200, 3072, 3072},
    {FourCC("y416"), 400, 400, none, 7424},
    {FourCC("yv16"), 300, 300, 6400, 6400},
    {FourCC("yv8u"), 150, 150, 6656, 6656},
    {FourCC("zzzz"), 0, 0, none, none},
    {0, 0, 0, none, none},
};

std::string Name(const Line& line) { return "code " + std::to_string(line.fourCC); }

/// Who converted: a layout number if the host was called, else rows or none by the result.
int32_t Route(bool result) {
    const auto call = RecordedColorConvert::OnlyCall();
    RecordedColorConvert::Forget();
    if (!call) return result ? rows : none;
    EXPECT_TRUE(result);
    for (const TagItem& item : call->tags)
        if (item.tag == ColorTag_Layout) return static_cast<int32_t>(item.value);
    return none;
}

int32_t ReadRoute(const Line& line, uint32_t rowBytes) {
    ImagePtr owner = MakeImage(width, 1);
    Image* image = owner.get();
    std::vector<uint8_t> blob(3 * 800);
    RecordedColorConvert::Forget();
    return Route(PixelConvert::BlobToImage(blob.data(), rowBytes, line.fourCC, image));
}

int32_t WriteRoute(const Line& line, int32_t rowBytes) {
    ImagePtr owner = MakeImage(width, 1);
    Image* image = owner.get();
    std::vector<uint8_t> blob(800);
    uint8_t* data = blob.data();
    RecordedColorConvert::Forget();
    return Route(PixelConvert::ImageToBlob(image, static_cast<int32_t>(line.fourCC), rowBytes, data, false));
}

TEST(PixelFormatTable, GivesEachCodeItsRowSize) {
    for (const Line& line : lines)
        EXPECT_EQ(PixelConvert::CalcRowBytes(line.fourCC, width), line.rowBytes) << Name(line);
}

TEST(PixelFormatTable, ReadsEachCodeTheWayItIsSaid) {
    for (const Line& line : lines)
        EXPECT_EQ(ReadRoute(line, 800), line.read) << Name(line);
}

TEST(PixelFormatTable, WritesEachCodeTheWayItIsSaid) {
    for (const Line& line : lines)
        EXPECT_EQ(WriteRoute(line, 800), line.write) << Name(line);
}

TEST(PixelFormatTable, ReadsRowsThatJustHoldThePixelsAndRefusesShorterOnes) {
    for (const Line& line : lines) {
        if (line.read == none) continue;
        EXPECT_EQ(ReadRoute(line, line.least), line.read) << Name(line);
        EXPECT_EQ(ReadRoute(line, line.least - 1), none) << Name(line);
    }
}

TEST(PixelFormatTable, WritesRowsThatJustHoldThePixelsAndRefusesShorterOnes) {
    for (const Line& line : lines) {
        if (line.write == none) continue;
        const auto least = static_cast<int32_t>(line.least);
        EXPECT_EQ(WriteRoute(line, least), line.write) << Name(line);
        EXPECT_EQ(WriteRoute(line, least - 1), none) << Name(line);
    }
}

TEST(PixelFormatTable, Nv12RowsHoldWholePairsOfChroma) {
    EXPECT_EQ(FindPixelFormat(FourCC("nv12"))->least.Bytes(51), 52u);
}

uint64_t Read(const char (&code)[5], int32_t imageWidth, int32_t height, int32_t rowBytes) {
    return BytesRead(*FindPixelFormat(FourCC(code)), imageWidth, height, rowBytes);
}

TEST(PixelFormatTable, AConversionReadsWholeRowsAndOfTheLastRowItsPixels) {
    for (const Line& line : lines) {
        if (line.read == none || line.fourCC == FourCC("nv12") || line.fourCC == FourCC("rp16")) continue;
        EXPECT_EQ(BytesRead(*FindPixelFormat(line.fourCC), width, 4, 900), 3 * 900u + line.least)
            << Name(line);
    }
}

TEST(PixelFormatTable, AConversionReadsEveryPlane) {
    EXPECT_EQ(Read("rp16", 50, 4, 104), 11 * 104u + 100);
    EXPECT_EQ(Read("nv12", 50, 4, 64), 5 * 64u + 50);
    EXPECT_EQ(Read("nv12", 49, 5, 64), 7 * 64u + 50);
}

TEST(PixelFormatTable, AConversionReadsThePairOfItsLastPixelWhereTheRowHasRoomForIt) {
    EXPECT_EQ(Read("2vuy", 5, 2, 10), 10u + 10);
    EXPECT_EQ(Read("2vuy", 5, 2, 11), 11u + 10);
    EXPECT_EQ(Read("2vuy", 5, 2, 12), 12u + 12);
    EXPECT_EQ(Read("yv16", 5, 2, 40), 40u + 36);
    EXPECT_EQ(Read("v408", 5, 2, 40), 40u + 20);
}

TEST(PixelFormatTable, AConversionOfNoPixelsReadsNothing) {
    EXPECT_EQ(Read("b64a", 0, 4, 800), 0u);
    EXPECT_EQ(Read("b64a", 4, 0, 800), 0u);
    EXPECT_EQ(Read("b64a", -1, 4, 800), 0u);
    EXPECT_EQ(Read("b64a", 4, -1, 800), 0u);
}

TEST(PixelFormatTable, TheLargestImageDoesNotWrapTheBytesThatAreRead) {
    constexpr int32_t most = 0x7fffffff;
    EXPECT_EQ(Read("rp16", most, most, most), (3ull * most - 1) * most + 2ull * most);
}

TEST(PixelFormatTable, HoldsNoOtherCodes) {
    constexpr size_t unknown = 2;
    EXPECT_EQ(pixel_formats::all.size(), std::size(lines) - unknown);
}

} // namespace
