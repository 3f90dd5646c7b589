#include "pixel/PixelConvert.h"

#include "PixelConvertTestSupport.h"
#include "RecordedColorConvert.h"
#include "framework/CxAVTypes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstring>

namespace {

using Bytes = std::vector<uint8_t>;

// ---------------------------------------------------------------------------------------------------------
// CalcRowBytes

TEST(PixelConvert, CalcRowBytesOfR210CountsGroupsOf64Pixels) {
    EXPECT_EQ(PixelConvert::CalcRowBytes(FourCC("r210"), 64), 256);
    EXPECT_EQ(PixelConvert::CalcRowBytes(FourCC("r210"), 65), 512);
    EXPECT_EQ(PixelConvert::CalcRowBytes(FourCC("r210"), 0), 0);
}

TEST(PixelConvert, CalcRowBytesOfV210CountsGroupsOf48Pixels) {
    EXPECT_EQ(PixelConvert::CalcRowBytes(FourCC("v210"), 48), 128);
    EXPECT_EQ(PixelConvert::CalcRowBytes(FourCC("v210"), 49), 256);
}

TEST(PixelConvert, CalcRowBytesWrapsAt32Bits) {
    EXPECT_EQ(PixelConvert::CalcRowBytes(24, 0xFFFFFFFFu), -3);
    EXPECT_EQ(PixelConvert::CalcRowBytes(FourCC("b64a"), 0x20000001u), 8);
    EXPECT_EQ(PixelConvert::CalcRowBytes(FourCC("BGRA"), 0x30000000u), -0x40000000);
    EXPECT_EQ(PixelConvert::CalcRowBytes(FourCC("r210"), 0xFFFFFFFFu), 0);
}

// ---------------------------------------------------------------------------------------------------------
// The buffer of ImageToBlob

TEST(PixelConvert, ImageToBlobWithAnUnknownCodeLeavesAFreshBufferToTheCaller) {
    const ImagePtr image = MakeImage(4, 3);
    uint8_t* blob = nullptr;
    EXPECT_FALSE(Write(image.get(), FourCC("zzzz"), 32, blob));
    ASSERT_NE(blob, nullptr);
    const BlobPtr owner(blob);
    std::memset(blob, 1, 3 * 32);
}

TEST(PixelConvert, ImageToBlobUsesAGivenBlobWithoutLookingAtItsSize) {
    const ImagePtr image = MakeImage(2, 2);
    Bytes blob(2 * 8);
    uint8_t* data = blob.data();
    SetPixelAt(*image, 1, 0, Pixel{0x1200, 0x3400, 0x5600, 0x7800});
    EXPECT_TRUE(Write(image.get(), FourCC("RGBA"), 8, data));
    EXPECT_EQ(data, blob.data());
    EXPECT_EQ(blob, (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x12, 0x34, 0x56, 0x78}));
}

TEST(PixelConvert, ImageToBlobAllocatesHeightTimesRowBytesAt32Bytes) {
    const ImagePtr image = MakeImage(4, 3);
    SetPixelAt(*image, 3, 0, Pixel{0, 0, 0, 0xFF00});
    uint8_t* blob = nullptr;
    ASSERT_TRUE(Write(image.get(), FourCC("RGBA"), 16, blob));
    const BlobPtr owner(blob);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(blob) % 32, 0u);
    EXPECT_EQ(blob[3 * 16 - 1], 0xFF);
}

TEST(PixelConvert, ImageToBlobClearsWhatTheConverterDoesNotWriteInAFreshBuffer) {
    const ImagePtr image = MakeImage(65, 2);
    constexpr int32_t rowBytes = 512;
    SoilMemory(2 * rowBytes);
    uint8_t* blob = nullptr;
    ASSERT_TRUE(Write(image.get(), FourCC("r210"), rowBytes, blob));
    const BlobPtr owner(blob);
    for (const int row : {0, 1})
        EXPECT_EQ(Bytes(blob + row * rowBytes + 4 * 65, blob + (row + 1) * rowBytes),
                  Bytes(rowBytes - 4 * 65, 0));
}

TEST(PixelConvert, ImageToBlobGivesTheHostAClearBuffer) {
    const ImagePtr image = MakeImage(4, 4);
    SoilMemory(4 * 64);
    uint8_t* blob = nullptr;
    EXPECT_TRUE(Write(image.get(), FourCC("v210"), 64, blob));
    const BlobPtr owner(blob);
    EXPECT_EQ(Bytes(blob, blob + 4 * 64), Bytes(4 * 64, 0));
}

TEST(PixelConvert, ImageToBlobLeavesTheEndsOfRowsInAGivenBlobAlone) {
    const ImagePtr image = MakeImage(3, 2);
    Bytes blob(2 * 16, 0xA5);
    uint8_t* data = blob.data();
    ASSERT_TRUE(Write(image.get(), FourCC("RGBA"), 16, data));
    EXPECT_EQ(Bytes(blob.begin() + 12, blob.begin() + 16), Bytes(4, 0xA5));
    EXPECT_EQ(Bytes(blob.begin() + 28, blob.end()), Bytes(4, 0xA5));
}

TEST(PixelConvert, ImageToBlobFailsOnBothPathsWhereNoBufferCanBeAllocated) {
    const ImagePtr image = MakeImage(4, 2);
    RecordedColorConvert::Forget();
    for (const uint32_t fourCC : {uint32_t{24}, FourCC("2vuy")}) {
        image->Height = INT_MAX;
        uint8_t* blob = nullptr;
        EXPECT_FALSE(Write(image.get(), fourCC, INT_MAX, blob));
        EXPECT_EQ(blob, nullptr);
        image->Height = 2;
        const BlobPtr owner(blob);
    }
    EXPECT_FALSE(RecordedColorConvert::OnlyCall().has_value());
}

TEST(PixelConvert, ImageToBlobMakesNoBufferForANegativeRowSize) {
    const ImagePtr image = MakeImage(4, 2);
    uint8_t* blob = nullptr;
    EXPECT_FALSE(Write(image.get(), 24, -12, blob));
    EXPECT_EQ(blob, nullptr);
}

// ---------------------------------------------------------------------------------------------------------
// Codes of one direction

TEST(PixelConvert, BlobToImageRefusesY416) {
    const ImagePtr image = MakeImage(4, 1);
    Bytes blob(32);
    EXPECT_FALSE(Read(blob, FourCC("y416"), 32, image.get()));
}

TEST(PixelConvert, ImageToBlobRefusesNv12) {
    const ImagePtr image = MakeImage(4, 1);
    Bytes blob(32);
    uint8_t* data = blob.data();
    EXPECT_FALSE(Write(image.get(), FourCC("nv12"), 32, data));
}

TEST(PixelConvert, BlobToImageRefusesAnUnknownCode) {
    const ImagePtr image = MakeImage(4, 1);
    Bytes blob(32);
    EXPECT_FALSE(Read(blob, FourCC("zzzz"), 32, image.get()));
}

// ---------------------------------------------------------------------------------------------------------
// Rows

TEST(PixelConvert, TheTopRowOfABlobIsTheLastRowOfTheImage) {
    constexpr int32_t height = 5;
    for (const int32_t width : {1, 40}) {
        const ImagePtr image = MakeImage(width, height);
        Bytes blob;
        for (int row = 0; row < height; ++row)
            blob.insert(blob.end(), static_cast<size_t>(4 * width), row + 1);
        ASSERT_TRUE(Read(blob, FourCC("RGBA"), static_cast<uint32_t>(4 * width), image.get()));
        for (int32_t row = 0; row < height; ++row) {
            const int32_t value = (height - row) * 257;
            EXPECT_EQ(GetPixelAt(*image, width - 1, row), (Pixel{value, value, value, value}));
        }
        Bytes written(blob.size());
        uint8_t* data = written.data();
        ASSERT_TRUE(Write(image.get(), FourCC("RGBA"), 4 * width, data));
        EXPECT_EQ(written, blob);
    }
}

std::atomic<int> rowVisits[300];

TEST(PixelConvert, EachRowIsConvertedOnceByTheHostsThreads) {
    constexpr int32_t height = 300;
    const ImagePtr image = MakeImage(1, height);
    image->PixelStride = 0;
    for (std::atomic<int>& visits : rowVisits)
        visits = 0;
    for (int32_t row = 0; row < height; ++row)
        std::memcpy(image->RowTable[row], &row, sizeof row);
    image->GetPixel = [](Pixel& pixel, const uint8_t* data, const uint8_t*, Image*) {
        int32_t row;
        std::memcpy(&row, data, sizeof row);
        ++rowVisits[row];
        pixel = {row, 0, 0, 0};
    };
    Bytes blob(height * 6);
    uint8_t* data = blob.data();
    ASSERT_TRUE(Write(image.get(), FourCC("b48r"), 6, data));
    for (int32_t row = 0; row < height; ++row) {
        EXPECT_EQ(rowVisits[row], 1);
        EXPECT_EQ(blob[row * 6] * 256 + blob[row * 6 + 1], height - 1 - row);
    }
}

TEST(PixelConvert, FindsRowsBeyondTwoGigabytes) {
    constexpr int32_t rowBytes = 0x40000000;
    constexpr size_t size = size_t{3} * rowBytes;
    void* mapped =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(mapped, MAP_FAILED);
    uint8_t* blob = static_cast<uint8_t*>(mapped);
    const ImagePtr image = MakeImage(1, 3);
    SetPixelAt(*image, 0, 0, Pixel{0x1200, 0x3400, 0x5600, 0});
    EXPECT_TRUE(Write(image.get(), 24, rowBytes, blob));
    EXPECT_EQ(Bytes(blob + size_t{2} * rowBytes, blob + size_t{2} * rowBytes + 3), (Bytes{0x12, 0x34, 0x56}));

    SetPixelAt(*image, 0, 0, Pixel{});
    Image* target = image.get();
    EXPECT_TRUE(PixelConvert::BlobToImage(blob, rowBytes, 24, target));
    EXPECT_EQ(GetPixelAt(*image, 0, 0), (Pixel{0x1212, 0x3434, 0x5656, 65535}));
    munmap(mapped, size);
}

TEST(PixelConvert, EachLosslessPackingComesBackFromA16BitImageAsItWas) {
    std::mt19937 random = MakeRandom();
    for (const uint32_t fourCC :
         {uint32_t{24}, uint32_t{32}, FourCC("24BG"), FourCC("ABGR"), FourCC("BGRA"), FourCC("RGBA"),
          FourCC("abgr"), FourCC("b48r"), FourCC("b64a"), FourCC("l48r"), FourCC("l64r"), FourCC("rgba")}) {
        Bytes blob(7 * 8 * 9);
        std::generate(blob.begin(), blob.end(), [&] { return static_cast<uint8_t>(random()); });
        const ImagePtr image = MakeImage(9, 7);
        ASSERT_TRUE(Read(blob, fourCC, 72, image.get()));
        Bytes back = blob;
        uint8_t* data = back.data();
        ASSERT_TRUE(Write(image.get(), fourCC, 72, data));
        EXPECT_EQ(back, blob) << "code " << fourCC;
    }
}

TEST(PixelConvert, Each14BitWordComesBackFromA16BitImageAsItWas) {
    Bytes blob;
    for (uint32_t word = 0; word < 0x4000; ++word)
        blob.insert(blob.end(), {static_cast<uint8_t>(word), static_cast<uint8_t>(word >> 8)});
    blob.resize((blob.size() + 5) / 6 * 6);
    const auto rowBytes = static_cast<int32_t>(blob.size());
    const ImagePtr image = MakeImage(rowBytes / 6, 1);
    ASSERT_TRUE(Read(blob, FourCC("r214"), static_cast<uint32_t>(rowBytes), image.get()));
    Bytes back(blob.size());
    uint8_t* data = back.data();
    ASSERT_TRUE(Write(image.get(), FourCC("r214"), rowBytes, data));
    EXPECT_EQ(back, blob);
}

TEST(PixelConvert, TheFlagOfImageToBlobHasNoEffectOnRgbPackings) {
    const ImagePtr owner = MakeImage(2, 1);
    SetPixelAt(*owner, 0, 0, Pixel{1, 2, 3, 4});
    Image* image = owner.get();
    Bytes with(16);
    Bytes without(16);
    uint8_t* withData = with.data();
    uint8_t* withoutData = without.data();
    const auto code = static_cast<int32_t>(FourCC("b64a"));
    EXPECT_TRUE(PixelConvert::ImageToBlob(image, code, 16, withData, true));
    EXPECT_TRUE(PixelConvert::ImageToBlob(image, code, 16, withoutData, false));
    EXPECT_EQ(with, without);
    EXPECT_EQ(with, (Bytes{0, 4, 0, 1, 0, 2, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0}));
}

} // namespace
