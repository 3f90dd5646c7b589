// The frames that encoders get: formats of planes, and those that libswscale makes.

#include "ffmpeg/FFmpegSpy.h"
#include "ffmpeg/FrameConverter.h"
#include "ffmpeg/FramePatches.h"

#include <gtest/gtest.h>

#include <string>

using namespace CxFFMPEG;
using namespace frame_patches;

namespace {

struct ContextFree {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
using TestContext = std::unique_ptr<AVCodecContext, ContextFree>;

/// What an encoder's context says of its pictures.
TestContext MakeContext(const Format& format) {
    TestContext context(avcodec_alloc_context3(nullptr));
    context->pix_fmt = format.format;
    context->color_range = format.range;
    context->colorspace = format.matrix;
    return context;
}

struct FrameRelease {
    void operator()(AVFrame* frame) const { ReleaseFrame(frame); }
};
using MadeFrame = std::unique_ptr<AVFrame, FrameRelease>;

/// Words of one colour.
TestFrame MakeWords(int columns, int rows, const Color& color) {
    TestFrame words = MakeTestFrame(AV_PIX_FMT_RGB48LE, columns, rows);
    FillFrame(*words, [&](int component, int, int) {
        return static_cast<uint16_t>(std::lround(65535 * color[static_cast<size_t>(component)]));
    });
    return words;
}

Codes ReadCodes(const AVFrame& frame, int x, int y) {
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    Codes codes = {};
    for (int c = 0; c < format.nb_components; ++c) {
        const bool isChroma = (c == 1 || c == 2) && (format.flags & AV_PIX_FMT_FLAG_RGB) == 0;
        av_read_image_line(&codes[static_cast<size_t>(c)], const_cast<const uint8_t**>(frame.data),
                           frame.linesize, &format, isChroma ? x >> format.log2_chroma_w : x,
                           isChroma ? y >> format.log2_chroma_h : y, c, 1, 0);
    }
    return codes;
}

class FrameConverterEncoder : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadFFmpeg()); }

    MadeFrame Make(const AVFrame& words, const Format& format) {
        return MadeFrame(converter.ForEncoder(words, *MakeContext(format), *image));
    }
    /// The codes of a picture of one colour.
    Codes CodesMade(const Color& color, const Format& format) {
        const MadeFrame made = Make(*MakeWords(32, 8, color), format);
        return made ? ReadCodes(*made, 16, 4) : Codes{};
    }

    FrameConverter converter;
    const ImagePtr image = MakeImage(1, 1);
};

constexpr Color red = {1, 0, 0, 1};

/// Counts what libswscale is asked.
class ScalerSpy {
public:
    ScalerSpy()
        : told_(&FFmpegFunctions::sws_setColorspaceDetails, Tell),
          scaled_(&FFmpegFunctions::sws_scale, Scale) {
        tellings = scalings = 0;
    }

    static inline int tellings = 0;
    static inline int scalings = 0;

private:
    static int Tell(SwsContext* scaler, const int from[4], int isFromFull, const int to[4], int isToFull,
                    int brightness, int contrast, int saturation) {
        ++tellings;
        return sws_setColorspaceDetails(scaler, from, isFromFull, to, isToFull, brightness, contrast,
                                        saturation);
    }
    static int Scale(SwsContext* scaler, const uint8_t* const data[], const int strides[], int y, int height,
                     uint8_t* const to[], const int toStrides[]) {
        ++scalings;
        return sws_scale(scaler, data, strides, y, height, to, toStrides);
    }

    ReplacedFunction<decltype(sws_setColorspaceDetails)> told_;
    ReplacedFunction<decltype(sws_scale)> scaled_;
};

/// Formats of Y'CbCr and grey that libswscale makes.
constexpr AVPixelFormat scaledFormats[] = {AV_PIX_FMT_NV12,    AV_PIX_FMT_P010LE,  AV_PIX_FMT_YUV411P,
                                           AV_PIX_FMT_YUYV422, AV_PIX_FMT_UYVY422, AV_PIX_FMT_YUV420P10BE,
                                           AV_PIX_FMT_GRAY8,   AV_PIX_FMT_GRAY10LE};

} // namespace

// ---------------------------------------------------------------------------------------------------------
// Colours

TEST_F(FrameConverterEncoder, PlanesHaveTheMatrixThatTheEncoderSays) {
    for (const AVColorSpace matrix : {AVCOL_SPC_BT709, AVCOL_SPC_BT470BG, AVCOL_SPC_BT2020_NCL}) {
        const Format format = {AV_PIX_FMT_YUV444P10LE, AVCOL_RANGE_UNSPECIFIED, matrix};
        EXPECT_EQ(CodesMade(red, format), CodesOf(format, red)) << matrix;
    }
}

TEST_F(FrameConverterEncoder, WithoutAMatrixItIsBt709) {
    for (const AVColorSpace matrix : {AVCOL_SPC_UNSPECIFIED, AVCOL_SPC_RGB, AVCOL_SPC_YCGCO})
        EXPECT_EQ(CodesMade(red, {AV_PIX_FMT_YUV444P, AVCOL_RANGE_UNSPECIFIED, matrix}),
                  CodesOf({AV_PIX_FMT_YUV444P}, red));
}

TEST_F(FrameConverterEncoder, TheRangeIsTheEncoders) {
    for (const AVColorRange range : {AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG})
        EXPECT_EQ(CodesMade(red, {AV_PIX_FMT_YUV422P, range}), CodesOf({AV_PIX_FMT_YUV422P, range}, red));
}

TEST_F(FrameConverterEncoder, TheFormatsOfJpegAreFullWhateverTheEncoderSays) {
    for (const AVColorRange range : {AVCOL_RANGE_UNSPECIFIED, AVCOL_RANGE_MPEG})
        EXPECT_EQ(CodesMade(red, {AV_PIX_FMT_YUVJ444P, range}),
                  CodesOf({AV_PIX_FMT_YUVJ444P, AVCOL_RANGE_JPEG}, red));
}

TEST_F(FrameConverterEncoder, LibswscaleIsToldTheColorsToo) {
    for (const AVColorSpace matrix : {AVCOL_SPC_BT709, AVCOL_SPC_SMPTE170M, AVCOL_SPC_BT2020_NCL}) {
        for (const AVColorRange range : {AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG}) {
            for (const AVPixelFormat pixelFormat : scaledFormats) {
                const Format format = {pixelFormat, range, matrix};
                for (const Color& color : {red, Color{0, 1, 0, 1}, Color{0.2, 0.4, 0.9, 1}}) {
                    const std::array<double, 4> expected = ExactCodesOf(format, color);
                    const Codes codes = CodesMade(color, format);
                    const double step = std::ldexp(1, format.Descriptor().comp[0].depth - 8);
                    for (size_t c = 0; c < static_cast<size_t>(format.Components()); ++c)
                        EXPECT_NEAR(codes[c], expected[c], 1.5 * step)
                            << testing::PrintToString(format) << ", component " << c;
                }
            }
        }
    }
}

TEST_F(FrameConverterEncoder, FramesOfRgbKeepTheirCodes) {
    const Color color = {0.2, 0.4, 0.9, 1};
    for (const AVPixelFormat pixelFormat : {AV_PIX_FMT_RGB24, AV_PIX_FMT_GBRP, AV_PIX_FMT_GBRP10LE}) {
        const Format format = {pixelFormat};
        const Codes codes = CodesMade(color, format), expected = CodesOf(format, color);
        for (size_t c = 0; c < 3; ++c)
            EXPECT_NEAR(codes[c], expected[c], 1) << av_get_pix_fmt_name(pixelFormat);
    }
}

TEST_F(FrameConverterEncoder, BytesAreTheNearestToTheirWords) {
    const TestFrame words = MakeTestFrame(AV_PIX_FMT_RGB48LE, 256, 256);
    FillFrame(*words, [](int component, int x, int y) {
        return static_cast<uint16_t>((component % 2 == 0 ? y : 255 - y) * 256 + x);
    });
    const MadeFrame made = Make(*words, {AV_PIX_FMT_RGB24});
    ASSERT_NE(made, nullptr);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x)
            ASSERT_EQ(ReadCodes(*made, x, y)[0], std::lround((256 * y + x) / 257.));
}

TEST_F(FrameConverterEncoder, FormatsOfFewColorsAreDithered) {
    for (const Color& color : {red, Color{0.2, 0.4, 0.9, 1}, Color{0.5, 0.5, 0.5, 1}}) {
        const MadeFrame made = Make(*MakeWords(64, 64, color), {AV_PIX_FMT_RGB8});
        ASSERT_NE(made, nullptr);
        Color mean = {};
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 64; ++x) {
                // Three bits of red, three of green, two of blue: not as the format's descriptor has it.
                const uint8_t code = made->data[0][y * made->linesize[0] + x];
                const double channels[] = {(code >> 5) / 7., (code >> 2 & 7) / 7., (code & 3) / 3.};
                for (size_t c = 0; c < 3; ++c)
                    mean[c] += channels[c] / (64 * 64);
            }
        }
        for (size_t c = 0; c < 3; ++c)
            EXPECT_NEAR(mean[c], color[c], 0.02) << "component " << c;
    }
}

TEST_F(FrameConverterEncoder, EncodersOfDifferentColorsCanTakeTurns) {
    for (const AVPixelFormat pixelFormat : {AV_PIX_FMT_YUV444P, AV_PIX_FMT_UYVY422}) {
        for (const AVColorSpace matrix :
             {AVCOL_SPC_BT709, AVCOL_SPC_SMPTE170M, AVCOL_SPC_BT709, AVCOL_SPC_BT2020_NCL}) {
            const Format format = {pixelFormat, AVCOL_RANGE_MPEG, matrix};
            const Codes codes = CodesMade(red, format), expected = CodesOf(format, red);
            for (size_t c = 0; c < 3; ++c)
                EXPECT_NEAR(codes[c], expected[c], 1) << matrix;
        }
    }
}

// ---------------------------------------------------------------------------------------------------------
// Frames

TEST_F(FrameConverterEncoder, TheFrameSaysItsColorsAndHasAPictureInMemoryOfItsOwn) {
    const TestContext context = MakeContext({AV_PIX_FMT_YUV420P, AVCOL_RANGE_MPEG, AVCOL_SPC_BT2020_NCL});
    context->color_primaries = AVCOL_PRI_BT2020;
    context->color_trc = AVCOL_TRC_ARIB_STD_B67;
    AVFrame* made = converter.ForEncoder(*MakeWords(33, 5, red), *context, *image);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->format, AV_PIX_FMT_YUV420P);
    EXPECT_EQ(made->width, 33);
    EXPECT_EQ(made->height, 5);
    EXPECT_EQ(made->linesize[0] % 32, 0);
    EXPECT_EQ(made->buf[0], nullptr);
    EXPECT_EQ(made->color_range, AVCOL_RANGE_MPEG);
    EXPECT_EQ(made->colorspace, AVCOL_SPC_BT2020_NCL);
    EXPECT_EQ(made->color_primaries, AVCOL_PRI_BT2020);
    EXPECT_EQ(made->color_trc, AVCOL_TRC_ARIB_STD_B67);
    ReleaseFrame(made);
    EXPECT_EQ(made, nullptr);
}

TEST_F(FrameConverterEncoder, PlanesNeedNoScaler) {
    const ScalerSpy spy;
    EXPECT_NE(Make(*MakeWords(16, 4, red), {AV_PIX_FMT_YUV422P10LE}), nullptr);
    EXPECT_EQ(ScalerSpy::scalings, 0);
}

TEST_F(FrameConverterEncoder, TheScalerIsToldItsColorsOnceForFramesThatAreAlike) {
    const ScalerSpy spy;
    for (int i = 0; i < 5; ++i)
        EXPECT_NE(Make(*MakeWords(16, 4, red), {AV_PIX_FMT_NV12}), nullptr);
    EXPECT_EQ(ScalerSpy::tellings, 1);
    EXPECT_EQ(ScalerSpy::scalings, 5);
}

TEST_F(FrameConverterEncoder, NoFrameIsMadeOfAFormatThatFFmpegDoesNotKnow) {
    for (const int format : {-1, int{AV_PIX_FMT_NB}})
        EXPECT_EQ(Make(*MakeWords(16, 4, red), {static_cast<AVPixelFormat>(format)}), nullptr);
}

TEST_F(FrameConverterEncoder, EachFailureOnTheWayFailsAndTheNextFrameSucceeds) {
    const auto expectFailure = [&](const auto& failing) {
        (void)failing;
        EXPECT_EQ(Make(*MakeWords(16, 4, red), {AV_PIX_FMT_NV12}), nullptr);
    };
    const auto expectSuccess = [&] { EXPECT_NE(Make(*MakeWords(16, 4, red), {AV_PIX_FMT_NV12}), nullptr); };
    expectFailure(ReplacedFunction<decltype(av_frame_alloc)>(&FFmpegFunctions::av_frame_alloc,
                                                             []() -> AVFrame* { return nullptr; }));
    expectSuccess();
    expectFailure(ReplacedFunction<decltype(av_image_alloc)>(
        &FFmpegFunctions::av_image_alloc,
        [](uint8_t**, int*, int, int, AVPixelFormat, int) { return AVERROR(ENOMEM); }));
    expectSuccess();
    expectFailure(ReplacedFunction<decltype(sws_scale)>(
        &FFmpegFunctions::sws_scale, [](SwsContext*, const uint8_t* const*, const int*, int, int,
                                        uint8_t* const*, const int*) { return 0; }));
    expectSuccess();
}
