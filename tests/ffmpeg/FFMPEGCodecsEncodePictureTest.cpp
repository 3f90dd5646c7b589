// What FFmpeg's own decoders find in the packets: size, format, tags, and the colours that these mean.

#include "ffmpeg/EncodeTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace CxFFMPEG;
using namespace frame_patches;

namespace {

/// An encoder, what it takes, and how it is told to lose as little as it can.
struct Case {
    const char* encoder;
    AVPixelFormat format;
    AVColorSpace matrix = AVCOL_SPC_BT709;
    EncoderOptions options = {};
    AVPixelFormat decoded = AV_PIX_FMT_NONE; ///< the decoder's format, where it is another one
};

void PrintTo(const Case& encoded, std::ostream* out) {
    *out << encoded.encoder << ", " << av_get_pix_fmt_name(encoded.format) << ", matrix " << encoded.matrix;
}

/// Encodes an image and decodes the packet.
std::vector<TestFrame> RoundTrip(const Case& encoded, Image& image) {
    TestEncoder encoder(image.Width, image.Height);
    encoder.options = encoded.options;
    encoder.settings.bitRate = 40'000'000;
    encoder.settings.value11 = static_cast<uint16_t>(encoded.matrix);
    EXPECT_EQ(encoder.Open(EntryOf(encoded.encoder, encoded.format)), CxAV_OK);
    if (encoder.codec.Context() == nullptr) return {};
    EXPECT_EQ(encoder.Encode(&image), CxAV_OK);
    EXPECT_EQ(encoder.Drain(), CxAV_INVALID_STATE);
    return Decode(encoder);
}

/// The colour of a pixel, by format and tags of its frame.
Color ColorAt(const AVFrame& frame, int x, int y) {
    const Format format = {static_cast<AVPixelFormat>(frame.format), frame.color_range, frame.colorspace};
    const AVPixFmtDescriptor& descriptor = format.Descriptor();
    Codes codes = {};
    for (int c = 0; c < format.Components(); ++c) {
        const bool isChroma = (c == 1 || c == 2) && !format.IsRgb();
        uint16_t code = 0;
        av_read_image_line(&code, const_cast<const uint8_t**>(frame.data), frame.linesize, &descriptor,
                           isChroma ? x >> descriptor.log2_chroma_w : x,
                           isChroma ? y >> descriptor.log2_chroma_h : y, c, 1, 0);
        codes[static_cast<size_t>(c)] = code;
    }
    return ColorOf(format, codes);
}

Pixel PixelOf(const Color& color) {
    const auto word = [](double channel) { return static_cast<uint16_t>(std::lround(channel * 65535)); };
    return {word(color[0]), word(color[1]), word(color[2]), word(color[3])};
}

/// An image of patches, black and white among them, and their colours.
struct PatchImage {
    ImagePtr image = MakeImage(width, height);
    std::vector<Color> colors;

    explicit PatchImage(std::mt19937& random) {
        std::uniform_real_distribution<double> channel(0, 1);
        for (int i = 0; i < across * down; ++i)
            colors.push_back(i < 2 ? Color{double(i), double(i), double(i), 1}
                                   : Color{channel(random), channel(random), channel(random), 1});
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                SetPixelAt(*image, x, height - 1 - y, PixelOf(colors[PatchAt(x, y)]));
    }
};

/// The greatest distance of a channel in the middles of the patches, in steps of 8 bits.
double MostApart(const AVFrame& frame, const PatchImage& patches) {
    double most = 0;
    for (int y = patchSize / 2; y < height; y += patchSize) {
        for (int x = patchSize / 2; x < width; x += patchSize) {
            const Color decoded = ColorAt(frame, x, y);
            for (size_t c = 0; c < 4; ++c)
                most = std::max(most, 255 * std::fabs(decoded[c] - patches.colors[PatchAt(x, y)][c]));
        }
    }
    return most;
}

/// A picture that changes little from pixel to pixel.
Color SmoothColor(int x, int y) {
    return {0.5 + 0.4 * std::sin(x / 29.), 0.5 + 0.4 * std::sin(y / 23.), 0.5 + 0.4 * std::sin((x + y) / 37.),
            1};
}

/// PSNR over R, G and B, in dB.
double PsnrOfSmoothPicture(const Case& encoded) {
    const ImagePtr image = MakeImage(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            SetPixelAt(*image, x, height - 1 - y, PixelOf(SmoothColor(x, y)));
    const std::vector<TestFrame> frames = RoundTrip(encoded, *image);
    if (frames.size() != 1) return 0;
    double squares = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (size_t c = 0; c < 3; ++c)
                squares += std::pow(ColorAt(*frames[0], x, y)[c] - SmoothColor(x, y)[c], 2);
    return -10 * std::log10(squares / (3. * width * height));
}

class FFMPEGCodecsEncodePicture : public testing::TestWithParam<Case> {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadFFmpeg()); }
};
class FFMPEGCodecsEncodeImages : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadFFmpeg()); }
};
using FFMPEGCodecsEncodeColors = FFMPEGCodecsEncodePicture;
using FFMPEGCodecsEncodeQuality = FFMPEGCodecsEncodePicture;

const EncoderOptions bestH264 = {{"qp", "0"}, {"preset", "veryfast"}};
const EncoderOptions bestHevc = {{"preset", "ultrafast"},
                                 {"x265-params", "lossless=1:log-level=none:pools=none:frame-threads=1"}};

std::vector<Case> ColorCases() {
    std::vector<Case> cases;
    for (const AVColorSpace matrix :
         {AVCOL_SPC_BT709, AVCOL_SPC_BT470BG, AVCOL_SPC_SMPTE170M, AVCOL_SPC_SMPTE240M, AVCOL_SPC_BT2020_NCL})
        for (const AVPixelFormat format :
             {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV420P10LE,
              AV_PIX_FMT_YUV422P10LE, AV_PIX_FMT_YUV444P10LE})
            cases.push_back({"libx264", format, matrix, bestH264});
    for (const AVColorSpace matrix : {AVCOL_SPC_BT709, AVCOL_SPC_SMPTE170M}) {
        cases.push_back({"libx265", AV_PIX_FMT_YUV422P10LE, matrix, bestHevc});
        cases.push_back({"prores_ks", AV_PIX_FMT_YUV422P10LE, matrix});
        cases.push_back({"prores_ks", AV_PIX_FMT_YUV444P10LE, matrix, {}, AV_PIX_FMT_YUV444P12LE});
        cases.push_back({"prores_ks", AV_PIX_FMT_YUVA444P10LE, matrix, {}, AV_PIX_FMT_YUVA444P12LE});
        for (const AVPixelFormat format :
             {AV_PIX_FMT_YUVA420P, AV_PIX_FMT_YUVA422P, AV_PIX_FMT_YUVA444P, AV_PIX_FMT_YUVA444P10LE})
            cases.push_back({"ffv1", format, matrix});
    }
    for (const AVPixelFormat format : {AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUVJ444P})
        cases.push_back({"libx264", format, AVCOL_SPC_BT709, bestH264});
    return cases;
}

std::string NameOf(const testing::TestParamInfo<Case>& info) {
    return std::string(info.param.encoder) + "_" + av_get_pix_fmt_name(info.param.format) + "_" +
           std::to_string(info.param.matrix);
}

} // namespace

TEST_P(FFMPEGCodecsEncodeColors, FlatPatchesComeBackWithinTwoSteps) {
    std::mt19937 random = MakeRandom();
    const PatchImage patches(random);
    const std::vector<TestFrame> frames = RoundTrip(GetParam(), *patches.image);
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_EQ(frames[0]->width, width);
    EXPECT_EQ(frames[0]->height, height);
    const AVPixelFormat decoded = GetParam().decoded;
    EXPECT_EQ(frames[0]->format, decoded != AV_PIX_FMT_NONE ? decoded : GetParam().format);
    EXPECT_EQ(frames[0]->colorspace, GetParam().matrix);
    EXPECT_LE(MostApart(*frames[0], patches), 2);
}

INSTANTIATE_TEST_SUITE_P(Of, FFMPEGCodecsEncodeColors, testing::ValuesIn(ColorCases()), NameOf);

// ---------------------------------------------------------------------------------------------------------

namespace {

std::vector<Case> QualityCases() {
    std::vector<Case> cases;
    for (const AVPixelFormat format :
         {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV420P10LE,
          AV_PIX_FMT_YUV422P10LE, AV_PIX_FMT_YUV444P10LE})
        cases.push_back({"libx264", format, AVCOL_SPC_BT709, bestH264});
    cases.push_back({"libx265", AV_PIX_FMT_YUV422P, AVCOL_SPC_BT709, bestHevc});
    cases.push_back({"libx265", AV_PIX_FMT_YUV422P10LE, AVCOL_SPC_BT709, bestHevc});
    cases.push_back({"mpeg4", AV_PIX_FMT_YUV420P});
    cases.push_back({"mpeg2video", AV_PIX_FMT_YUV420P});
    cases.push_back({"mpeg2video", AV_PIX_FMT_YUV422P});
    cases.push_back({"mpeg2video", AV_PIX_FMT_YUV422P, AVCOL_SPC_SMPTE170M});
    for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV444P})
        cases.push_back({"libtheora", format});
    cases.push_back({"prores_ks", AV_PIX_FMT_YUV422P10LE});
    return cases;
}

} // namespace

/// Encodes the patches in an image of a kind, and gives how far they come out.
double ApartOfKind(const PatchImage& patches, ImageDataKind kind) {
    const ImagePtr image = MakeImage(width, height, kind);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            SetPixelAt(*image, x, height - 1 - y, PixelOf(patches.colors[PatchAt(x, y)]));
    const Case encoded = {"libx264", AV_PIX_FMT_YUV444P10LE, AVCOL_SPC_BT709, bestH264};
    const std::vector<TestFrame> frames = RoundTrip(encoded, *image);
    return frames.size() == 1 ? MostApart(*frames[0], patches) : 255;
}

TEST_F(FFMPEGCodecsEncodeImages, OfEveryKindAreEncoded) {
    std::mt19937 random = MakeRandom();
    const PatchImage patches(random);
    for (const ImageDataKind kind :
         {ImageData_RGBA8, ImageData_RGBA16, ImageData_RGBAHalf, ImageData_RGBAFloat})
        EXPECT_LE(ApartOfKind(patches, kind), 2) << kind;
}

TEST_F(FFMPEGCodecsEncodeImages, OfOddSizesAreEncodedByThoseThatTakeThem) {
    const Color color = {0.8, 0.3, 0.4, 1};
    for (const char* const name : {"ffv1", "mpeg2video"}) {
        for (const auto& [columns, rows] : {std::pair{63, 48}, {64, 47}, {63, 47}}) {
            const ImagePtr image = MakeFlatImage(columns, rows, PixelOf(color));
            const std::vector<TestFrame> frames = RoundTrip({name, AV_PIX_FMT_YUV420P}, *image);
            ASSERT_EQ(frames.size(), 1U);
            EXPECT_EQ(frames[0]->width, columns);
            EXPECT_EQ(frames[0]->height, rows);
            for (size_t c = 0; c < 3; ++c)
                EXPECT_NEAR(ColorAt(*frames[0], columns - 1, rows - 1)[c], color[c], 3 / 255.) << name;
        }
    }
}

TEST_F(FFMPEGCodecsEncodeImages, AsGifHaveTheColorsOfTheirPatchesOnTheWhole) {
    std::mt19937 random = MakeRandom();
    const PatchImage patches(random);
    const std::vector<TestFrame> frames = RoundTrip({"gif", AV_PIX_FMT_RGB8}, *patches.image);
    ASSERT_EQ(frames.size(), 1U);
    std::vector<Color> means(patches.colors.size(), Color{});
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (size_t c = 0; c < 4; ++c)
                means[PatchAt(x, y)][c] += ColorAt(*frames[0], x, y)[c] / (patchSize * patchSize);
    for (size_t i = 0; i < means.size(); ++i)
        for (size_t c = 0; c < 4; ++c)
            EXPECT_NEAR(means[i][c], patches.colors[i][c], 0.12) << "patch " << i << ", channel " << c;
}

TEST_P(FFMPEGCodecsEncodeQuality, ASmoothPictureComesBackAt41Decibels) {
    EXPECT_GE(PsnrOfSmoothPicture(GetParam()), 41);
}

INSTANTIATE_TEST_SUITE_P(Of, FFMPEGCodecsEncodeQuality, testing::ValuesIn(QualityCases()), NameOf);
