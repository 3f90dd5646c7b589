// The planes that encoders get, beside what they should be in double precision.

#include "ffmpeg/PlaneWriter.h"
#include "ffmpeg/FramePatches.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

using namespace CxFFMPEG;
using namespace frame_patches;

namespace {

// ---------------------------------------------------------------------------------------------------------
// The model

/// A pixel of those that a sample is made of, counted from the sample's own.
struct Tap {
    int offset;
    double weight;
};

std::vector<Tap> Columns(bool isHalved) {
    return isHalved ? std::vector<Tap>{{-1, 0.25}, {0, 0.5}, {1, 0.25}} : std::vector<Tap>{{0, 1}};
}
std::vector<Tap> Rows(bool isHalved) {
    return isHalved ? std::vector<Tap>{{0, 0.5}, {1, 0.5}} : std::vector<Tap>{{0, 1}};
}

uint16_t WordAt(const AVFrame& words, int x, int y, int channel) {
    uint16_t word;
    std::memcpy(&word, words.data[0] + y * words.linesize[0] + 6 * x + 2 * channel, 2);
    return word;
}

/// R, G, B around the place of a sample; beyond the edges the outermost pixel repeats.
Color ColorAround(const AVFrame& words, int x, int y, const std::vector<Tap>& columns,
                  const std::vector<Tap>& rows) {
    Color color = {0, 0, 0, 1};
    for (const Tap& row : rows) {
        for (const Tap& column : columns) {
            const int atX = std::clamp(x + column.offset, 0, words.width - 1);
            const int atY = std::min(y + row.offset, words.height - 1);
            for (int c = 0; c < 3; ++c)
                color[static_cast<size_t>(c)] +=
                    row.weight * column.weight * WordAt(words, atX, atY, c) / 65535.;
        }
    }
    return color;
}

int ReadCode(const AVFrame& picture, int component, int column, int row) {
    const AVComponentDescriptor& place =
        av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format))->comp[component];
    const uint8_t* const at =
        picture.data[place.plane] + row * picture.linesize[place.plane] + column * place.step;
    return place.step == 1 ? at[0] : at[0] + 256 * at[1];
}

/// How far a code may be from the exact one: half a step, and what single precision takes off.
double Tolerance(const Format& format) { return format.Descriptor().comp[0].depth < 14 ? 0.501 : 0.53; }

/// Expects every code of a picture to be the nearest one.
void ExpectLikeModel(const AVFrame& words, const AVFrame& picture, const Format& format) {
    const AVPixFmtDescriptor& descriptor = format.Descriptor();
    for (int c = 0; c < format.Components(); ++c) {
        const bool isChroma = c == 1 || c == 2;
        const int across = isChroma ? descriptor.log2_chroma_w : 0;
        const int down = isChroma ? descriptor.log2_chroma_h : 0;
        for (int y = 0; y < SamplesOf(picture.height, down); ++y) {
            for (int x = 0; x < SamplesOf(picture.width, across); ++x) {
                const Color color =
                    ColorAround(words, x << across, y << down, Columns(across != 0), Rows(down != 0));
                const double expected = ExactCodesOf(format, color)[static_cast<size_t>(c)];
                ASSERT_NEAR(ReadCode(picture, c, x, y), expected, Tolerance(format))
                    << "component " << c << " at " << x << ", " << y;
            }
        }
    }
}

// ---------------------------------------------------------------------------------------------------------
// Pictures

TestFrame MakeWords(int width, int height, const std::function<uint16_t()>& next) {
    TestFrame words = MakeTestFrame(AV_PIX_FMT_RGB48LE, width, height);
    FillFrame(*words, [&](int, int, int) { return next(); });
    return words;
}

TestFrame MakePicture(const Format& format, int width, int height) {
    TestFrame picture = MakeTestFrame(format.format, width, height);
    picture->color_range = format.range;
    picture->colorspace = format.matrix;
    return picture;
}

TestFrame Write(const AVFrame& words, const Format& format) {
    TestFrame picture = MakePicture(format, words.width, words.height);
    const ImagePtr image = MakeImage(1, 1);
    EXPECT_TRUE(WritePlanes(words, *picture, *image));
    return picture;
}

class PlaneWriter : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadFFmpeg()); }
};

class PlaneWriterOf : public testing::TestWithParam<Format> {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadFFmpeg()); }
};

/// Of all kinds of planes: depths, chroma, alpha.
constexpr AVPixelFormat kindsOfPlanes[] = {
    AV_PIX_FMT_YUV420P,     AV_PIX_FMT_YUV422P,     AV_PIX_FMT_YUV444P,     AV_PIX_FMT_YUV440P,
    AV_PIX_FMT_YUV420P9LE,  AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_YUV422P10LE, AV_PIX_FMT_YUV444P10LE,
    AV_PIX_FMT_YUV422P12LE, AV_PIX_FMT_YUV444P14LE, AV_PIX_FMT_YUV444P16LE, AV_PIX_FMT_YUVA420P,
    AV_PIX_FMT_YUVA422P,    AV_PIX_FMT_YUVA444P,    AV_PIX_FMT_YUVA444P10LE};

std::vector<Format> AllFormats() {
    std::vector<Format> formats;
    for (const AVPixelFormat format : kindsOfPlanes)
        for (const AVColorRange range : {AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG})
            formats.push_back({format, range});
    for (const AVColorSpace matrix : {AVCOL_SPC_FCC, AVCOL_SPC_BT470BG, AVCOL_SPC_SMPTE170M,
                                      AVCOL_SPC_SMPTE240M, AVCOL_SPC_BT2020_NCL, AVCOL_SPC_BT2020_CL})
        formats.push_back({AV_PIX_FMT_YUV422P10LE, AVCOL_RANGE_MPEG, matrix});
    for (const AVPixelFormat format :
         {AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUVJ444P, AV_PIX_FMT_YUVJ440P})
        formats.push_back({format, AVCOL_RANGE_JPEG, AVCOL_SPC_BT470BG});
    return formats;
}

std::string NameOf(const testing::TestParamInfo<Format>& info) {
    const char* const range = info.param.IsFull() ? "_full_" : "_video_";
    return info.param.Descriptor().name + (range + std::to_string(info.param.matrix));
}

} // namespace

// ---------------------------------------------------------------------------------------------------------
// Codes

TEST_P(PlaneWriterOf, CodesAreThoseOfTheModel) {
    std::mt19937 random = MakeRandom();
    const TestFrame words = MakeWords(37, 6, [&] { return static_cast<uint16_t>(random()); });
    ExpectLikeModel(*words, *Write(*words, GetParam()), GetParam());
}

TEST_P(PlaneWriterOf, ExtremeColorsStayWithinTheirCodes) {
    std::mt19937 random = MakeRandom();
    const TestFrame words =
        MakeWords(64, 4, [&] { return static_cast<uint16_t>(random() % 2 == 0 ? 0 : 65535); });
    ExpectLikeModel(*words, *Write(*words, GetParam()), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Formats, PlaneWriterOf, testing::ValuesIn(AllFormats()), NameOf);

TEST_F(PlaneWriter, FlatColorsAreTheNearestCodes) {
    std::mt19937 random = MakeRandom();
    std::uniform_int_distribution<uint16_t> word;
    for (const Format& format : AllFormats()) {
        for (int i = 0; i < 20; ++i) {
            const std::array<uint16_t, 3> channels = {word(random), word(random), word(random)};
            const TestFrame words = MakeTestFrame(AV_PIX_FMT_RGB48LE, 8, 4);
            FillFrame(*words, [&](int c, int, int) { return channels[static_cast<size_t>(c)]; });
            const TestFrame picture = Write(*words, format);
            const auto values =
                ExactCodesOf(format, {channels[0] / 65535., channels[1] / 65535., channels[2] / 65535., 1});
            for (int c = 0; c < format.Components(); ++c)
                EXPECT_NEAR(ReadCode(*picture, c, 1, 1), values[static_cast<size_t>(c)], Tolerance(format))
                    << testing::PrintToString(format);
        }
    }
}

TEST_F(PlaneWriter, BlackAndWhiteOfVideoRangeAre64And940InTenBits) {
    const Format format = {AV_PIX_FMT_YUV420P10LE};
    EXPECT_EQ(ReadCode(*Write(*MakeWords(4, 2, [] { return 0; }), format), 0, 1, 1), 64);
    const TestFrame white = Write(*MakeWords(4, 2, [] { return 65535; }), format);
    EXPECT_EQ(ReadCode(*white, 0, 1, 1), 940);
    EXPECT_EQ(ReadCode(*white, 1, 0, 0), 512);
    EXPECT_EQ(ReadCode(*white, 2, 0, 0), 512);
}

TEST_F(PlaneWriter, AlphaIsOpaque) {
    std::mt19937 random = MakeRandom();
    for (const AVPixelFormat format : {AV_PIX_FMT_YUVA420P, AV_PIX_FMT_YUVA444P10LE}) {
        const TestFrame words = MakeWords(33, 5, [&] { return static_cast<uint16_t>(random()); });
        const TestFrame picture = Write(*words, {format});
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 33; ++x)
                ASSERT_EQ(ReadCode(*picture, 3, x, y), format == AV_PIX_FMT_YUVA420P ? 255 : 1023);
    }
}

// ---------------------------------------------------------------------------------------------------------
// Sizes

TEST_F(PlaneWriter, EverySizeHasTheCodesOfTheModel) {
    std::mt19937 random = MakeRandom();
    for (const int width : {1, 2, 3, 15, 16, 17, 31, 255, 256, 257, 511, 513, 600}) {
        for (const int height : {1, 2, 3}) {
            for (const AVPixelFormat format :
                 {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P10LE, AV_PIX_FMT_YUV444P}) {
                SCOPED_TRACE(testing::Message()
                             << av_get_pix_fmt_name(format) << ", " << width << " x " << height);
                const TestFrame words =
                    MakeWords(width, height, [&] { return static_cast<uint16_t>(random()); });
                ExpectLikeModel(*words, *Write(*words, {format}), {format});
            }
        }
    }
}

namespace {

/// A frame whose planes each end at a page that may not be touched, with no byte behind a line.
class TightFrame {
public:
    TightFrame(const Format& format, int width, int height)
        : frame(MakeEmptyFrame(format.format, width, height)) {
        frame->color_range = format.range;
        for (int plane = 0; plane < av_pix_fmt_count_planes(format.format); ++plane) {
            const bool isChroma = plane == 1 || plane == 2;
            const int rows = SamplesOf(height, isChroma ? format.Descriptor().log2_chroma_h : 0);
            frame->linesize[plane] = av_image_get_linesize(format.format, width, plane);
            memory.push_back(std::make_unique<GuardedBytes>(
                static_cast<size_t>(frame->linesize[plane] * rows), GuardedBytes::Guard::Behind));
            frame->data[plane] = memory.back()->data();
        }
    }

    TestFrame frame;

private:
    std::vector<std::unique_ptr<GuardedBytes>> memory;
};

} // namespace

TEST_F(PlaneWriter, NoByteOutsideThePlanesIsTouched) {
    std::mt19937 random = MakeRandom();
    const ImagePtr image = MakeImage(1, 1);
    for (const int64_t target : VectorTargets()) {
        const ForcedTarget forced(target);
        for (const AVPixelFormat format : kindsOfPlanes) {
            for (const int width : {1, 2, 7, 16, 33, 257}) {
                const TightFrame words({AV_PIX_FMT_RGB48LE, AVCOL_RANGE_UNSPECIFIED}, width, 3);
                FillFrame(*words.frame, [&](int, int, int) { return static_cast<uint16_t>(random()); });
                const TightFrame picture({format}, width, 3);
                ASSERT_TRUE(WritePlanes(*words.frame, *picture.frame, *image));
                ExpectLikeModel(*words.frame, *picture.frame, {format});
            }
        }
    }
}

// ---------------------------------------------------------------------------------------------------------
// Forms and formats

TEST_F(PlaneWriter, TheScalarFormGivesTheSamePicture) {
    std::mt19937 random = MakeRandom();
    const TestFrame words = MakeWords(301, 5, [&] { return static_cast<uint16_t>(random()); });
    const ImagePtr image = MakeImage(1, 1);
    for (const AVPixelFormat format : kindsOfPlanes) {
        const TestFrame vector = Write(*words, {format});
        const TestFrame scalar = MakePicture({format}, words->width, words->height);
        ASSERT_TRUE(WritePlanes(*words, *scalar, *image, ScalarPlaneKernels()));
        for (int plane = 0; plane < av_pix_fmt_count_planes(format); ++plane) {
            const bool isChroma = plane == 1 || plane == 2;
            const int rows = SamplesOf(5, isChroma ? av_pix_fmt_desc_get(format)->log2_chroma_h : 0);
            const auto bytes = static_cast<size_t>(av_image_get_linesize(format, words->width, plane));
            for (int y = 0; y < rows; ++y)
                ASSERT_EQ(std::memcmp(vector->data[plane] + y * vector->linesize[plane],
                                      scalar->data[plane] + y * scalar->linesize[plane], bytes),
                          0)
                    << av_get_pix_fmt_name(format);
        }
    }
}

TEST_F(PlaneWriter, HasTheFormatsOfPlanesAndNoOthers) {
    for (const Format& format : AllFormats())
        EXPECT_TRUE(HasWritablePlanes(format.format)) << format.Descriptor().name;
    for (const AVPixelFormat format :
         {AV_PIX_FMT_NONE,        AV_PIX_FMT_RGB8,        AV_PIX_FMT_RGB24,   AV_PIX_FMT_RGB48LE,
          AV_PIX_FMT_GBRP,        AV_PIX_FMT_GBRP10LE,    AV_PIX_FMT_GBRAP,   AV_PIX_FMT_PAL8,
          AV_PIX_FMT_GRAY8,       AV_PIX_FMT_YA8,         AV_PIX_FMT_YUYV422, AV_PIX_FMT_UYVY422,
          AV_PIX_FMT_NV12,        AV_PIX_FMT_P010LE,      AV_PIX_FMT_YUV410P, AV_PIX_FMT_YUV411P,
          AV_PIX_FMT_YUV420P10BE, AV_PIX_FMT_YUV444P16BE, AV_PIX_FMT_XYZ12LE, AV_PIX_FMT_VAAPI})
        EXPECT_FALSE(HasWritablePlanes(format)) << av_get_pix_fmt_name(format);
    EXPECT_FALSE(HasWritablePlanes(AV_PIX_FMT_NB));
}
