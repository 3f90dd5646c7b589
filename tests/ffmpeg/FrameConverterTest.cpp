// Which way a frame takes into an image, what of it is written there, and what is left alone.

#include "ffmpeg/FrameConverter.h"

#include "ffmpeg/FFmpegSpy.h"
#include "ffmpeg/FrameTestSupport.h"

#include <gtest/gtest.h>

using namespace CxFFMPEG;

namespace {

/// Sees which scalers are asked for.
class Scalings {
public:
    Scalings() : replaced_(&FFmpegFunctions::sws_getCachedContext, Get) { targets.clear(); }

    static inline std::vector<AVPixelFormat> targets; ///< formats that frames were converted to

private:
    static SwsContext* Get(SwsContext* context, int width, int height, AVPixelFormat format, int newWidth,
                           int newHeight, AVPixelFormat target, int flags, SwsFilter* sourceFilter,
                           SwsFilter* targetFilter, const double* parameters) {
        EXPECT_EQ(flags, 0x40010);
        EXPECT_EQ(newWidth, width);
        EXPECT_EQ(newHeight, height);
        targets.push_back(target);
        return sws_getCachedContext(context, width, height, format, newWidth, newHeight, target, flags,
                                    sourceFilter, targetFilter, parameters);
    }

    ReplacedFunction<decltype(sws_getCachedContext)> replaced_;
};

/// Sees how often colours are set in scalers.
class ColorSettings {
public:
    ColorSettings() : replaced_(&FFmpegFunctions::sws_setColorspaceDetails, Set) { count = 0; }

    static inline int count = 0;

private:
    static int Set(SwsContext* scaler, const int* matrix, int range, const int* targetMatrix, int targetRange,
                   int brightness, int contrast, int saturation) {
        ++count;
        return sws_setColorspaceDetails(scaler, matrix, range, targetMatrix, targetRange, brightness,
                                        contrast, saturation);
    }

    ReplacedFunction<decltype(sws_setColorspaceDetails)> replaced_;
};

class FrameConverterTest : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadFFmpeg()); }

    FrameConverter converter;
};

/// A frame whose grey tells columns and rows.
TestFrame MakeGrid(AVPixelFormat format, int width, int height) {
    TestFrame frame = MakeTestFrame(format, width, height);
    const AVPixFmtDescriptor& descriptor = *av_pix_fmt_desc_get(format);
    const int step = 1 << (descriptor.comp[0].depth - 8);
    FillFrame(*frame, [&](int component, int x, int y) {
        const int code = component == 0 ? 16 + 3 * (x % 24) + 5 * (y % 24) : component < 3 ? 128 : 200;
        return static_cast<uint16_t>(code * step);
    });
    return frame;
}

/// Whether a pixel is the grid's at column `x` and row `y`, within a step of 8 bits.
bool IsOfGrid(const Pixel& pixel, int x, int y) {
    const double grey = (3 * (x % 24) + 5 * (y % 24)) / 219. * 65535;
    const auto isNear = [&](int32_t channel) { return std::abs(channel - grey) <= 260; };
    return isNear(pixel.R) && isNear(pixel.G) && isNear(pixel.B);
}

/// Expects the grid over an image of its size.
void ExpectGrid(Image& image) {
    for (int y = 0; y < image.Height; ++y)
        for (int x = 0; x < image.Width; ++x)
            ASSERT_TRUE(IsOfGrid(PixelAt(image, x, y), x, y)) << x << ", " << y;
}

} // namespace

// ---------------------------------------------------------------------------------------------------------
// The two ways

TEST_F(FrameConverterTest, FramesOfEightFormatsGoToTheHostAsTheyAre) {
    for (const AVPixelFormat format : directFormats) {
        const Scalings scalings;
        const TestFrame frame = MakeGrid(format, 32, 16);
        frame->color_range = AVCOL_RANGE_MPEG;
        const ImagePtr image = MakeImage(32, 16);
        ASSERT_TRUE(converter.ToImage(*frame, false, *image)) << av_get_pix_fmt_name(format);
        EXPECT_TRUE(scalings.targets.empty()) << av_get_pix_fmt_name(format);
        EXPECT_TRUE(FrameConverter::IsDirect(*frame, *image)) << av_get_pix_fmt_name(format);
    }
}

TEST_F(FrameConverterTest, SamplesOfYuyv422AreTakenLumaFirst) {
    for (const int width : {1, 2, 5, 32}) {
        const TestFrame frame = MakeGrid(AV_PIX_FMT_YUYV422, width, 4);
        const ImagePtr image = MakeImage(width, 4);
        ASSERT_TRUE(converter.ToImage(*frame, false, *image));
        ExpectGrid(*image);
    }
}

TEST_F(FrameConverterTest, AFrameOfAnotherSizeIsConvertedEvenIfTheHostHasItsFormat) {
    const TestFrame frame = MakeGrid(AV_PIX_FMT_YUV420P, 32, 16);
    for (const auto& [width, height] : {std::pair{31, 16}, {32, 17}, {40, 20}}) {
        const Scalings scalings;
        const ImagePtr image = MakeImage(width, height);
        ASSERT_TRUE(FrameConverter().ToImage(*frame, false, *image));
        EXPECT_EQ(scalings.targets, std::vector{AV_PIX_FMT_RGB48LE});
        EXPECT_FALSE(FrameConverter::IsDirect(*frame, *image));
    }
}

TEST_F(FrameConverterTest, OnlyTheCommonRowsAndColumnsOfALargerImageAreWritten) {
    const TestFrame frame = MakeGrid(AV_PIX_FMT_YUV420P, 20, 10);
    for (const ImageDataKind kind :
         {ImageData_RGBA8, ImageData_RGBA16, ImageData_RGBAHalf, ImageData_RGBAFloat}) {
        const ImagePtr image = MakeImage(24, 13, kind);
        FillImage(*image, 0x35);
        const Pixel untouched = GetPixelAt(*image, 23, 12);
        ASSERT_TRUE(converter.ToImage(*frame, false, *image));
        for (int row = 0; row < 13; ++row)
            for (int x = 0; x < 24; ++x) {
                const Pixel pixel = GetPixelAt(*image, x, row);
                const bool isCommon = x < 20 && row < 10;
                // The bottom rows of both are the common ones.
                const bool isRight = isCommon ? IsOfGrid(pixel, x, 9 - row) : pixel == untouched;
                ASSERT_TRUE(isRight) << x << ", " << row;
            }
    }
}

TEST_F(FrameConverterTest, ASmallerImageTakesTheFramesBottomRowsAndLeftColumns) {
    const TestFrame frame = MakeGrid(AV_PIX_FMT_YUV420P, 20, 10);
    const ImagePtr image = MakeImage(15, 7);
    ASSERT_TRUE(converter.ToImage(*frame, false, *image));
    for (int row = 0; row < 7; ++row)
        for (int x = 0; x < 15; ++x)
            EXPECT_TRUE(IsOfGrid(GetPixelAt(*image, x, row), x, 9 - row)) << x << ", " << row;
}

// ---------------------------------------------------------------------------------------------------------
// Alpha

TEST_F(FrameConverterTest, FourComponentsKeepAlpha) {
    for (const AVPixelFormat format : {AV_PIX_FMT_YUVA420P, AV_PIX_FMT_YUVA444P10LE, AV_PIX_FMT_BGRA}) {
        const TestFrame frame = MakeTestFrame(format, 16, 8);
        const int most = (1 << av_pix_fmt_desc_get(format)->comp[3].depth) - 1;
        FillFrame(*frame, [&](int component, int x, int) {
            return static_cast<uint16_t>(component == 3 ? most * x / 15 : most / 2);
        });
        const Scalings scalings;
        const ImagePtr image = MakeImage(16, 8);
        ASSERT_TRUE(converter.ToImage(*frame, false, *image));
        EXPECT_EQ(scalings.targets, std::vector{AV_PIX_FMT_RGBA64LE});
        for (int x = 0; x < 16; ++x)
            EXPECT_NEAR(PixelAt(*image, x, 3).A, 65535 * x / 15, 257) << av_get_pix_fmt_name(format);
    }
}

TEST_F(FrameConverterTest, ThreeComponentsAreOpaque) {
    const TestFrame frame = MakeGrid(AV_PIX_FMT_YUV444P, 16, 8);
    const Scalings scalings;
    const ImagePtr image = MakeImage(16, 8);
    ASSERT_TRUE(converter.ToImage(*frame, false, *image));
    EXPECT_EQ(scalings.targets, std::vector{AV_PIX_FMT_RGB48LE});
    EXPECT_EQ(PixelAt(*image, 7, 3).A, 65535);
}

TEST_F(FrameConverterTest, GreyWithAlphaIsConvertedToRgba) {
    const TestFrame frame = MakeTestFrame(AV_PIX_FMT_YA8, 16, 8);
    FillFrame(*frame, [](int component, int x, int) { return component == 1 ? 17 * x : 128; });
    const Scalings scalings;
    const ImagePtr image = MakeImage(16, 8);
    ASSERT_TRUE(converter.ToImage(*frame, false, *image));
    EXPECT_EQ(scalings.targets, std::vector{AV_PIX_FMT_RGBA64LE});
    for (int x = 0; x < 16; ++x)
        EXPECT_NEAR(PixelAt(*image, x, 3).A, 65535 * x / 15, 257);
    EXPECT_NEAR(PixelAt(*image, 3, 3).G, 32896, 257);
}

TEST_F(FrameConverterTest, Bit0x80OfTheFramesOwnFlagsAsksForAlpha) {
    const TestFrame frame = MakeGrid(AV_PIX_FMT_YUV444P, 16, 8);
    frame->flags |= 0x80;
    const Scalings scalings;
    const ImagePtr image = MakeImage(16, 8);
    ASSERT_TRUE(converter.ToImage(*frame, false, *image));
    EXPECT_EQ(scalings.targets, std::vector{AV_PIX_FMT_RGBA64LE});
    EXPECT_EQ(PixelAt(*image, 7, 3).A, 65535);
}

TEST_F(FrameConverterTest, APaletteIsOneComponentAndOpaque) {
    const TestFrame frame = MakeTestFrame(AV_PIX_FMT_PAL8, 16, 8);
    std::memset(frame->data[1], 0x80, AVPALETTE_SIZE);
    const ImagePtr image = MakeImage(16, 8);
    ASSERT_TRUE(converter.ToImage(*frame, false, *image));
    EXPECT_EQ(PixelAt(*image, 7, 3).A, 65535);
}

// ---------------------------------------------------------------------------------------------------------
// Range and matrix

namespace {

/// Grey of a flat frame of luma 235, to the next of 8 bits.
int GreyOf235(FrameConverter& converter, const AVFrame& frame, bool isFullRange) {
    const ImagePtr image = MakeImage(frame.width, frame.height);
    EXPECT_TRUE(converter.ToImage(frame, isFullRange, *image));
    return (PixelAt(*image, 0, 0).G + 128) / 257;
}

TestFrame MakeFlat(AVPixelFormat format, int width = 16, int height = 8) {
    TestFrame frame = MakeTestFrame(format, width, height);
    FillFrame(*frame, [](int component, int, int) { return component == 0 ? 235 : 128; });
    return frame;
}

} // namespace

TEST_F(FrameConverterTest, TheHostIsToldTheCallersRange) {
    const TestFrame frame = MakeFlat(AV_PIX_FMT_YUV420P);
    frame->color_range = AVCOL_RANGE_JPEG;
    EXPECT_EQ(GreyOf235(converter, *frame, false), 255);
    EXPECT_EQ(GreyOf235(converter, *frame, true), 235);
}

TEST_F(FrameConverterTest, AFrameOfAnotherFormatGoesByItsOwnRangeAndByTheCallersIfItHasNone) {
    const TestFrame frame = MakeFlat(AV_PIX_FMT_YUV444P);
    const auto greyOf = [&](AVColorRange range, bool isFullRange) {
        frame->color_range = range;
        return GreyOf235(converter, *frame, isFullRange);
    };
    EXPECT_NEAR(greyOf(AVCOL_RANGE_MPEG, true), 255, 1);
    EXPECT_NEAR(greyOf(AVCOL_RANGE_JPEG, false), 235, 1);
    EXPECT_NEAR(greyOf(AVCOL_RANGE_UNSPECIFIED, false), 255, 1);
    EXPECT_NEAR(greyOf(AVCOL_RANGE_UNSPECIFIED, true), 235, 1);
}

TEST_F(FrameConverterTest, FormatsOfJpegUseEveryCodeWhateverTheFrameSays) {
    for (const AVPixelFormat format : {AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUVJ444P,
                                       AV_PIX_FMT_YUVJ440P, AV_PIX_FMT_YUVJ411P}) {
        const TestFrame frame = MakeFlat(format);
        frame->color_range = AVCOL_RANGE_MPEG;
        EXPECT_NEAR(GreyOf235(converter, *frame, false), 235, 1) << av_get_pix_fmt_name(format);
    }
}

TEST_F(FrameConverterTest, GreyUsesEveryCodeUnlessTheFrameSaysOtherwise) {
    const TestFrame frame = MakeFlat(AV_PIX_FMT_GRAY8);
    EXPECT_NEAR(GreyOf235(converter, *frame, false), 235, 1);
    frame->color_range = AVCOL_RANGE_MPEG;
    EXPECT_NEAR(GreyOf235(converter, *frame, false), 255, 1);
}

TEST_F(FrameConverterTest, MatricesThatFFmpegDoesNotKnowAreBt709) {
    const TestFrame frame = MakeTestFrame(AV_PIX_FMT_YUV444P, 4, 4);
    FillFrame(*frame, [](int component, int, int) { return component == 0 ? 100 : 160; });
    const auto pixelOf = [&](int matrix) {
        frame->colorspace = static_cast<AVColorSpace>(matrix);
        const ImagePtr image = MakeImage(4, 4);
        EXPECT_TRUE(converter.ToImage(*frame, false, *image));
        return PixelAt(*image, 1, 1);
    };
    for (const int matrix : {0, 2, 3, 8, 11, 14})
        EXPECT_EQ(pixelOf(matrix), pixelOf(AVCOL_SPC_BT709)) << matrix;
    EXPECT_FALSE(pixelOf(AVCOL_SPC_BT470BG) == pixelOf(AVCOL_SPC_BT709));
}

// ---------------------------------------------------------------------------------------------------------
// The scaler that is kept

TEST_F(FrameConverterTest, OneConverterServesFramesOfChangingSizesAndFormats) {
    constexpr AVPixelFormat formats[] = {AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_YUVA420P,
                                         AV_PIX_FMT_YUV420P};
    for (int i = 0; i < 24; ++i) {
        const int width = 17 + i * 5 % 9, height = 12 + i * 7 % 5;
        const TestFrame frame = MakeGrid(formats[i % 4], width, height);
        const ImagePtr image = MakeImage(width, height);
        ASSERT_TRUE(converter.ToImage(*frame, false, *image));
        ExpectGrid(*image);
    }
}

TEST_F(FrameConverterTest, AKeptScalerTakesNothingFromTheFrameBefore) {
    const TestFrame frame = MakeFlat(AV_PIX_FMT_YUV444P);
    for (const AVColorRange range : {AVCOL_RANGE_JPEG, AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG}) {
        frame->color_range = range;
        EXPECT_NEAR(GreyOf235(converter, *frame, false), range == AVCOL_RANGE_JPEG ? 235 : 255, 1);
    }
}

TEST_F(FrameConverterTest, ColorsAreSetOnceForFramesThatAreAlike) {
    for (const AVPixelFormat format : {AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUVJ444P, AV_PIX_FMT_GRAY8}) {
        const TestFrame frame = MakeFlat(format);
        frame->color_range = AVCOL_RANGE_MPEG;
        const ColorSettings settings;
        for (int i = 0; i < 5; ++i)
            GreyOf235(converter, *frame, false);
        EXPECT_EQ(settings.count, 1) << av_get_pix_fmt_name(format);
    }
}

// ---------------------------------------------------------------------------------------------------------
// What can't be converted

TEST_F(FrameConverterTest, AFormatThatFFmpegDoesNotKnowFails) {
    const ImagePtr image = MakeImage(8, 8);
    for (const int format : {-1, 9999}) {
        const TestFrame frame = MakeTestFrame(AV_PIX_FMT_YUV444P, 8, 8);
        frame->format = format;
        EXPECT_FALSE(converter.ToImage(*frame, false, *image));
    }
}

TEST_F(FrameConverterTest, AFrameWithoutAPictureFails) {
    const ImagePtr image = MakeImage(8, 8);
    for (const AVPixelFormat format :
         {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUYV422, AV_PIX_FMT_NV12, AV_PIX_FMT_YUV444P, AV_PIX_FMT_BGRA}) {
        const TestFrame frame = MakeEmptyFrame(format, 8, 8);
        EXPECT_FALSE(converter.ToImage(*frame, false, *image)) << av_get_pix_fmt_name(format);
        frame->linesize[0] = 64;
        frame->linesize[1] = frame->linesize[2] = 32;
        EXPECT_FALSE(converter.ToImage(*frame, false, *image)) << av_get_pix_fmt_name(format);
    }
}

TEST_F(FrameConverterTest, AFrameThatLacksAPlaneFails) {
    const ImagePtr image = MakeImage(8, 8);
    for (const AVPixelFormat format :
         {AV_PIX_FMT_YUV420P, AV_PIX_FMT_NV12, AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUVA420P, AV_PIX_FMT_PAL8}) {
        const TestFrame frame = MakeTestFrame(format, 8, 8);
        frame->data[1] = nullptr;
        EXPECT_FALSE(converter.ToImage(*frame, false, *image)) << av_get_pix_fmt_name(format);
    }
}

TEST_F(FrameConverterTest, AFrameWithoutPixelsFails) {
    const ImagePtr image = MakeImage(8, 8);
    const ImagePtr empty = MakeImage(0, 0);
    for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUYV422, AV_PIX_FMT_YUV444P}) {
        for (const auto& [width, height] : {std::pair{0, 0}, {0, 8}, {8, 0}, {-8, 8}, {8, -8}}) {
            const TestFrame frame = MakeTestFrame(format, 8, 8);
            frame->width = width;
            frame->height = height;
            EXPECT_FALSE(converter.ToImage(*frame, false, *image));
            EXPECT_FALSE(converter.ToImage(*frame, false, *empty));
        }
    }
}

TEST_F(FrameConverterTest, AnImageWithoutPixelsTakesNothingOfAFrame) {
    const TestFrame frame = MakeGrid(AV_PIX_FMT_YUV420P, 8, 8);
    for (const auto& [width, height] : {std::pair{0, 0}, {0, 8}, {8, 0}}) {
        const ImagePtr image = MakeImage(width, height);
        EXPECT_TRUE(converter.ToImage(*frame, false, *image));
    }
}

TEST_F(FrameConverterTest, AnImageWithoutMainDataStaysAsItIs) {
    const ImagePtr image = MakeImage(8, 8);
    image->RowTable = nullptr;
    EXPECT_FALSE(converter.ToImage(*MakeGrid(AV_PIX_FMT_YUV420P, 8, 8), false, *image));
    EXPECT_TRUE(converter.ToImage(*MakeGrid(AV_PIX_FMT_YUV444P, 8, 8), false, *image));
    EXPECT_TRUE(converter.ToImage(*MakeGrid(AV_PIX_FMT_YUVA420P, 8, 8), false, *image));
}
