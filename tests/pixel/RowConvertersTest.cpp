// Every packing both ways against bytes worked out by hand, at a width that the scalar form takes and at one
// that blocks of vectors take, and the rules that hold for single packings.

#include "pixel/RowConverters.h"

#include "PixelTestSupport.h"
#include "framework/CxAVTypes.h"
#include "pixel/PixelConvert.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

using Bytes = std::vector<uint8_t>;

constexpr int32_t wide = 67;
constexpr Pixel sample = {0x1234, 0x5678, 0x9ABC, 0xDEF0};

Bytes Write(const Pixel& pixel, uint32_t fourCC, int32_t width, size_t bytesPerPixel,
            ImageDataKind kind = ImageData_RGBA16) {
    ImagePtr owner = MakeImage(width, 1, kind);
    for (int32_t x = 0; x < width; ++x)
        SetPixelAt(*owner, x, 0, pixel);
    Bytes blob(bytesPerPixel * static_cast<size_t>(width));
    Image* image = owner.get();
    uint8_t* data = blob.data();
    EXPECT_TRUE(PixelConvert::ImageToBlob(image, static_cast<int32_t>(fourCC),
                                          static_cast<int32_t>(blob.size()), data, false));
    return blob;
}

Bytes Repeat(const Bytes& bytes, int32_t count) {
    Bytes repeated;
    for (int32_t i = 0; i < count; ++i)
        repeated.insert(repeated.end(), bytes.begin(), bytes.end());
    return repeated;
}

void ExpectWritten(const Pixel& pixel, uint32_t fourCC, const Bytes& bytes) {
    for (const int32_t width : {1, wide})
        EXPECT_EQ(Write(pixel, fourCC, width, bytes.size()), Repeat(bytes, width)) << "width " << width;
}

void ExpectRead(const Bytes& bytes, uint32_t fourCC, const Pixel& expected,
                ImageDataKind kind = ImageData_RGBA16) {
    for (const int32_t width : {1, wide}) {
        Bytes blob = Repeat(bytes, width);
        ImagePtr owner = MakeImage(width, 1, kind);
        Image* image = owner.get();
        ASSERT_TRUE(
            PixelConvert::BlobToImage(blob.data(), static_cast<uint32_t>(blob.size()), fourCC, image));
        for (int32_t x = 0; x < width; ++x)
            ASSERT_EQ(GetPixelAt(*image, x, 0), expected) << "x " << x;
    }
}

/// A r210 word with the same 10-bit value in R, G and B.
Bytes TenBitGray(uint32_t value) {
    const uint32_t word = value << 20 | value << 10 | value;
    return {static_cast<uint8_t>(word >> 24), static_cast<uint8_t>(word >> 16),
            static_cast<uint8_t>(word >> 8), static_cast<uint8_t>(word)};
}

Pixel Gray(int32_t value) { return {value, value, value, 65535}; }

// ---------------------------------------------------------------------------------------------------------
// The 13 writers

TEST(RowConverters, Writes24AsRedGreenBlueBytes) { ExpectWritten(sample, 24, {0x12, 0x56, 0x9A}); }

TEST(RowConverters, Writes24BGAsBlueGreenRedBytes) {
    ExpectWritten(sample, FourCC("24BG"), {0x9A, 0x56, 0x12});
}

TEST(RowConverters, Writes32AsAlphaRedGreenBlueBytes) { ExpectWritten(sample, 32, {0xDE, 0x12, 0x56, 0x9A}); }

TEST(RowConverters, WritesABGRAsAlphaBlueGreenRedBytesInBothSpellings) {
    ExpectWritten(sample, FourCC("ABGR"), {0xDE, 0x9A, 0x56, 0x12});
    ExpectWritten(sample, FourCC("abgr"), {0xDE, 0x9A, 0x56, 0x12});
}

TEST(RowConverters, WritesBGRAAsBlueGreenRedAlphaBytes) {
    ExpectWritten(sample, FourCC("BGRA"), {0x9A, 0x56, 0x12, 0xDE});
}

TEST(RowConverters, WritesRGBAAsRedGreenBlueAlphaBytesInBothSpellings) {
    ExpectWritten(sample, FourCC("RGBA"), {0x12, 0x56, 0x9A, 0xDE});
    ExpectWritten(sample, FourCC("rgba"), {0x12, 0x56, 0x9A, 0xDE});
}

TEST(RowConverters, WritesB48rAsBigEndianRedGreenBlue) {
    ExpectWritten(sample, FourCC("b48r"), {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC});
}

TEST(RowConverters, WritesL48rAsLittleEndianRedGreenBlue) {
    ExpectWritten(sample, FourCC("l48r"), {0x34, 0x12, 0x78, 0x56, 0xBC, 0x9A});
}

TEST(RowConverters, WritesB64aAsBigEndianAlphaRedGreenBlue) {
    ExpectWritten(sample, FourCC("b64a"), {0xDE, 0xF0, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC});
}

TEST(RowConverters, WritesL64rAsLittleEndianAlphaRedGreenBlue) {
    ExpectWritten(sample, FourCC("l64r"), {0xF0, 0xDE, 0x34, 0x12, 0x78, 0x56, 0xBC, 0x9A});
}

TEST(RowConverters, WritesA48rInVideoRangeWithAlphaAsItIs) {
    // 4660, 22136 and 39612 times 0.8554818 plus 4096: 8082.5, 23032.9, 37983.3.
    ExpectWritten(sample, FourCC("a48r"), {0xF0, 0xDE, 0x92, 0x1F, 0xF8, 0x59, 0x5F, 0x94});
}

TEST(RowConverters, WritesR214AsTheUpper14Bits) {
    ExpectWritten(sample, FourCC("r214"), {0x8D, 0x04, 0x9E, 0x15, 0xAF, 0x26});
}

TEST(RowConverters, WritesR210AsOneBigEndianWordOfTenBitChannels) {
    // 126, 359 and 593.
    ExpectWritten(sample, FourCC("r210"), {0x07, 0xE5, 0x9E, 0x51});
}

TEST(RowConverters, HasNoWriterForRp16) { EXPECT_EQ(ScalarRowWriter(RowPacking::Rp16), nullptr); }

// ---------------------------------------------------------------------------------------------------------
// The 14 readers

TEST(RowConverters, Reads24AsRedGreenBlueTimes257AndOpaque) {
    ExpectRead({0x12, 0x56, 0x9A}, 24, {0x1212, 0x5656, 0x9A9A, 65535});
}

TEST(RowConverters, Reads24BGAsBlueGreenRedTimes257AndOpaque) {
    ExpectRead({0x9A, 0x56, 0x12}, FourCC("24BG"), {0x1212, 0x5656, 0x9A9A, 65535});
}

TEST(RowConverters, Reads32AsAlphaRedGreenBlueTimes257) {
    ExpectRead({0xDE, 0x12, 0x56, 0x9A}, 32, {0x1212, 0x5656, 0x9A9A, 0xDEDE});
}

TEST(RowConverters, ReadsABGRAsAlphaBlueGreenRedTimes257InBothSpellings) {
    ExpectRead({0xDE, 0x9A, 0x56, 0x12}, FourCC("ABGR"), {0x1212, 0x5656, 0x9A9A, 0xDEDE});
    ExpectRead({0xDE, 0x9A, 0x56, 0x12}, FourCC("abgr"), {0x1212, 0x5656, 0x9A9A, 0xDEDE});
}

TEST(RowConverters, ReadsBGRAAsBlueGreenRedAlphaTimes257) {
    ExpectRead({0x9A, 0x56, 0x12, 0xDE}, FourCC("BGRA"), {0x1212, 0x5656, 0x9A9A, 0xDEDE});
}

TEST(RowConverters, ReadsRGBAAsRedGreenBlueAlphaTimes257InBothSpellings) {
    ExpectRead({0x12, 0x56, 0x9A, 0xDE}, FourCC("RGBA"), {0x1212, 0x5656, 0x9A9A, 0xDEDE});
    ExpectRead({0x12, 0x56, 0x9A, 0xDE}, FourCC("rgba"), {0x1212, 0x5656, 0x9A9A, 0xDEDE});
}

TEST(RowConverters, ReadsB48rAsBigEndianRedGreenBlueAndOpaque) {
    ExpectRead({0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC}, FourCC("b48r"), {0x1234, 0x5678, 0x9ABC, 65535});
}

TEST(RowConverters, ReadsL48rAsLittleEndianRedGreenBlueAndOpaque) {
    ExpectRead({0x34, 0x12, 0x78, 0x56, 0xBC, 0x9A}, FourCC("l48r"), {0x1234, 0x5678, 0x9ABC, 65535});
}

TEST(RowConverters, ReadsB64aAsBigEndianAlphaRedGreenBlue) {
    ExpectRead({0xDE, 0xF0, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC}, FourCC("b64a"), sample);
}

TEST(RowConverters, ReadsL64rAsLittleEndianAlphaRedGreenBlue) {
    ExpectRead({0xF0, 0xDE, 0x34, 0x12, 0x78, 0x56, 0xBC, 0x9A}, FourCC("l64r"), sample);
}

TEST(RowConverters, ReadsA48rFromVideoRangeWithAlphaAsItIs) {
    // 3986, 18936 and 33887 times 1.168932: 4659.4, 22134.9, 39611.6.
    ExpectRead({0xF0, 0xDE, 0x92, 0x1F, 0xF8, 0x59, 0x5F, 0x94}, FourCC("a48r"),
               {4659, 22134, 39611, 0xDEF0});
}

TEST(RowConverters, ReadsR214TimesFourAndOpaque) {
    ExpectRead({0x8D, 0x04, 0x9E, 0x15, 0xAF, 0x26}, FourCC("r214"), {0x1234, 0x5678, 0x9ABC, 65535});
}

TEST(RowConverters, ReadsR210FromTenBitVideoRangeAndOpaque) {
    // 62, 295 and 529 times 65535 / 876: 4638.3, 22069.4, 39575.4.
    ExpectRead({0x07, 0xE5, 0x9E, 0x51}, FourCC("r210"), {4638, 22069, 39575, 65535});
}

TEST(RowConverters, ReadsRp16FromThreePlanesOfNativeWordsAndOpaque) {
    for (const int32_t width : {1, wide}) {
        std::vector<uint16_t> planes;
        for (const uint16_t word : {0x1234, 0x5678, 0x9ABC})
            planes.insert(planes.end(), width, word);
        ImagePtr owner = MakeImage(width, 1);
        Image* image = owner.get();
        ASSERT_TRUE(PixelConvert::BlobToImage(reinterpret_cast<uint8_t*>(planes.data()), 2u * width,
                                              FourCC("rp16"), image));
        for (int32_t x = 0; x < width; ++x)
            ASSERT_EQ(GetPixelAt(*image, x, 0), (Pixel{0x1234, 0x5678, 0x9ABC, 65535}));
    }
}

TEST(RowConverters, FindsTheRowsOfEachRp16PlaneByRowBytesTimesHeight) {
    constexpr uint32_t rowBytes = 10;
    Bytes planes(3 * 2 * rowBytes);
    const auto put = [&](int plane, int row, uint16_t word) {
        std::memcpy(&planes[plane * 2 * rowBytes + row * rowBytes], &word, 2);
    };
    for (int plane = 0; plane < 3; ++plane)
        for (int row = 0; row < 2; ++row)
            put(plane, row, static_cast<uint16_t>(100 * plane + row + 1));
    ImagePtr owner = MakeImage(1, 2);
    Image* image = owner.get();
    ASSERT_TRUE(PixelConvert::BlobToImage(planes.data(), rowBytes, FourCC("rp16"), image));
    EXPECT_EQ(GetPixelAt(*image, 0, 1), (Pixel{1, 101, 201, 65535}));
    EXPECT_EQ(GetPixelAt(*image, 0, 0), (Pixel{2, 102, 202, 65535}));
}

// ---------------------------------------------------------------------------------------------------------
// Rules of single packings

TEST(RowConverters, ShiftsTo8BitsWithoutRounding) {
    ExpectWritten({0x00FF, 0x01FF, 0xFEFF, 0}, 24, {0x00, 0x01, 0xFE});
}

TEST(RowConverters, BgraWrites0x12FFAs0x12WithoutRounding) {
    ExpectWritten({0x12FF, 0x12FF, 0x12FF, 0x12FF}, FourCC("BGRA"), {0x12, 0x12, 0x12, 0x12});
}

void ConvertNoPixels(RowPacking packing, ImageDataKind kind) {
    const ImagePtr image = MakeImage(0, 1, kind);
    Bytes blob(32, 0xA5);
    RowContext context = {rowMarkerWithAlpha, 32, blob.data()};
    if (IsWritable(packing)) ScalarRowWriter(packing)(image.get(), &context, 0);
    ScalarRowReader(packing)(image.get(), &context, 0);
    EXPECT_EQ(blob, Bytes(32, 0xA5));
}

TEST(RowConverters, WidthOf0ConvertsNothingInAnyPackingAndKindOfImage) {
    for (size_t i = 0; i < rowPackingCount; ++i)
        for (const auto kind : {ImageData_RGBA8, ImageData_RGBA16, ImageData_RGBAHalf, ImageData_RGBAFloat})
            ConvertNoPixels(static_cast<RowPacking>(i), kind);
}

TEST(RowConverters, A48rWritesPureWhiteAs60160AndKeepsOpaqueAlpha) {
    ExpectWritten(Gray(65535), FourCC("a48r"), {0xFF, 0xFF, 0x00, 0xEB, 0x00, 0xEB, 0x00, 0xEB});
}

TEST(RowConverters, A48rWritesBlackAs4096) {
    ExpectWritten(Gray(0), FourCC("a48r"), {0xFF, 0xFF, 0x00, 0x10, 0x00, 0x10, 0x00, 0x10});
}

TEST(RowConverters, A48rReadsWordsOutsideVideoRangeAsBlackAndWhite) {
    ExpectRead({0x00, 0x00, 0xFF, 0x0F, 0x01, 0xEB, 0xFF, 0xFF}, FourCC("a48r"), {0, 65535, 65535, 0});
}

TEST(RowConverters, R210WritesWhiteAs940InTheIntegerPath) {
    ExpectWritten(Gray(65535), FourCC("r210"), TenBitGray(940));
}

TEST(RowConverters, R210WritesBlackAs64InTheIntegerPath) {
    ExpectWritten(Gray(0), FourCC("r210"), TenBitGray(64));
}

TEST(RowConverters, R210ReadsTheValue940As65535InTheIntegerPath) {
    ExpectRead(TenBitGray(940), FourCC("r210"), Gray(65535));
}

TEST(RowConverters, R210ReadsTheValue1023As65535ByTheClamp) {
    ExpectRead(TenBitGray(1023), FourCC("r210"), Gray(65535));
}

TEST(RowConverters, R210ReadsTheValue0As0ByTheClamp) { ExpectRead(TenBitGray(0), FourCC("r210"), Gray(0)); }

TEST(RowConverters, R210IgnoresTheTwoUpperBitsOfAWord) {
    ExpectRead({0xC7, 0xE5, 0x9E, 0x51}, FourCC("r210"), {4638, 22069, 39575, 65535});
}

/// What the float path writes for a gray, as the 10-bit value of R; G and B must have the same.
uint32_t FloatGrayAsTenBits(float gray, ImageDataKind kind) {
    ImagePtr owner = MakeImage(1, 1, kind);
    SetPixelAt(*owner, 0, 0, PixelFloat{gray, gray, gray, 1.0f});
    Bytes blob(4);
    Image* image = owner.get();
    uint8_t* data = blob.data();
    EXPECT_TRUE(PixelConvert::ImageToBlob(image, static_cast<int32_t>(FourCC("r210")), 4, data, false));
    const uint32_t value = blob[0] << 4 | blob[1] >> 4;
    EXPECT_EQ(blob, TenBitGray(value));
    return value;
}

TEST(RowConverters, R210WritesTwiceWhiteAs1023InTheFloatPath) {
    EXPECT_EQ(FloatGrayAsTenBits(2.0f, ImageData_RGBAFloat), 1023u);
    EXPECT_EQ(FloatGrayAsTenBits(2.0f, ImageData_RGBAHalf), 1023u);
}

TEST(RowConverters, R210WritesMinusOneAs0InTheFloatPath) {
    EXPECT_EQ(FloatGrayAsTenBits(-1.0f, ImageData_RGBAFloat), 0u);
    EXPECT_EQ(FloatGrayAsTenBits(-1.0f, ImageData_RGBAHalf), 0u);
}

TEST(RowConverters, R210RoundsHalfUpAndTruncatesInTheFloatPath) {
    EXPECT_EQ(FloatGrayAsTenBits(0.0f, ImageData_RGBAFloat), 64u);
    EXPECT_EQ(FloatGrayAsTenBits(1.0f, ImageData_RGBAFloat), 940u);
    EXPECT_EQ(FloatGrayAsTenBits(0.5f, ImageData_RGBAFloat), 502u);
    EXPECT_EQ(FloatGrayAsTenBits(10.6f / 876.0f, ImageData_RGBAFloat), 75u);
    // -10.6 + 0.5 is truncated toward zero, to -10.
    EXPECT_EQ(FloatGrayAsTenBits(-10.6f / 876.0f, ImageData_RGBAFloat), 54u);
}

TEST(RowConverters, R210WritesInfinitiesAndNotANumberWithinTenBits) {
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(FloatGrayAsTenBits(infinity, ImageData_RGBAFloat), 1023u);
    EXPECT_EQ(FloatGrayAsTenBits(-infinity, ImageData_RGBAFloat), 0u);
    EXPECT_EQ(FloatGrayAsTenBits(std::nanf(""), ImageData_RGBAFloat), 0u);
}

TEST(RowConverters, R210ReadsOutOfRangeValuesUnclampedInTheFloatPath) {
    for (const auto& [value, expected] :
         {std::pair{0u, -64 / 876.0f}, {64u, 0.0f}, {940u, 1.0f}, {1023u, 959 / 876.0f}}) {
        Bytes blob = TenBitGray(value);
        ImagePtr owner = MakeImage(1, 1, ImageData_RGBAFloat);
        Image* image = owner.get();
        ASSERT_TRUE(PixelConvert::BlobToImage(blob.data(), 4, FourCC("r210"), image));
        PixelFloat pixel;
        image->GetPixelFloat(pixel, image->RowTable[0], nullptr, image);
        EXPECT_EQ(pixel.R, expected);
        EXPECT_EQ(pixel.G, expected);
        EXPECT_EQ(pixel.B, expected);
        EXPECT_EQ(pixel.A, 1.0f);
    }
}

TEST(RowConverters, R210LeavesTheBytesBehindTheLastPixelAlone) {
    for (const int32_t width : {1, 63, wide}) {
        ImagePtr owner = MakeImage(width, 1);
        Image* image = owner.get();
        const int32_t rowBytes = PixelConvert::CalcRowBytes(FourCC("r210"), static_cast<uint32_t>(width));
        Bytes blob(static_cast<size_t>(rowBytes), 0xA5);
        uint8_t* data = blob.data();
        ASSERT_TRUE(
            PixelConvert::ImageToBlob(image, static_cast<int32_t>(FourCC("r210")), rowBytes, data, false));
        EXPECT_EQ(Bytes(blob.begin() + 4 * width, blob.end()), Bytes(blob.size() - 4 * width, 0xA5));
    }
}

// ---------------------------------------------------------------------------------------------------------
// Signedness, as an accessor sees it

Pixel seen;

Pixel ReadThroughAccessor(Bytes blob, uint32_t rowBytes, uint32_t fourCC) {
    ImagePtr owner = MakeImage(1, 1);
    owner->SetPixel = [](const Pixel& pixel, uint8_t*, uint8_t*, Image*) { seen = pixel; };
    Image* image = owner.get();
    seen = {};
    EXPECT_TRUE(PixelConvert::BlobToImage(blob.data(), rowBytes, fourCC, image));
    return seen;
}

TEST(RowConverters, L48rWordsReachTheAccessorSigned) {
    EXPECT_EQ(ReadThroughAccessor({0x00, 0x80, 0xFF, 0xFF, 0xFF, 0x7F}, 6, FourCC("l48r")),
              (Pixel{-32768, -1, 32767, 65535}));
}

TEST(RowConverters, R214WordsReachTheAccessorSignedAndTimesFour) {
    EXPECT_EQ(ReadThroughAccessor({0x00, 0x80, 0xFF, 0xFF, 0xFF, 0x7F}, 6, FourCC("r214")),
              (Pixel{-131072, -4, 131068, 65535}));
}

TEST(RowConverters, Rp16WordsReachTheAccessorSigned) {
    Bytes planes(6);
    const int16_t words[] = {-32768, -1, 32767};
    std::memcpy(planes.data(), words, 6);
    EXPECT_EQ(ReadThroughAccessor(planes, 2, FourCC("rp16")), (Pixel{-32768, -1, 32767, 65535}));
}

TEST(RowConverters, WordsOfTheOtherPackingsReachTheAccessorUnsigned) {
    EXPECT_EQ(ReadThroughAccessor({0x80, 0x00, 0xFF, 0xFF, 0x7F, 0xFF}, 6, FourCC("b48r")),
              (Pixel{32768, 65535, 32767, 65535}));
    EXPECT_EQ(ReadThroughAccessor({0xFF, 0xFF, 0x80, 0x00, 0xFF, 0xFF, 0x7F, 0xFF}, 8, FourCC("b64a")),
              (Pixel{32768, 65535, 32767, 65535}));
    EXPECT_EQ(ReadThroughAccessor({0xFF, 0xFF, 0x00, 0x80, 0xFF, 0xFF, 0xFF, 0x7F}, 8, FourCC("l64r")),
              (Pixel{32768, 65535, 32767, 65535}));
}

TEST(RowConverters, ASixteenBitImageGetsSignedWordsBack) {
    ExpectRead({0x00, 0x80, 0xFF, 0xFF, 0xFF, 0x7F}, FourCC("l48r"), {0x8000, 0xFFFF, 0x7FFF, 65535});
    ExpectRead({0x00, 0x80, 0xFF, 0xFF, 0xFF, 0x7F}, FourCC("r214"), {0, 0xFFFC, 0xFFFC, 65535});
}

TEST(RowConverters, BytesComeBackFromAnEightBitImageUnchanged) {
    for (int32_t value = 0; value < 256; ++value) {
        const auto byte = static_cast<uint8_t>(value);
        ExpectRead({byte, byte, byte, byte}, 32, {byte * 257, byte * 257, byte * 257, byte * 257},
                   ImageData_RGBA8);
    }
}

} // namespace
