// Frames whose lines stand otherwise than the host expects, what is read of them, and who owns what.

#include "ffmpeg/FFmpegSpy.h"
#include "ffmpeg/FrameConverter.h"
#include "ffmpeg/FrameLayouts.h"
#include "ffmpeg/FrameTestSupport.h"
#include "support/HeapSpy.h"

#include <gtest/gtest.h>

#include <cerrno>

using namespace CxFFMPEG;

namespace {

class FrameConverterMemory : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadFFmpeg()); }

    FrameConverter converter;
};

/// The room behind a plane that FFmpeg's frames have. libswscale reads some of it, the host does not.
constexpr int swscaleMargin = 32;

/// A frame whose planes each start at a page that may not be touched, or end at one but for that room, if the
/// frame is one for libswscale.
class GuardedFrame {
public:
    /// @param padding  bytes behind the samples of a line, for each plane
    /// @param flipped  whether lines run upwards in memory
    GuardedFrame(AVPixelFormat format, int width, int height, const std::array<int, 3>& padding,
                 GuardedBytes::Guard guard, bool flipped = false)
        : frame(MakeEmptyFrame(format, width, height)) {
        const int planes = av_pix_fmt_count_planes(format);
        for (int plane = 0; plane < planes; ++plane) {
            const int line =
                av_image_get_linesize(format, width, plane) + padding[static_cast<size_t>(plane % 3)];
            frame->linesize[plane] = flipped ? -line : line;
        }
        const FrameLayout* const layout = FindFrameLayout(*frame);
        const int margin = layout != nullptr && layout->HasRowsOf(*frame) ? 0 : swscaleMargin;
        for (int plane = 0; plane < planes; ++plane)
            AddPlane(plane, margin, guard);
        FillFrame(*frame, [](int component, int x, int y) {
            return static_cast<uint16_t>(component == 0 ? 40 + x + 3 * y : 90 + 20 * component + x / 2);
        });
    }

    TestFrame frame;

private:
    void AddPlane(int plane, int margin, GuardedBytes::Guard guard) {
        const auto format = static_cast<AVPixelFormat>(frame->format);
        const bool isChroma = plane == 1 || plane == 2;
        const int rows = SamplesOf(frame->height, isChroma ? av_pix_fmt_desc_get(format)->log2_chroma_h : 0);
        const int step = std::abs(frame->linesize[plane]);
        const int size = step * (rows - 1) + av_image_get_linesize(format, frame->width, plane) + margin;
        memory.push_back(std::make_unique<GuardedBytes>(static_cast<size_t>(size), guard));
        frame->data[plane] = memory.back()->data() + (frame->linesize[plane] < 0 ? step * (rows - 1) : 0);
    }

    std::vector<std::unique_ptr<GuardedBytes>> memory;
};

/// The same picture with lines as decoders have them.
TestFrame DecodersCopy(const AVFrame& frame) {
    TestFrame copy = MakeTestFrame(static_cast<AVPixelFormat>(frame.format), frame.width, frame.height);
    const uint8_t* planes[] = {frame.data[0], frame.data[1], frame.data[2], frame.data[3]};
    av_image_copy(copy->data, copy->linesize, planes, frame.linesize,
                  static_cast<AVPixelFormat>(frame.format), frame.width, frame.height);
    return copy;
}

/// Expects the images of two frames of the same picture to differ by no more than chroma filters make of it.
void ExpectSamePicture(const AVFrame& frame, const AVFrame& other) {
    const ImagePtr image = MakeImage(frame.width, frame.height);
    const ImagePtr expected = MakeImage(frame.width, frame.height);
    ASSERT_TRUE(FrameConverter().ToImage(frame, false, *image));
    ASSERT_TRUE(FrameConverter().ToImage(other, false, *expected));
    constexpr int tolerance = 4 * 257;
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) {
            const Pixel ours = PixelAt(*image, x, y), theirs = PixelAt(*expected, x, y);
            ASSERT_NEAR(ours.R, theirs.R, tolerance) << x << ", " << y;
            ASSERT_NEAR(ours.G, theirs.G, tolerance) << x << ", " << y;
            ASSERT_NEAR(ours.B, theirs.B, tolerance) << x << ", " << y;
        }
    }
}

constexpr GuardedBytes::Guard bothGuards[] = {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before};

} // namespace

// ---------------------------------------------------------------------------------------------------------
// Lines

TEST_F(FrameConverterMemory, FramesOfOddLineSizesAreReadWithinTheirPlanes) {
    constexpr std::array<int, 3> paddings[] = {{0, 0, 0},  {6, 0, 0},    {0, 10, 0},
                                               {0, 0, 14}, {64, 32, 32}, {16, 2, 8}};
    for (const auto guard : bothGuards) {
        for (const AVPixelFormat format : directFormats) {
            for (const auto& padding : paddings) {
                for (const int width : {1, 2, 15, 16, 33}) {
                    const GuardedFrame guarded(format, width, 7, padding, guard);
                    SCOPED_TRACE(testing::Message() << av_get_pix_fmt_name(format) << ", width " << width
                                                    << ", padding " << testing::PrintToString(padding));
                    ExpectSamePicture(*guarded.frame, *DecodersCopy(*guarded.frame));
                }
            }
        }
    }
}

TEST_F(FrameConverterMemory, FlippedFramesStandUprightInTheImage) {
    for (const auto guard : bothGuards) {
        for (const AVPixelFormat format : directFormats) {
            const GuardedFrame guarded(format, 32, 8, {0, 0, 0}, guard, true);
            SCOPED_TRACE(av_get_pix_fmt_name(format));
            ExpectSamePicture(*guarded.frame, *DecodersCopy(*guarded.frame));
        }
    }
}

TEST_F(FrameConverterMemory, FramesOfOtherFormatsAreReadWithinTheirPlanes) {
    for (const auto guard : bothGuards) {
        for (const AVPixelFormat format :
             {AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_YUVA420P, AV_PIX_FMT_YUVA444P10LE,
              AV_PIX_FMT_GRAY8, AV_PIX_FMT_GRAY16LE, AV_PIX_FMT_YA8, AV_PIX_FMT_RGB24, AV_PIX_FMT_BGRA,
              AV_PIX_FMT_GBRP, AV_PIX_FMT_GBRP10LE, AV_PIX_FMT_RGB48LE, AV_PIX_FMT_RGBA64LE}) {
            for (int width = 1; width < 40; ++width) {
                const GuardedFrame guarded(format, width, 3, {0, 0, 0}, guard);
                const ImagePtr image = MakeImage(width, 3);
                EXPECT_TRUE(converter.ToImage(*guarded.frame, false, *image)) << av_get_pix_fmt_name(format);
            }
        }
    }
}

// ---------------------------------------------------------------------------------------------------------
// Owners

TEST_F(FrameConverterMemory, ReleasingNullDoesNothing) {
    AVFrame* frame = nullptr;
    ReleaseFrame(frame);
    EXPECT_EQ(frame, nullptr);
}

TEST_F(FrameConverterMemory, ReleasingAFrameOfADecoderGivesItsBufferBack) {
    const TestFrame kept = MakeTestFrame(AV_PIX_FMT_YUV420P, 16, 4);
    AVFrame* frame = av_frame_clone(kept.get());
    EXPECT_EQ(av_buffer_get_ref_count(kept->buf[0]), 2);
    ReleaseFrame(frame);
    EXPECT_EQ(frame, nullptr);
    EXPECT_EQ(av_buffer_get_ref_count(kept->buf[0]), 1);
}

TEST_F(FrameConverterMemory, ReleasingAnEmptyFrameFreesIt) {
    AVFrame* frame = av_frame_alloc();
    ReleaseFrame(frame);
    EXPECT_EQ(frame, nullptr);
}

// ---------------------------------------------------------------------------------------------------------
// Failures

TEST_F(FrameConverterMemory, EachFailureOnTheWayFailsTheConversionAndTheNextFrameSucceeds) {
    const TestFrame frame = MakeTestFrame(AV_PIX_FMT_YUV444P, 16, 4);
    const ImagePtr image = MakeImage(16, 4);
    const auto expectFailure = [&](const auto& failing) {
        (void)failing;
        EXPECT_FALSE(converter.ToImage(*frame, false, *image));
    };
    const auto expectSuccess = [&] { EXPECT_TRUE(converter.ToImage(*frame, false, *image)); };
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

TEST_F(FrameConverterMemory, AScalerThatCannotBeMadeFailsTheConversionAndTheNextFrameSucceeds) {
    const TestFrame frame = MakeTestFrame(AV_PIX_FMT_YUV444P, 16, 4);
    const ImagePtr image = MakeImage(16, 4);
    {
        const ReplacedFunction<decltype(sws_getCachedContext)> failing(
            &FFmpegFunctions::sws_getCachedContext,
            [](SwsContext* scaler, int, int, AVPixelFormat, int, int, AVPixelFormat, int, SwsFilter*,
               SwsFilter*, const double*) -> SwsContext* {
                sws_freeContext(scaler);
                return nullptr;
            });
        EXPECT_FALSE(converter.ToImage(*frame, false, *image));
    }
    EXPECT_TRUE(converter.ToImage(*frame, false, *image));
}

TEST_F(FrameConverterMemory, WithoutMemoryTheHostsConversionThrowsAndTheNextFrameSucceeds) {
    for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUYV422}) {
        const TestFrame frame = MakeTestFrame(format, 16, 4);
        const ImagePtr image = MakeImage(16, 4);
        bool ranOut = false;
        try {
            const HeapSpy spy(0);
            converter.ToImage(*frame, false, *image);
        } catch (const std::bad_alloc&) {
            ranOut = true;
        }
        EXPECT_TRUE(ranOut);
        EXPECT_TRUE(converter.ToImage(*frame, false, *image));
    }
}
