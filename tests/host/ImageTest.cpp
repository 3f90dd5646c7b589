#include "host/Image.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <set>

namespace {

constexpr ImageDataKind allKinds[] = {ImageData_RGBA8, ImageData_RGBA16, ImageData_RGBAHalf,
                                      ImageData_RGBAFloat};

TEST(Image, AllocateFillsTheMembersForEachKind) {
    const std::pair<ImageDataKind, int32_t> strides[] = {
        {ImageData_RGBA8, 4}, {ImageData_RGBA16, 8}, {ImageData_RGBAHalf, 8}, {ImageData_RGBAFloat, 16}};
    for (const auto& [kind, bytes] : strides) {
        Image* image = Image::Allocate(17, 5, kind);
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image->Width, 17);
        EXPECT_EQ(image->Height, 5);
        EXPECT_EQ(image->DataFormat->Kind, kind);
        EXPECT_EQ(image->DataFormat->BytesPerPixel, static_cast<uint32_t>(bytes));
        EXPECT_EQ(image->PixelStride, bytes);
        EXPECT_EQ(image->AuxRowTable, nullptr);
        EXPECT_EQ(image->AuxPixelStride, 0);
        EXPECT_TRUE(image->HasMainData());
        EXPECT_TRUE(image->HasHostAccessors());
        Image::Free(image);
    }
}

TEST(Image, TheKindIsTheFirst32BitsOfTheDataFormat) {
    Image* image = Image::Allocate(1, 1, ImageData_RGBAHalf);
    EXPECT_EQ(*reinterpret_cast<const uint32_t*>(image->DataFormat), 6u);
    Image::Free(image);
}

TEST(Image, EveryByteOfANewImageIsZeroAndCanBeWritten) {
    for (const ImageDataKind kind : allKinds) {
        Image* image = Image::Allocate(13, 7, kind);
        for (int32_t row = 0; row < image->Height; ++row) {
            for (int32_t byte = 0; byte < image->Width * image->PixelStride; ++byte) {
                ASSERT_EQ(image->RowAddress(row)[byte], 0);
                image->RowAddress(row)[byte] = 0xff;
            }
        }
        Image::Free(image);
    }
}

TEST(Image, RowsStartAtMultiplesOf64BytesAndDoNotOverlap) {
    Image* image = Image::Allocate(9, 4, ImageData_RGBA16);
    std::set<uintptr_t> starts;
    for (int32_t row = 0; row < 4; ++row)
        starts.insert(reinterpret_cast<uintptr_t>(image->RowAddress(row)));
    ASSERT_EQ(starts.size(), 4u);
    for (const uintptr_t start : starts)
        EXPECT_EQ(start % 64, 0u);
    for (auto row = starts.begin(); std::next(row) != starts.end(); ++row)
        EXPECT_GE(*std::next(row) - *row, 72u);
    Image::Free(image);
}

TEST(Image, AnImageWithoutPixelsIsValid) {
    for (const auto& [width, height] : {std::pair(0, 0), std::pair(0, 3), std::pair(3, 0)}) {
        Image* image = Image::Allocate(width, height, ImageData_RGBA8);
        ASSERT_NE(image, nullptr);
        EXPECT_TRUE(image->HasMainData());
        Image::Free(image);
    }
}

TEST(Image, ANegativeSizeGivesNoImage) {
    EXPECT_EQ(Image::Allocate(-1, 4, ImageData_RGBA8), nullptr);
    EXPECT_EQ(Image::Allocate(4, -1, ImageData_RGBA8), nullptr);
    EXPECT_EQ(Image::Allocate(INT_MIN, INT_MIN, ImageData_RGBA8), nullptr);
}

TEST(Image, ASizeBeyondAllMemoryGivesNoImage) {
    EXPECT_EQ(Image::Allocate(INT_MAX, INT_MAX, ImageData_RGBAFloat), nullptr);
    EXPECT_EQ(Image::Allocate(INT_MAX, INT_MAX, ImageData_RGBA8), nullptr);
    EXPECT_EQ(Image::Allocate(INT_MAX, 1 << 20, ImageData_RGBA16), nullptr);
}

TEST(Image, AnUnknownKindGivesNoImage) {
    EXPECT_EQ(Image::Allocate(2, 2, static_cast<ImageDataKind>(0)), nullptr);
    EXPECT_EQ(Image::Allocate(2, 2, static_cast<ImageDataKind>(7)), nullptr);
}

TEST(Image, FreeSetsThePointerToNullAndTakesNull) {
    Image* image = Image::Allocate(2, 2, ImageData_RGBA8);
    Image::Free(image);
    EXPECT_EQ(image, nullptr);
    Image::Free(image);
    EXPECT_EQ(image, nullptr);
}

TEST(Image, FreeDoesNotDependOnTheMembersThatACallerMayChange) {
    Image* image = Image::Allocate(2, 2, ImageData_RGBA8);
    image->RowTable = reinterpret_cast<uint8_t**>(UINTPTR_MAX);
    image->Height = 1000;
    Image::Free(image);
    EXPECT_EQ(image, nullptr);
}

TEST(Image, WithoutARowTableRowAddressesAreZero) {
    Image* image = Image::Allocate(2, 2, ImageData_RGBA16);
    image->RowTable = nullptr;
    EXPECT_FALSE(image->HasMainData());
    EXPECT_EQ(image->RowAddress(0), nullptr);
    EXPECT_EQ(image->RowAddress(1), nullptr);
    Image::Free(image);
}

TEST(Image, WithARowTableOfAllOnesRowAddressesAreZero) {
    Image* image = Image::Allocate(2, 2, ImageData_RGBA16);
    image->RowTable = reinterpret_cast<uint8_t**>(UINTPTR_MAX);
    EXPECT_FALSE(image->HasMainData());
    EXPECT_EQ(image->RowAddress(0), nullptr);
    EXPECT_EQ(image->RowAddress(1), nullptr);
    Image::Free(image);
}

TEST(Image, TheSecondDataBlockHasItsOwnRows) {
    Image* image = Image::Allocate(2, 2, ImageData_RGBA16);
    uint8_t block[2][4] = {};
    uint8_t* rows[] = {block[0], block[1]};
    EXPECT_EQ(image->AuxRowAddress(1), nullptr);
    image->AuxRowTable = rows;
    EXPECT_EQ(image->AuxRowAddress(0), block[0]);
    EXPECT_EQ(image->AuxRowAddress(1), block[1]);
    Image::Free(image);
}

TEST(Image, OneForeignAccessorIsEnoughToLoseTheHostsOwn) {
    Image* image = Image::Allocate(2, 2, ImageData_RGBA16);
    const auto hostSetPixel = image->SetPixel;
    image->SetPixel = [](const Pixel&, uint8_t*, uint8_t*, Image*) {};
    EXPECT_FALSE(image->HasHostAccessors());
    image->SetPixel = hostSetPixel;
    EXPECT_TRUE(image->HasHostAccessors());
    Image::Free(image);
}

TEST(Image, AccessorsOfAnotherKindAreNotTheHostsOwn) {
    Image* image = Image::Allocate(2, 2, ImageData_RGBA16);
    const ImageDataFormat foreign = {99, 8};
    const ImageDataFormat half = {ImageData_RGBAHalf, 8};
    for (const ImageDataFormat* format : {&foreign, &half, static_cast<const ImageDataFormat*>(nullptr)}) {
        image->DataFormat = format;
        EXPECT_FALSE(image->HasHostAccessors());
    }
    Image::Free(image);
}

TEST(Image, PixelsAreSquareUntilToldOtherwise) {
    Image* image = Image::Allocate(1, 1, ImageData_RGBA8);
    EXPECT_EQ(image->XAspect, 1.0);
    EXPECT_EQ(image->YAspect, 1.0);
    Image::Free(image);
}

TEST(Image, ItsFieldsAreAnAttribute) {
    Image* image = Image::Allocate(1, 1, ImageData_RGBA8);
    EXPECT_EQ(image->GetAttr(ImageTag_Interlaced, 7), 0);
    TagList tags;
    EXPECT_FALSE(image->SetAttrsTagList(tags));
    tags.Set(ImageTag_Interlaced, 1, false);
    EXPECT_TRUE(image->SetAttrsTagList(tags));
    EXPECT_EQ(image->GetAttr(ImageTag_Interlaced, 0), 1);
    EXPECT_EQ(image->GetAttr(Tag{0x10020010}, 7), 7);
    Image::Free(image);
}

} // namespace
