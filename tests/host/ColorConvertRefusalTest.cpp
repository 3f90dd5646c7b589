// What the conversions refuse, and that they touch nothing then; and images that are not the host's own.

#include "host/ColorConvert.h"

#include "host/ColorTestSupport.h"

#include <gtest/gtest.h>

#include <functional>

using color_model::LayoutOf;

namespace {

/// Expects both conversions to refuse `tags` and to leave image and buffer alone.
void ExpectRefused(Image& image, YuvBuffer& buffer, const TagList& tags,
                   ImageDataKind kind = ImageData_RGBA16) {
    FillPixels(image, {0.25f, 0.5f, 0.75f, 1});
    buffer.Fill(0x5a);
    const auto pixels = PixelBytes(image, kind);
    const auto samples = buffer.Bytes();
    EXPECT_FALSE(CxYUV2RGBTagList(&image, tags));
    EXPECT_EQ(CxRGB2YUVTagList(&image, tags), nullptr);
    EXPECT_EQ(PixelBytes(image, kind), pixels);
    EXPECT_EQ(buffer.Bytes(), samples);
}

TagList Changed(TagList tags, Tag tag, int value) {
    tags.Set(tag, value, false);
    return tags;
}

TagList WithPlane(TagList tags, Tag tag, void* plane) {
    tags.SetPtr(tag, plane);
    return tags;
}

/// Records where the accessors of a foreign image are called, and keeps pixels of its own.
struct ForeignPixels {
    static constexpr int width = 4;
    inline static PixelFloat pixels[width];
    inline static uintptr_t offsets[width];
    inline static int calls;

    static int IndexOf(const uint8_t* data, const Image* image) {
        const auto base = reinterpret_cast<uintptr_t>(image->RowAddress(0));
        const auto offset = reinterpret_cast<uintptr_t>(data) - base;
        const int index = static_cast<int>(offset) / image->PixelStride;
        offsets[index] = offset;
        ++calls;
        return index;
    }
    static void Set(const PixelFloat& pixel, uint8_t* data, uint8_t*, Image* image) {
        pixels[IndexOf(data, image)] = pixel;
    }
    static void Get(PixelFloat& pixel, const uint8_t* data, const uint8_t*, Image* image) {
        pixel = pixels[IndexOf(data, image)];
    }
    static ImagePtr MakeForeignImage() {
        ImagePtr image = MakeImage(width, 1);
        image->GetPixelFloat = Get;
        image->SetPixelFloat = Set;
        calls = 0;
        return image;
    }
};

} // namespace

TEST(ColorConvertRefusal, ANullImageIsRefused) {
    YuvBuffer buffer(LayoutOf(ColorLayout_2vuy), 4, 2);
    EXPECT_FALSE(CxYUV2RGBTagList(nullptr, buffer.Tags()));
    EXPECT_EQ(CxRGB2YUVTagList(nullptr, buffer.Tags()), nullptr);
}

TEST(ColorConvertRefusal, AnUnknownLayoutIsRefused) {
    const ImagePtr image = MakeImage(4, 2);
    YuvBuffer buffer(LayoutOf(ColorLayout_r4fl), 4, 2);
    for (const int code : {-1, 1, 256, 7680, 1 << 30})
        ExpectRefused(*image, buffer, Changed(buffer.Tags(), ColorTag_Layout, code));
}

TEST(ColorConvertRefusal, AMissingLayoutIsNotTakenForNumberZero) {
    const ImagePtr image = MakeImage(4, 1);
    YuvBuffer buffer(LayoutOf(ColorLayout_2vuy), 4, 1);
    TagList tags;
    tags.SetPtr(ColorTag_Buffer, buffer.Plane(0));
    tags.Set(ColorTag_RowBytes, 8, false);
    ExpectRefused(*image, buffer, tags);
}

TEST(ColorConvertRefusal, AMissingBufferOrPlaneIsRefused) {
    const ImagePtr image = MakeImage(4, 2);
    for (const auto& layout : color_model::layouts) {
        YuvBuffer buffer(layout, 4, 2);
        const Tag tags[] = {ColorTag_Buffer, ColorTag_Plane2, ColorTag_Plane3};
        for (size_t plane = 0; plane < static_cast<size_t>(color_model::PlaneCount(layout)); ++plane)
            ExpectRefused(*image, buffer, WithPlane(buffer.Tags(), tags[plane], nullptr));
    }
}

TEST(ColorConvertRefusal, ARowSizeTooSmallForTheWidthIsRefused) {
    for (const auto& layout : color_model::layouts) {
        for (const int width : {1, 4, 7, 12}) {
            const ImagePtr image = MakeImage(width, 2);
            YuvBuffer buffer(layout, width, 2);
            // Strings may end at a lone pixel; whole groups and pairs of planes may not.
            const bool string = layout.arrangement == color_model::Arrangement::String &&
                                layout.elements != color_model::Elements::Three10;
            const int least = string ? color_model::LeastRowBytes(layout, 2) / 2 * width
                                     : color_model::LeastRowBytes(layout, width);
            ExpectRefused(*image, buffer, Changed(buffer.Tags(), ColorTag_RowBytes, least - 1));
        }
    }
}

TEST(ColorConvertRefusal, ARowSizeOfZeroOrLessIsRefused) {
    const ImagePtr image = MakeImage(4, 2);
    YuvBuffer buffer(LayoutOf(ColorLayout_2vuy), 4, 2);
    for (const int rowBytes : {0, -8, std::numeric_limits<int>::min()})
        ExpectRefused(*image, buffer, Changed(buffer.Tags(), ColorTag_RowBytes, rowBytes));
}

TEST(ColorConvertRefusal, AnImageOfNoPixelsIsRefused) {
    YuvBuffer buffer(LayoutOf(ColorLayout_2vuy), 4, 2);
    for (const auto& [width, height] : {std::pair{0, 2}, {4, 0}, {0, 0}}) {
        const ImagePtr image = MakeImage(width, height);
        EXPECT_FALSE(CxYUV2RGBTagList(image.get(), buffer.Tags()));
        EXPECT_EQ(CxRGB2YUVTagList(image.get(), buffer.Tags()), nullptr);
    }
}

TEST(ColorConvertRefusal, AnImageOfNegativeSizeIsRefused) {
    YuvBuffer buffer(LayoutOf(ColorLayout_2vuy), 4, 2);
    const ImagePtr image = MakeImage(4, 2);
    image->Width = -4;
    EXPECT_FALSE(CxYUV2RGBTagList(image.get(), buffer.Tags()));
    EXPECT_EQ(CxRGB2YUVTagList(image.get(), buffer.Tags()), nullptr);
}

TEST(ColorConvertRefusal, ABufferOfNoPixelsIsNotWritten) {
    const ImagePtr image = MakeImage(4, 2);
    YuvBuffer buffer(LayoutOf(ColorLayout_2vuy), 4, 2);
    for (const Tag tag : {ColorTag_Width, ColorTag_Height}) {
        for (const int size : {0, -1})
            EXPECT_EQ(CxRGB2YUVTagList(image.get(), Changed(buffer.Tags(), tag, size)), nullptr);
    }
}

TEST(ColorConvertRefusal, AnImageOfTheHostWithoutMainDataIsRefused) {
    YuvBuffer buffer(LayoutOf(ColorLayout_2vuy), 4, 2);
    uint8_t** const allOnes = reinterpret_cast<uint8_t**>(~uintptr_t{0});
    for (uint8_t** const table : {static_cast<uint8_t**>(nullptr), allOnes}) {
        const ImagePtr image = MakeImage(4, 2);
        image->RowTable = table;
        EXPECT_FALSE(CxYUV2RGBTagList(image.get(), buffer.Tags()));
        EXPECT_EQ(CxRGB2YUVTagList(image.get(), buffer.Tags()), nullptr);
    }
}

TEST(ColorConvertRefusal, AnImageWithoutAccessorsIsRefused) {
    YuvBuffer buffer(LayoutOf(ColorLayout_2vuy), 4, 2);
    const ImagePtr image = MakeImage(4, 2);
    image->SetPixelFloat = nullptr;
    ExpectRefused(*MakeImage(4, 2), buffer, Changed(buffer.Tags(), ColorTag_Layout, -1));
    EXPECT_FALSE(CxYUV2RGBTagList(image.get(), buffer.Tags()));
    EXPECT_EQ(CxRGB2YUVTagList(image.get(), buffer.Tags()), nullptr);
}

// ---------------------------------------------------------------------------------------------------------
// Images of others

TEST(ColorConvertForeign, AnImageWithItsOwnAccessorsIsWrittenThroughThem) {
    const ImagePtr image = ForeignPixels::MakeForeignImage();
    YuvBuffer buffer(LayoutOf(ColorLayout_v408), ForeignPixels::width, 1);
    buffer.SetBytes({128, 16, 128, 255, 128, 235, 128, 0, 128, 16, 128, 255, 128, 235, 128, 255});
    ASSERT_TRUE(CxYUV2RGBTagList(image.get(), buffer.Tags()));
    EXPECT_EQ(ForeignPixels::calls, ForeignPixels::width);
    EXPECT_EQ(ForeignPixels::pixels[1].R, 1.0f);
    EXPECT_EQ(ForeignPixels::pixels[1].A, 0.0f);
    EXPECT_EQ(ForeignPixels::pixels[2].R, 0.0f);
    EXPECT_EQ(GetPixelAt(*image, 1, 0), (Pixel{0, 0, 0, 0})) << "the plain memory was written";
}

TEST(ColorConvertForeign, AnImageWithItsOwnAccessorsIsReadThroughThem) {
    const ImagePtr image = ForeignPixels::MakeForeignImage();
    for (PixelFloat& pixel : ForeignPixels::pixels)
        pixel = {1, 1, 1, 0};
    YuvBuffer buffer(LayoutOf(ColorLayout_v408), ForeignPixels::width, 1);
    ASSERT_NE(CxRGB2YUVTagList(image.get(), buffer.Tags()), nullptr);
    EXPECT_EQ(ForeignPixels::calls, ForeignPixels::width);
    EXPECT_EQ(buffer.Bytes()[1], 235);
    EXPECT_EQ(buffer.Bytes()[3], 0);
}

TEST(ColorConvertForeign, AccessorsOfAnImageWithoutMainDataGetOffsetsFromZero) {
    const ImagePtr image = ForeignPixels::MakeForeignImage();
    image->RowTable = nullptr;
    YuvBuffer buffer(LayoutOf(ColorLayout_v408), ForeignPixels::width, 1);
    ASSERT_TRUE(CxYUV2RGBTagList(image.get(), buffer.Tags()));
    EXPECT_EQ(ForeignPixels::calls, ForeignPixels::width);
    EXPECT_EQ(ForeignPixels::offsets[3], 3u * 8);
}

TEST(ColorConvertForeign, AnImageOfTheHostWithAnotherStrideKeepsWhatStandsBetweenItsPixels) {
    const ImagePtr image = MakeImage(4, 1);
    image->PixelStride = 16;
    image->Width = 2;
    YuvBuffer buffer(LayoutOf(ColorLayout_v408), 2, 1);
    buffer.SetBytes({128, 235, 128, 255, 128, 235, 128, 255});
    ASSERT_TRUE(CxYUV2RGBTagList(image.get(), buffer.Tags()));
    EXPECT_EQ(GetPixelAt(*image, 1, 0), (Pixel{65535, 65535, 65535, 65535}));
    uint64_t between;
    std::memcpy(&between, image->RowTable[0] + 8, sizeof between);
    EXPECT_EQ(between, 0u);
}
