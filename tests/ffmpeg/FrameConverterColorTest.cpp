// The colours of frames in images, beside those that libswscale gives when it is told matrix and range, and
// beside the exact ones.

#include "ffmpeg/FramePatches.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

using namespace CxFFMPEG;
using namespace frame_patches;

namespace {

/// R, G, B, A as the host's integer accessors have them.
using Channels = std::array<double, 4>;

/// A step of 8 bits.
constexpr double oneStep = 257;
/// Half a step of halves below 1, to which they are rounded.
constexpr double halfOfHalves = 16;

// ---------------------------------------------------------------------------------------------------------
// The peer

struct ScalerFree {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};

void TellColors(SwsContext& scaler, const Format& format) {
    int *table, *otherTable, range, otherRange, brightness, contrast, saturation;
    sws_getColorspaceDetails(&scaler, &table, &range, &otherTable, &otherRange, &brightness, &contrast,
                             &saturation);
    sws_setColorspaceDetails(&scaler, sws_getCoefficients(format.matrix), format.IsFull(), otherTable,
                             otherRange, brightness, contrast, saturation);
}

/// The frame in another format, by libswscale at its best. Frames of RGB have no matrix to tell.
TestFrame PeerOf(const AVFrame& frame, const Format& format, AVPixelFormat target) {
    TestFrame peer = MakeTestFrame(target, frame.width, frame.height);
    const std::unique_ptr<SwsContext, ScalerFree> scaler(
        sws_getContext(frame.width, frame.height, format.format, frame.width, frame.height, target,
                       SWS_BILINEAR | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr));
    if (!format.IsRgb() && !format.HasPalette()) TellColors(*scaler, format);
    EXPECT_EQ(
        sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, peer->data, peer->linesize),
        frame.height);
    return peer;
}

Channels PeerPixel(const AVFrame& peer, int x, int y) {
    const bool hasBytes = peer.format == AV_PIX_FMT_RGBA;
    const uint8_t* const pixel = peer.data[0] + y * peer.linesize[0] + x * (hasBytes ? 4 : 8);
    Channels channels;
    for (size_t c = 0; c < 4; ++c)
        channels[c] = hasBytes ? pixel[c] * 257 : pixel[2 * c] + 256 * pixel[2 * c + 1];
    return channels;
}

// ---------------------------------------------------------------------------------------------------------
// Comparing

/// The greatest distance between an image and what it should be, at the middles of the patches.
template <typename Expected>
double MostApart(Image& image, const Expected& expected) {
    double most = 0;
    for (int y = patchSize / 2; y < height; y += patchSize) {
        for (int x = patchSize / 2; x < width; x += patchSize) {
            const Pixel pixel = PixelAt(image, x, y);
            const Channels ours = {double(pixel.R), double(pixel.G), double(pixel.B), double(pixel.A)};
            const Channels others = expected(x, y);
            for (size_t c = 0; c < 4; ++c)
                most = std::max(most, std::fabs(ours[c] - others[c]));
        }
    }
    return most;
}

void ExpectLikePeer(const Patches& patches, const Format& format, bool hasBytePeer) {
    FrameConverter converter;
    for (const ImageDataKind kind :
         {ImageData_RGBA8, ImageData_RGBA16, ImageData_RGBAHalf, ImageData_RGBAFloat}) {
        const bool hasBytes = hasBytePeer && kind == ImageData_RGBA8;
        const TestFrame peer =
            PeerOf(*patches.frame, format, hasBytes ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGBA64LE);
        const ImagePtr image = MakeImage(width, height, kind);
        ASSERT_TRUE(converter.ToImage(*patches.frame, format.IsFull(), *image));
        const double apart = MostApart(*image, [&](int x, int y) { return PeerPixel(*peer, x, y); });
        EXPECT_LE(apart, oneStep + (kind == ImageData_RGBAHalf ? halfOfHalves : 0)) << "kind " << kind;
    }
}

void ExpectLikeModel(const Patches& patches, const Format& format, double tolerance) {
    const ImagePtr image = MakeImage(width, height, ImageData_RGBA16);
    ASSERT_TRUE(FrameConverter().ToImage(*patches.frame, format.IsFull(), *image));
    const auto expected = [&](int x, int y) {
        Channels channels = ColorOf(format, patches.codes[PatchAt(x, y)]);
        for (double& channel : channels)
            channel = 65535 * std::clamp(channel, 0., 1.);
        return channels;
    };
    EXPECT_LE(MostApart(*image, expected), tolerance);
}

// ---------------------------------------------------------------------------------------------------------

class FrameColors : public testing::TestWithParam<Format> {
protected:
    void SetUp() override {
        ASSERT_TRUE(LoadFFmpeg());
        std::mt19937 random = MakeRandom();
        patches = MakePatches(GetParam(), random);
    }

    Patches patches;
};
using DirectFrameColors = FrameColors;
using ConvertedFrameColors = FrameColors;
using ConvertedPaletteColors = FrameColors;

TEST_P(DirectFrameColors, AreThoseOfLibswscaleWithinAStepOf8Bits) {
    ExpectLikePeer(patches, GetParam(), true);
}

TEST_P(DirectFrameColors, AreTheExactOnesInImagesOf16Bits) { ExpectLikeModel(patches, GetParam(), 0.52); }

TEST_P(ConvertedFrameColors, AreThoseOfLibswscaleWithinAStepOf8Bits) {
    ExpectLikePeer(patches, GetParam(), false);
}

TEST_P(ConvertedFrameColors, AreTheExactOnesWithinLittleMoreThanAStepOf8Bits) {
    // libswscale takes white of 8 bits for 255 * 256, and loses a little more between R, G, B and Y'CbCr.
    ExpectLikeModel(patches, GetParam(), 1.15 * oneStep);
}

TEST_P(ConvertedPaletteColors, AreThoseOfLibswscaleWithinAStepOf8Bits) {
    ExpectLikePeer(patches, GetParam(), false);
}

std::vector<Format> DirectFormats() {
    std::vector<Format> formats;
    for (const AVColorSpace matrix : {AVCOL_SPC_BT709, AVCOL_SPC_BT470BG, AVCOL_SPC_SMPTE170M}) {
        for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV422P10LE,
                                           AV_PIX_FMT_YUYV422, AV_PIX_FMT_UYVY422, AV_PIX_FMT_NV12})
            formats.push_back({format, AVCOL_RANGE_MPEG, matrix});
        for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV422P10LE,
                                           AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUVJ422P})
            formats.push_back({format, AVCOL_RANGE_JPEG, matrix});
    }
    return formats;
}

std::vector<Format> ConvertedFormats() {
    std::vector<Format> formats;
    for (const AVPixelFormat format :
         {AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV411P, AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_YUV444P10LE,
          AV_PIX_FMT_YUV422P12LE, AV_PIX_FMT_YUVA420P, AV_PIX_FMT_YUVA444P10LE, AV_PIX_FMT_GRAY8,
          AV_PIX_FMT_GRAY10LE, AV_PIX_FMT_GRAY12LE, AV_PIX_FMT_YA8, AV_PIX_FMT_YA16LE})
        for (const AVColorRange range : {AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG})
            formats.push_back({format, range});
    for (const AVColorSpace matrix : {AVCOL_SPC_FCC, AVCOL_SPC_BT470BG, AVCOL_SPC_SMPTE170M,
                                      AVCOL_SPC_SMPTE240M, AVCOL_SPC_BT2020_NCL, AVCOL_SPC_BT2020_CL})
        formats.push_back({AV_PIX_FMT_YUV444P, AVCOL_RANGE_MPEG, matrix});
    for (const AVPixelFormat format : {AV_PIX_FMT_YUVJ411P, AV_PIX_FMT_YUVJ440P, AV_PIX_FMT_YUVJ444P})
        formats.push_back({format, AVCOL_RANGE_JPEG, AVCOL_SPC_BT470BG});
    for (const AVPixelFormat format :
         {AV_PIX_FMT_GBRP, AV_PIX_FMT_GBRP10LE, AV_PIX_FMT_GBRP12LE, AV_PIX_FMT_GBRAP, AV_PIX_FMT_BGRA,
          AV_PIX_FMT_ARGB, AV_PIX_FMT_RGB24, AV_PIX_FMT_RGB48LE, AV_PIX_FMT_RGBA64LE})
        formats.push_back({format, AVCOL_RANGE_UNSPECIFIED});
    return formats;
}

std::string NameOf(const testing::TestParamInfo<Format>& info) {
    const char* const range = info.param.IsFull() ? "_full_" : "_video_";
    return info.param.Descriptor().name + (range + std::to_string(info.param.matrix));
}

INSTANTIATE_TEST_SUITE_P(Of, DirectFrameColors, testing::ValuesIn(DirectFormats()), NameOf);
INSTANTIATE_TEST_SUITE_P(Of, ConvertedFrameColors, testing::ValuesIn(ConvertedFormats()), NameOf);
INSTANTIATE_TEST_SUITE_P(Of, ConvertedPaletteColors,
                         testing::Values(Format{AV_PIX_FMT_PAL8, AVCOL_RANGE_UNSPECIFIED}), NameOf);

} // namespace
