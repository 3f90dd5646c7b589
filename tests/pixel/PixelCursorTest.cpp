// What a caller's own accessors see of a walk along a row.

#include "pixel/PixelCursor.h"

#include "PixelTestSupport.h"
#include "framework/CxAVTypes.h"
#include "pixel/PixelConvert.h"

#include <gtest/gtest.h>

namespace {

struct Access {
    uintptr_t data;
    uintptr_t aux;
    const Image* image;

    bool operator==(const Access&) const = default;
};

std::vector<Access> accesses;

void Record(const uint8_t* data, const uint8_t* aux, const Image* image) {
    accesses.push_back({reinterpret_cast<uintptr_t>(data), reinterpret_cast<uintptr_t>(aux), image});
}

/// An image of one row, so that one thread walks it, with accessors that record their calls.
ImagePtr MakeRecordedImage(int32_t width, ImageDataKind kind = ImageData_RGBA16) {
    ImagePtr image = MakeImage(width, 1, kind);
    image->GetPixel = [](Pixel& pixel, const uint8_t* data, const uint8_t* aux, Image* caller) {
        Record(data, aux, caller);
        pixel = {0x1111, 0x2222, 0x3333, 0x4444};
    };
    image->SetPixel = [](const Pixel&, uint8_t* data, uint8_t* aux, Image* caller) {
        Record(data, aux, caller);
    };
    image->GetPixelFloat = [](PixelFloat& pixel, const uint8_t* data, const uint8_t* aux, Image* caller) {
        Record(data, aux, caller);
        pixel = {1.0f, 1.0f, 1.0f, 1.0f};
    };
    image->SetPixelFloat = [](const PixelFloat&, uint8_t* data, uint8_t* aux, Image* caller) {
        Record(data, aux, caller);
    };
    accesses.clear();
    return image;
}

std::vector<uint8_t> Write(Image* image, uint32_t fourCC, size_t size) {
    std::vector<uint8_t> blob(size);
    uint8_t* data = blob.data();
    EXPECT_TRUE(PixelConvert::ImageToBlob(image, static_cast<int32_t>(fourCC), static_cast<int32_t>(size),
                                          data, false));
    return blob;
}

void Read(Image* image, uint32_t fourCC, size_t size) {
    std::vector<uint8_t> blob(size);
    EXPECT_TRUE(PixelConvert::BlobToImage(blob.data(), static_cast<uint32_t>(size), fourCC, image));
}

TEST(PixelCursor, CallsTheAccessorsWithAddress0AndStridesWhereTheRowTableIsNull) {
    ImagePtr image = MakeRecordedImage(3);
    image->RowTable = nullptr;
    const std::vector<Access> expected = {{0, 0, image.get()}, {8, 0, image.get()}, {16, 0, image.get()}};
    Write(image.get(), 24, 9);
    EXPECT_EQ(accesses, expected);
    accesses.clear();
    Read(image.get(), 24, 9);
    EXPECT_EQ(accesses, expected);
}

TEST(PixelCursor, CallsTheAccessorsWithAddress0AndStridesWhereTheRowTableIsAllOnes) {
    ImagePtr image = MakeRecordedImage(3);
    image->RowTable = reinterpret_cast<uint8_t**>(UINTPTR_MAX);
    const std::vector<Access> expected = {{0, 0, image.get()}, {8, 0, image.get()}, {16, 0, image.get()}};
    Write(image.get(), FourCC("b64a"), 24);
    EXPECT_EQ(accesses, expected);
    accesses.clear();
    Read(image.get(), FourCC("b64a"), 24);
    EXPECT_EQ(accesses, expected);
}

TEST(PixelCursor, WritesWhatTheAccessorGivesForAnImageWithoutMainData) {
    ImagePtr image = MakeRecordedImage(2);
    image->RowTable = nullptr;
    EXPECT_EQ(Write(image.get(), 32, 8),
              (std::vector<uint8_t>{0x44, 0x11, 0x22, 0x33, 0x44, 0x11, 0x22, 0x33}));
}

TEST(PixelCursor, WritesTransparentBlackForAHostImageWithoutMainData) {
    ImagePtr image = MakeImage(40, 1);
    image->RowTable = nullptr;
    EXPECT_EQ(Write(image.get(), 32, 160), std::vector<uint8_t>(160, 0));
}

TEST(PixelCursor, StartsAtTheRowsOfBothDataBlocksAndStepsByTheirStrides) {
    ImagePtr image = MakeRecordedImage(3);
    uint8_t aux[64];
    uint8_t* auxRows[] = {aux};
    image->AuxRowTable = auxRows;
    image->AuxPixelStride = 5;
    image->PixelStride = -8;
    const auto data = reinterpret_cast<uintptr_t>(image->RowTable[0]);
    const auto second = reinterpret_cast<uintptr_t>(aux);
    Read(image.get(), FourCC("l48r"), 18);
    EXPECT_EQ(accesses, (std::vector<Access>{{data, second, image.get()},
                                             {data - 8, second + 5, image.get()},
                                             {data - 16, second + 10, image.get()}}));
}

TEST(PixelCursor, TakesTheFloatAccessorsForR210OnFloatingPointImages) {
    ImagePtr image = MakeRecordedImage(1, ImageData_RGBAFloat);
    image->GetPixel = nullptr;
    image->SetPixel = nullptr;
    EXPECT_EQ(Write(image.get(), FourCC("r210"), 4), (std::vector<uint8_t>{0x3A, 0xCE, 0xB3, 0xAC}));
    Read(image.get(), FourCC("r210"), 4);
    EXPECT_EQ(accesses.size(), 2u);
}

TEST(PixelCursor, TakesTheIntegerAccessorsForR210OnIntegerImagesAndWithoutADescriptor) {
    ImagePtr image = MakeRecordedImage(1);
    image->GetPixelFloat = nullptr;
    image->SetPixelFloat = nullptr;
    Write(image.get(), FourCC("r210"), 4);
    image->DataFormat = nullptr;
    Read(image.get(), FourCC("r210"), 4);
    EXPECT_EQ(accesses.size(), 2u);
}

} // namespace
