// What single samples and pixels become, at the edges of pictures, ranges and rows.

#include "host/ColorConvert.h"

#include "host/ColorConvertScratch.h"
#include "host/ColorTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using color_model::LayoutOf;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

/// A float image, read from a buffer.
ImagePtr Read(const YuvBuffer& buffer, ImageDataKind kind = ImageData_RGBAFloat) {
    ImagePtr image = MakeImage(buffer.View().width, buffer.View().height, kind);
    EXPECT_TRUE(CxYUV2RGBTagList(image.get(), buffer.Tags()));
    return image;
}

/// Writes an image of one colour.
void WritePlain(YuvBuffer& buffer, const PixelFloat& pixel) {
    const ImagePtr image = MakeImage(buffer.View().width, buffer.View().height, ImageData_RGBAFloat);
    FillPixels(*image, pixel);
    EXPECT_EQ(CxRGB2YUVTagList(image.get(), buffer.Tags()), buffer.Plane(0));
}

using Bytes = std::vector<uint8_t>;

} // namespace

// ---------------------------------------------------------------------------------------------------------
// Ranges

TEST(ColorConvert, WhiteAndBlackOfEveryLayoutReadAsExactlyOneAndZero) {
    for (const auto& layout : color_model::layouts) {
        for (const float level : {0.0f, 1.0f}) {
            YuvBuffer buffer(layout, 3, 3);
            WritePlain(buffer, {level, level, level, 1.0f});
            const ImagePtr image = Read(buffer);
            // Whites of floats are fractions of 255, which floats round.
            const float slack = layout.code == ColorLayout_r4fl ? 1e-7f : 0.0f;
            const PixelFloat pixel = GetFloatAt(*image, 1, 1);
            EXPECT_NEAR(pixel.R, level, slack) << layout.name;
            EXPECT_EQ(pixel.G, pixel.R) << layout.name;
            EXPECT_EQ(pixel.B, pixel.R) << layout.name;
            EXPECT_EQ(pixel.A, 1.0f) << layout.name;
        }
    }
}

TEST(ColorConvert, WhiteIsWrittenAs235InVideoRangeAnd255InFullRange) {
    YuvBuffer video(LayoutOf(ColorLayout_yuv422p), 2, 1);
    WritePlain(video, {1, 1, 1, 1});
    EXPECT_EQ(video.Bytes(0), (Bytes{235, 235}));
    YuvBuffer full(LayoutOf(ColorLayout_yuvj422p), 2, 1);
    WritePlain(full, {1, 1, 1, 1});
    EXPECT_EQ(full.Bytes(0), (Bytes{255, 255}));
    EXPECT_EQ(full.Bytes(1), Bytes{128});
}

TEST(ColorConvert, SelectorOneIsBt709ZeroAndTwoAreBt601) {
    const auto lumaOfGreen = [](int selector) {
        YuvBuffer buffer(LayoutOf(ColorLayout_yuvj422p), 2, 1);
        const ImagePtr image = MakeImage(2, 1);
        FillPixels(*image, {0, 1, 0, 1});
        EXPECT_NE(CxRGB2YUVTagList(image.get(), buffer.Tags(selector)), nullptr);
        return int{buffer.Bytes()[0]};
    };
    EXPECT_EQ(lumaOfGreen(1), 182); // 0.7152 * 255
    EXPECT_EQ(lumaOfGreen(0), 150); // 0.587 * 255
    EXPECT_EQ(lumaOfGreen(2), 150);
}

TEST(ColorConvert, OtherSelectorsAreTakenAsBt709) {
    std::mt19937 random = MakeRandom();
    YuvBuffer buffer(LayoutOf(ColorLayout_v408), 8, 2);
    buffer.FillRandom(random);
    const ImagePtr bt709 = Read(buffer);
    for (const int selector : {3, -1, 9}) {
        const ImagePtr image = MakeImage(8, 2, ImageData_RGBAFloat);
        ASSERT_TRUE(CxYUV2RGBTagList(image.get(), buffer.Tags(selector)));
        EXPECT_EQ(PixelBytes(*image, ImageData_RGBAFloat), PixelBytes(*bt709, ImageData_RGBAFloat));
    }
}

TEST(ColorConvert, AlphaIsFullRangeWhereALayoutHasIt) {
    for (const ColorLayout code : {ColorLayout_v408, ColorLayout_r408, ColorLayout_yv8u, ColorLayout_yv16,
                                   ColorLayout_y416, ColorLayout_r4fl}) {
        for (const float alpha : {0.0f, 1.0f}) {
            YuvBuffer buffer(LayoutOf(code), 2, 1);
            WritePlain(buffer, {0.5f, 0.5f, 0.5f, alpha});
            const double most = color_model::MeaningOf(LayoutOf(code)).opaque;
            EXPECT_EQ(color_model::CodeAt(buffer.View(), color_model::Alpha, 1, 0), alpha * most);
            EXPECT_EQ(GetFloatAt(*Read(buffer), 1, 0).A, alpha);
        }
    }
}

TEST(ColorConvert, LayoutsWithoutAlphaReadAsOpaque) {
    YuvBuffer buffer(LayoutOf(ColorLayout_v410), 2, 1);
    WritePlain(buffer, {0.5f, 0.5f, 0.5f, 0.0f});
    EXPECT_EQ(GetPixelAt(*Read(buffer, ImageData_RGBA16), 1, 0).A, 65535);
}

TEST(ColorConvert, IntegerImagesAreLimitedAndFloatImagesAreNot) {
    YuvBuffer buffer(LayoutOf(ColorLayout_2vuy), 2, 1);
    buffer.SetBytes({128, 254, 128, 1});
    const ImagePtr integers = Read(buffer, ImageData_RGBA16);
    EXPECT_EQ(GetPixelAt(*integers, 0, 0), (Pixel{65535, 65535, 65535, 65535}));
    EXPECT_EQ(GetPixelAt(*integers, 1, 0), (Pixel{0, 0, 0, 65535}));
    for (const ImageDataKind kind : {ImageData_RGBAHalf, ImageData_RGBAFloat}) {
        const ImagePtr floats = Read(buffer, kind);
        EXPECT_NEAR(GetFloatAt(*floats, 0, 0).G, (254 - 16) / 219.0, 1e-3);
        EXPECT_NEAR(GetFloatAt(*floats, 1, 0).G, (1 - 16) / 219.0, 1e-3);
    }
}

TEST(ColorConvert, WrittenCodesStayWithinWhatALayoutMayHold) {
    struct Case {
        ColorLayout layout;
        double least, most;
    };
    for (const Case& limits : {Case{ColorLayout_2vuy, 1, 254}, Case{ColorLayout_v210, 4, 1019},
                               Case{ColorLayout_v216, 0, 65535}, Case{ColorLayout_r408, 0, 238},
                               Case{ColorLayout_yuvj420p, 0, 255}, Case{ColorLayout_yuvj422p10, 0, 1023}}) {
        YuvBuffer buffer(LayoutOf(limits.layout), 2, 2);
        WritePlain(buffer, {9, 9, 9, 1});
        EXPECT_EQ(color_model::CodeAt(buffer.View(), color_model::Luma, 1, 1), limits.most);
        WritePlain(buffer, {-9, -9, -9, 1});
        EXPECT_EQ(color_model::CodeAt(buffer.View(), color_model::Luma, 1, 1), limits.least);
    }
}

TEST(ColorConvert, FloatBuffersKeepWhatLiesBeyondBlackAndWhite) {
    YuvBuffer buffer(LayoutOf(ColorLayout_r4fl), 1, 1);
    WritePlain(buffer, {2, 2, 2, 1.5f});
    EXPECT_NEAR(color_model::CodeAt(buffer.View(), color_model::Luma, 0, 0), 2 * 219 / 255.0, 1e-6);
    EXPECT_EQ(color_model::CodeAt(buffer.View(), color_model::Alpha, 0, 0), 1.5);
}

TEST(ColorConvert, ChannelsThatAreNotNumbersCountAsZero) {
    YuvBuffer expected(LayoutOf(ColorLayout_v410), 1, 1);
    WritePlain(expected, {0, 0.5f, 0, 1});
    YuvBuffer written(LayoutOf(ColorLayout_v410), 1, 1);
    WritePlain(written, {notANumber, 0.5f, notANumber, notANumber});
    EXPECT_EQ(written.Bytes(), expected.Bytes());
}

TEST(ColorConvert, InfiniteGreyIsTheBrightestGrey) {
    YuvBuffer buffer(LayoutOf(ColorLayout_v210), 6, 1);
    WritePlain(buffer, {infinity, infinity, infinity, 1});
    EXPECT_EQ(color_model::CodeAt(buffer.View(), color_model::Luma, 0, 0), 1019);
    EXPECT_EQ(color_model::CodeAt(buffer.View(), color_model::Cb, 0, 0), 512);
    EXPECT_EQ(color_model::CodeAt(buffer.View(), color_model::Cr, 0, 0), 512);
}

TEST(ColorConvert, FloatSamplesThatAreNotNumbersCountAsZero) {
    YuvBuffer buffer(LayoutOf(ColorLayout_r4fl), 1, 1);
    const float samples[] = {notANumber, notANumber, 128 / 255.0f, 128 / 255.0f};
    std::memcpy(buffer.Plane(0), samples, sizeof samples);
    const PixelFloat pixel = GetFloatAt(*Read(buffer), 0, 0);
    EXPECT_EQ(pixel.R, 0.0f);
    EXPECT_EQ(pixel.A, 0.0f);
}

// ---------------------------------------------------------------------------------------------------------
// Places of samples

TEST(ColorConvert, TheFirstRowOfABufferIsTheLastOfTheImage) {
    YuvBuffer buffer(LayoutOf(ColorLayout_2vuy), 2, 2);
    buffer.SetBytes({128, 235, 128, 235, 128, 16, 128, 16});
    const ImagePtr image = Read(buffer);
    EXPECT_EQ(GetFloatAt(*image, 0, 1).G, 1.0f);
    EXPECT_EQ(GetFloatAt(*image, 0, 0).G, 0.0f);
}

TEST(ColorConvert, An2vuyPairIsCbYCrY) {
    YuvBuffer buffer(LayoutOf(ColorLayout_2vuy), 2, 1);
    const ImagePtr image = MakeImage(2, 1);
    SetPixelAt(*image, 0, 0, Pixel{0, 0, 65535, 65535});
    SetPixelAt(*image, 1, 0, Pixel{0, 0, 0, 65535});
    ASSERT_NE(CxRGB2YUVTagList(image.get(), buffer.Tags()), nullptr);
    // Blue is 16 + 219 * 0.0722, and 112 of Cb, three quarters of which lie on the first pixel.
    EXPECT_EQ(buffer.Bytes(), (Bytes{212, 32, 120, 16}));
}

TEST(ColorConvert, PixelsBetweenTwoChromaSamplesTakeTheirMean) {
    YuvBuffer buffer(LayoutOf(ColorLayout_2vuy), 4, 1);
    buffer.SetBytes({128, 126, 100, 126, 128, 126, 200, 126});
    const ImagePtr image = Read(buffer);
    const auto redAt = [&](int x) { return GetFloatAt(*image, x, 0).R; };
    EXPECT_FLOAT_EQ(redAt(1), (redAt(0) + redAt(2)) / 2);
    EXPECT_EQ(redAt(3), redAt(2));
}

TEST(ColorConvert, RowsTakeThreeQuartersOfTheirOwnChromaRowAndOneOfTheNearerOther) {
    YuvBuffer buffer(LayoutOf(ColorLayout_yuvj420p), 2, 4);
    buffer.SetBytes(Bytes(8, 100));
    buffer.SetBytes({128, 128}, 1);
    buffer.SetBytes({128, 168}, 2);
    const ImagePtr image = Read(buffer);
    const auto crAt = [&](int row) { return GetFloatAt(*image, 0, 3 - row).R * 255 - 100; };
    const float step = crAt(3); // 40 codes
    EXPECT_NEAR(crAt(0), 0, 1e-4);
    EXPECT_NEAR(crAt(1), step / 4, 1e-4);
    EXPECT_NEAR(crAt(2), step * 3 / 4, 1e-4);
}

TEST(ColorConvert, SharedChromaRowsAreWrittenAsTheMeanOfTheirTwoRows) {
    YuvBuffer buffer(LayoutOf(ColorLayout_yuvj420p), 2, 3);
    const ImagePtr image = MakeImage(2, 3);
    for (const int row : {0, 2}) {
        for (const int x : {0, 1})
            SetPixelAt(*image, x, row, Pixel{0, 0, 65535, 65535});
    }
    ASSERT_NE(CxRGB2YUVTagList(image.get(), buffer.Tags()), nullptr);
    EXPECT_EQ(buffer.Bytes(1), (Bytes{192, 255})); // a lone last row has its chroma alone
}

TEST(ColorConvert, ChromaOfNv12FollowsTheLumaRowsWithoutAPlaneOfItsOwn) {
    std::mt19937 random = MakeRandom();
    YuvBuffer apart(LayoutOf(ColorLayout_nv12), 6, 4);
    apart.FillRandom(random);
    Bytes joined = apart.Bytes(0);
    joined.insert(joined.end(), apart.Bytes(1).begin(), apart.Bytes(1).end());
    const TagItem items[] = {{ColorTag_Layout, TagItem::FromInt(ColorLayout_nv12)},
                             {ColorTag_RowBytes, TagItem::FromInt(6)},
                             {ColorTag_Buffer, TagItem::FromPtr(joined.data())},
                             {0, 0}};
    const TagList tags(items, false);
    const ImagePtr image = MakeImage(6, 4, ImageData_RGBAFloat);
    ASSERT_TRUE(CxYUV2RGBTagList(image.get(), tags));
    EXPECT_EQ(PixelBytes(*image, ImageData_RGBAFloat), PixelBytes(*Read(apart), ImageData_RGBAFloat));

    YuvBuffer written(LayoutOf(ColorLayout_nv12), 6, 4);
    ASSERT_NE(CxRGB2YUVTagList(image.get(), written.Tags()), nullptr);
    ASSERT_NE(CxRGB2YUVTagList(image.get(), tags), nullptr);
    Bytes expected = written.Bytes(0);
    expected.insert(expected.end(), written.Bytes(1).begin(), written.Bytes(1).end());
    EXPECT_EQ(joined, expected);
}

// ---------------------------------------------------------------------------------------------------------
// Ends of rows

TEST(ColorConvert, ALastPairWithOnePixelRepeatsItsLuma) {
    YuvBuffer buffer(LayoutOf(ColorLayout_2vuy), 3, 1);
    WritePlain(buffer, {1, 1, 1, 1});
    EXPECT_EQ(buffer.Bytes(), (Bytes{128, 235, 128, 235, 128, 235, 128, 235}));
}

TEST(ColorConvert, ARowThatEndsAtALonePixelIsWrittenWithoutItsCr) {
    std::mt19937 random = MakeRandom();
    for (const ColorLayout code :
         {ColorLayout_2vuy, ColorLayout_uyvy, ColorLayout_v216, ColorLayout_yv8u, ColorLayout_yv16}) {
        for (const int width : {1, 3, 33}) {
            const ImagePtr image = MakeImage(width, 1);
            FillRandom(*image, random);
            YuvBuffer whole(LayoutOf(code), width, 1);
            ASSERT_NE(CxRGB2YUVTagList(image.get(), whole.Tags()), nullptr);
            const int cutBytes = whole.View().rowBytes / (width + 1) * width;
            YuvBuffer cut(LayoutOf(code), width, 1, cutBytes, 0);
            ASSERT_NE(CxRGB2YUVTagList(image.get(), cut.Tags()), nullptr);
            EXPECT_EQ(cut.Bytes(), Bytes(whole.Bytes().begin(), whole.Bytes().begin() + cutBytes));
        }
    }
}

TEST(ColorConvert, ARowThatEndsAtALonePixelReadsItsCrFromThePairBefore) {
    YuvBuffer cut(LayoutOf(ColorLayout_2vuy), 3, 1, 6, 0);
    cut.SetBytes({90, 100, 150, 100, 110, 100});
    YuvBuffer whole(LayoutOf(ColorLayout_2vuy), 3, 1);
    whole.SetBytes({90, 100, 150, 100, 110, 100, 150, 0});
    EXPECT_EQ(PixelBytes(*Read(cut), ImageData_RGBAFloat), PixelBytes(*Read(whole), ImageData_RGBAFloat));
}

TEST(ColorConvert, APictureOfOnePixelWithoutCrHasNoRed) {
    YuvBuffer cut(LayoutOf(ColorLayout_2vuy), 1, 1, 2, 0);
    cut.SetBytes({128, 235});
    const PixelFloat pixel = GetFloatAt(*Read(cut), 0, 0);
    EXPECT_EQ(pixel.R, 1.0f);
    EXPECT_EQ(pixel.B, 1.0f);
}

TEST(ColorConvert, AnUnfinishedGroupOfV210IsFilledWithBlack) {
    YuvBuffer buffer(LayoutOf(ColorLayout_v210), 1, 1);
    WritePlain(buffer, {1, 1, 1, 1});
    const uint32_t words[] = {512 | 940u << 10 | 512u << 20, 940 | 512u << 10 | 64u << 20,
                              512 | 64u << 10 | 512u << 20, 64 | 512u << 10 | 64u << 20};
    Bytes expected(sizeof words);
    std::memcpy(expected.data(), words, sizeof words);
    EXPECT_EQ(buffer.Bytes(), expected);
}

TEST(ColorConvert, BytesBehindTheSamplesOfARowAreLeftAlone) {
    for (const auto& layout : color_model::layouts) {
        constexpr int padding = 20;
        YuvBuffer buffer(layout, 7, 3, padding);
        buffer.Fill(0xa5);
        WritePlain(buffer, {1, 0, 0, 0.25f});
        const int least = color_model::LeastRowBytes(layout, 7);
        for (int i = least; i < least + padding; ++i)
            ASSERT_EQ(buffer.Bytes()[static_cast<size_t>(i)], 0xa5) << layout.name << ", byte " << i;
    }
}

TEST(ColorConvert, PixelsBehindTheBufferAreLeftAlone) {
    const ImagePtr image = MakeImage(5, 4);
    FillPixels(*image, {1, 1, 1, 1});
    YuvBuffer buffer(LayoutOf(ColorLayout_v408), 3, 2);
    ASSERT_NE(CxRGB2YUVTagList(image.get(), buffer.Tags()), nullptr);
    EXPECT_EQ(buffer.Bytes()[1], 235);
    EXPECT_EQ(buffer.Bytes().back(), 255);
}

TEST(ColorConvert, ABufferLargerThanTheImageTakesItInTheTopLeftCorner) {
    const ImagePtr image = MakeImage(1, 1);
    FillPixels(*image, {1, 1, 1, 1});
    YuvBuffer buffer(LayoutOf(ColorLayout_v408), 2, 2);
    ASSERT_NE(CxRGB2YUVTagList(image.get(), buffer.Tags()), nullptr);
    EXPECT_EQ(buffer.Bytes(), (Bytes{128, 235, 128, 255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

// ---------------------------------------------------------------------------------------------------------
// Memory

TEST(ColorConvert, ScratchOfAnImpossibleWidthIsNotReady) {
    const ColorLayoutInfo layout = {};
    EXPECT_FALSE(ColorScratch(layout, int64_t{1} << 50).Ready());
    EXPECT_TRUE(ColorScratch(layout, 1).Ready());
}
