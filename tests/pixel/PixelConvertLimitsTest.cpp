// Sizes and arguments that leave nothing to do, or nothing that could be done.

#include "PixelConvertTestSupport.h"
#include "RecordedColorConvert.h"
#include "framework/CxAVTypes.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <utility>

namespace {

using Bytes = std::vector<uint8_t>;

TEST(PixelConvertLimits, AnImageOfHeight0ConvertsNothingAndIsTrueWhateverTheRowSize) {
    const ImagePtr owner = MakeImage(4, 0);
    Image* image = owner.get();
    for (const uint32_t fourCC : {FourCC("b64a"), FourCC("r210"), FourCC("2vuy")}) {
        for (const int32_t rowBytes : {32, 1, 0, -1, INT_MIN, INT_MAX}) {
            uint8_t* blob = nullptr;
            EXPECT_TRUE(Write(image, fourCC, rowBytes, blob));
            EXPECT_NE(blob, nullptr);
            const BlobPtr blobOwner(blob);
            Bytes source(1);
            EXPECT_TRUE(Read(source, fourCC, static_cast<uint32_t>(rowBytes), image));
        }
    }
}

TEST(PixelConvertLimits, AnImageOfNoPixelsNeedsNoBlob) {
    for (const ImagePtr& owner : {MakeImage(4, 0), MakeImage(0, 4), MakeImage(0, 0)}) {
        Image* image = owner.get();
        EXPECT_TRUE(PixelConvert::BlobToImage(nullptr, 32, FourCC("b64a"), image));
        EXPECT_TRUE(PixelConvert::BlobToImage(nullptr, 32, FourCC("2vuy"), image));
    }
}

TEST(PixelConvertLimits, ANewBufferForAWidthOf0IsClear) {
    const ImagePtr image = MakeImage(0, 4);
    for (const uint32_t fourCC : {FourCC("b64a"), FourCC("2vuy")}) {
        SoilMemory(4 * 64);
        uint8_t* blob = nullptr;
        EXPECT_TRUE(Write(image.get(), fourCC, 64, blob));
        const BlobPtr owner(blob);
        ASSERT_NE(blob, nullptr);
        EXPECT_EQ(Bytes(blob, blob + 4 * 64), Bytes(4 * 64, 0));
    }
}

TEST(PixelConvertLimits, NegativeSizesConvertNothing) {
    for (const auto& [width, height] : {std::pair{-4, 2}, {4, -2}, {-4, -2}, {INT_MIN, INT_MIN}}) {
        const ImagePtr image = MakeImage(4, 2);
        image->Width = width;
        image->Height = height;
        Bytes blob(64, 0xA5);
        uint8_t* data = blob.data();
        for (const uint32_t fourCC : {FourCC("b64a"), FourCC("r210"), FourCC("2vuy")}) {
            EXPECT_TRUE(Write(image.get(), fourCC, 32, data));
            EXPECT_TRUE(Read(blob, fourCC, 32, image.get()));
        }
        EXPECT_EQ(blob, Bytes(64, 0xA5));
        image->Height = 2;
    }
}

TEST(PixelConvertLimits, ANegativeHeightWithoutABlobMakesABufferOfNoRows) {
    const ImagePtr image = MakeImage(4, 2);
    for (const auto& [width, height] : {std::pair{4, -2}, {-4, -2}, {INT_MIN, INT_MIN}}) {
        image->Width = width;
        image->Height = height;
        for (const uint32_t fourCC : {FourCC("b64a"), FourCC("r210"), FourCC("2vuy")}) {
            uint8_t* blob = nullptr;
            EXPECT_TRUE(Write(image.get(), fourCC, 32, blob));
            EXPECT_NE(blob, nullptr);
            const BlobPtr owner(blob);
        }
    }
    image->Height = 2;
}

TEST(PixelConvertLimits, ANegativeWidthWithoutABlobMakesAClearBuffer) {
    const ImagePtr image = MakeImage(4, 2);
    image->Width = -4;
    SoilMemory(2 * 32);
    uint8_t* blob = nullptr;
    EXPECT_TRUE(Write(image.get(), FourCC("b64a"), 32, blob));
    const BlobPtr owner(blob);
    ASSERT_NE(blob, nullptr);
    EXPECT_EQ(Bytes(blob, blob + 2 * 32), Bytes(2 * 32, 0));
}

TEST(PixelConvertLimits, ANullImageIsRefusedAndNoBufferIsMade) {
    Bytes blob(32);
    EXPECT_FALSE(Read(blob, FourCC("b64a"), 32, nullptr));
    uint8_t* none = nullptr;
    EXPECT_FALSE(Write(nullptr, FourCC("b64a"), 32, none));
    EXPECT_EQ(none, nullptr);
}

TEST(PixelConvertLimits, BlobToImageRefusesANullBlobOnBothPaths) {
    const ImagePtr owner = MakeImage(4, 1);
    Image* image = owner.get();
    RecordedColorConvert::Forget();
    EXPECT_FALSE(PixelConvert::BlobToImage(nullptr, 32, FourCC("b64a"), image));
    EXPECT_FALSE(PixelConvert::BlobToImage(nullptr, 32, FourCC("2vuy"), image));
    EXPECT_FALSE(RecordedColorConvert::OnlyCall().has_value());
}

TEST(PixelConvertLimits, RowsTooShortForTheImageAreRefusedAndNothingIsWritten) {
    const ImagePtr image = MakeImage(5, 2);
    Bytes blob(80, 0xA5);
    uint8_t* data = blob.data();
    EXPECT_FALSE(Write(image.get(), FourCC("b64a"), 39, data));
    EXPECT_EQ(blob, Bytes(80, 0xA5));
    EXPECT_FALSE(Read(blob, FourCC("b64a"), 39, image.get()));
    EXPECT_EQ(PixelBytes(*image, ImageData_RGBA16), Bytes(80, 0));
}

TEST(PixelConvertLimits, RowsTooShortForTheImageLeaveAFreshBufferToTheCaller) {
    const ImagePtr image = MakeImage(5, 2);
    uint8_t* blob = nullptr;
    EXPECT_FALSE(Write(image.get(), FourCC("b64a"), 39, blob));
    ASSERT_NE(blob, nullptr);
    const BlobPtr owner(blob);
    std::memset(blob, 1, 2 * 39);
}

TEST(PixelConvertLimits, RowSizesFrom2To31OnAreRefused) {
    const ImagePtr image = MakeImage(1, 1);
    Bytes blob(32);
    EXPECT_FALSE(Read(blob, FourCC("b64a"), 0x80000000u, image.get()));
    EXPECT_FALSE(Read(blob, FourCC("2vuy"), 0xFFFFFFFFu, image.get()));
}

TEST(PixelConvertLimits, AWidthWhoseRowSizePasses32BitsIsRefused) {
    const ImagePtr image = MakeImage(1, 1);
    image->Width = 0x20000001;
    Bytes blob(32, 0xA5);
    uint8_t* data = blob.data();
    const int32_t wrapped = PixelConvert::CalcRowBytes(FourCC("b64a"), 0x20000001u);
    EXPECT_FALSE(Write(image.get(), FourCC("b64a"), wrapped, data));
    EXPECT_FALSE(Read(blob, FourCC("b64a"), static_cast<uint32_t>(wrapped), image.get()));
    EXPECT_EQ(blob, Bytes(32, 0xA5));
}

} // namespace
