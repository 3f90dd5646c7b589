// Images go into an encoder one by one and packets come out: times, draining, owners, failures.

#include "ffmpeg/EncodeTestSupport.h"
#include "ffmpeg/FFmpegSpy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

using namespace CxFFMPEG;

namespace {

class FFMPEGCodecsEncode : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadFFmpeg()); }

    void OpenH264() { ASSERT_EQ(encoder.Open(H264Entry()), CxAV_OK); }
    void EncodeGreys(int32_t count) {
        for (int32_t i = 0; i < count; ++i)
            ASSERT_EQ(encoder.Encode(MakeGreyImage(i).get()), CxAV_OK);
    }
    /// Expects images to fail with these words, and one to be encoded later.
    void ExpectFailureOnce(const std::function<void()>& failing) {
        failing();
        EXPECT_EQ(encoder.Encode(grey.get()), CxAV_OK);
        EXPECT_EQ(encoder.Drain(), CxAV_INVALID_STATE);
        EXPECT_EQ(encoder.packets.size(), 1U);
    }

    TestEncoder encoder;
    const ImagePtr grey = MakeGreyImage(5);
};

std::vector<int64_t> TimesOf(const std::vector<TestPacket>& packets) {
    std::vector<int64_t> times;
    for (const TestPacket& packet : packets)
        times.push_back(packet->pts);
    return times;
}

std::vector<int64_t> CountUpTo(int64_t count) {
    std::vector<int64_t> times(static_cast<size_t>(count));
    std::iota(times.begin(), times.end(), 0);
    return times;
}

/// A reference-counted buffer that says when it is freed.
AVBufferRef* MakeTold(int* frees) {
    return av_buffer_create(
        static_cast<uint8_t*>(av_malloc(64)), 64,
        [](void* told, uint8_t* data) {
            ++*static_cast<int*>(told);
            av_free(data);
        },
        frees, 0);
}

/// A packet that holds such a buffer.
TestPacket MakeFullPacket(int* frees) {
    TestPacket packet(av_packet_alloc());
    packet->buf = MakeTold(frees);
    packet->data = packet->buf->data;
    packet->size = 64;
    packet->pts = 77;
    return packet;
}

/// Sees the frames that an encoder is given.
class FrameSpy {
public:
    FrameSpy() : replaced_(&FFmpegFunctions::avcodec_send_frame, Send) { last.reset(); }
    ~FrameSpy() { last.reset(); }

    static inline TestFrame last; ///< members of the last frame, without its picture

private:
    static int Send(AVCodecContext* context, const AVFrame* frame) {
        last.reset(av_frame_alloc());
        if (frame != nullptr) av_frame_copy_props(last.get(), frame);
        return avcodec_send_frame(context, frame);
    }

    ReplacedFunction<decltype(avcodec_send_frame)> replaced_;
};

int FailToAllocate(uint8_t**, int*, int, int, AVPixelFormat, int) { return AVERROR(ENOMEM); }

} // namespace

// ---------------------------------------------------------------------------------------------------------
// Times

TEST_F(FFMPEGCodecsEncode, TimesCountUpFrom0) {
    OpenH264();
    EncodeGreys(20);
    encoder.Drain();
    std::vector<int64_t> times = TimesOf(encoder.packets);
    std::ranges::sort(times);
    EXPECT_EQ(times, CountUpTo(20));
}

TEST_F(FFMPEGCodecsEncode, TimesStartAnewWithAnEncoderThatIsOpenedAgain) {
    for (int i = 0; i < 2; ++i) {
        encoder.packets.clear();
        OpenH264();
        EncodeGreys(3);
        encoder.Drain();
        EXPECT_EQ(encoder.packets.front()->pts, 0);
    }
}

TEST_F(FFMPEGCodecsEncode, EveryPictureComesBackInItsPlace) {
    OpenH264();
    EncodeGreys(20);
    encoder.Drain();
    const std::vector<TestFrame> frames = Decode(encoder);
    ASSERT_EQ(frames.size(), 20U);
    for (size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(frames[i]->pts, static_cast<int64_t>(i));
        EXPECT_EQ(FrameOfLuma(frames[i]->data[0][0]), static_cast<int32_t>(i));
    }
}

TEST_F(FFMPEGCodecsEncode, OneFrameBetweenTwoOthersIsReordered) {
    encoder.options = {{"b_strategy", "0"}};
    OpenH264();
    EncodeGreys(9);
    encoder.Drain();
    // A frame coded both ways comes after the one that it is shown before, and there is one at a time.
    const std::vector<int64_t> times = TimesOf(encoder.packets);
    EXPECT_EQ(times, (std::vector<int64_t>{0, 2, 1, 4, 3, 6, 5, 8, 7}));
}

TEST_F(FFMPEGCodecsEncode, KeyFramesAreAsFarApartAsTheSettingsSay) {
    encoder.settings.gopSize = 4;
    encoder.options = {{"sc_threshold", "0"}, {"x264-params", "scenecut=0:bframes=0"}};
    OpenH264();
    EncodeGreys(10);
    encoder.Drain();
    for (const TestPacket& packet : encoder.packets)
        EXPECT_EQ((packet->flags & AV_PKT_FLAG_KEY) != 0, packet->pts % 4 == 0) << packet->pts;
}

// ---------------------------------------------------------------------------------------------------------
// Draining

TEST_F(FFMPEGCodecsEncode, AnEncoderThatHoldsAnImageBackGivesNoPacketAndNoFailure) {
    OpenH264();
    EXPECT_EQ(encoder.Encode(grey.get()), CxAV_OK);
    EXPECT_TRUE(encoder.packets.empty());
}

TEST_F(FFMPEGCodecsEncode, DrainingGivesOnePacketACallAndThenAnInvalidState) {
    OpenH264();
    EncodeGreys(10);
    const size_t before = encoder.packets.size();
    ASSERT_LT(before, 9U);
    for (size_t i = before; i < 10; ++i) {
        EXPECT_EQ(encoder.Encode(nullptr), CxAV_OK);
        EXPECT_EQ(encoder.packets.size(), i + 1);
    }
    EXPECT_EQ(WordsOf([&] { EXPECT_EQ(encoder.Encode(nullptr), CxAV_INVALID_STATE); }), "");
    EXPECT_EQ(encoder.Encode(nullptr), CxAV_INVALID_STATE);
    EXPECT_EQ(encoder.packets.size(), 10U);
}

TEST_F(FFMPEGCodecsEncode, AnEncoderWithoutImagesIsDrainedAtOnce) {
    OpenH264();
    EXPECT_EQ(encoder.Encode(nullptr), CxAV_INVALID_STATE);
    EXPECT_TRUE(encoder.packets.empty());
}

TEST_F(FFMPEGCodecsEncode, AnEncoderThatHoldsNothingBackIsDrainedAtOnce) {
    ASSERT_EQ(encoder.Open(EntryOf("rawvideo", AV_PIX_FMT_YUV422P)), CxAV_OK);
    EXPECT_EQ(encoder.Encode(grey.get()), CxAV_OK);
    EXPECT_EQ(encoder.packets.size(), 1U);
    EXPECT_EQ(encoder.Encode(nullptr), CxAV_INVALID_STATE);
}

TEST_F(FFMPEGCodecsEncode, AnImageForADrainedEncoderFails) {
    OpenH264();
    EncodeGreys(1);
    encoder.Drain();
    EXPECT_EQ(WordsOf([&] { EXPECT_EQ(encoder.Encode(grey.get()), CxAV_FAILED); }), "Error encoding frame\n");
}

// ---------------------------------------------------------------------------------------------------------
// Owners

TEST_F(FFMPEGCodecsEncode, WhatThePacketHeldIsLetGo) {
    OpenH264();
    int frees = 0;
    const TestPacket packet = MakeFullPacket(&frees);
    int32_t gotPacket = -1;
    Image* image = grey.get();
    EXPECT_EQ(encoder.codec.EncodeImage(image, packet.get(), gotPacket), CxAV_OK);
    EXPECT_EQ(frees, 1);
    EXPECT_EQ(gotPacket, 0);
    EXPECT_EQ(packet->data, nullptr);
    EXPECT_EQ(packet->size, 0);
    EXPECT_EQ(packet->pts, AV_NOPTS_VALUE);
}

TEST_F(FFMPEGCodecsEncode, WhatThePacketHeldIsLetGoByAFailureToo) {
    OpenH264();
    int frees = 0;
    const TestPacket packet = MakeFullPacket(&frees);
    int32_t gotPacket = -1;
    const ImagePtr small = MakeGreyImage(0, 8, 8);
    Image* image = small.get();
    EXPECT_EQ(encoder.codec.EncodeImage(image, packet.get(), gotPacket), CxAV_FAILED);
    EXPECT_EQ(frees, 1);
    EXPECT_EQ(gotPacket, 0);
    EXPECT_EQ(packet->data, nullptr);
}

TEST_F(FFMPEGCodecsEncode, OnePacketServesForAllImages) {
    OpenH264();
    const TestPacket packet(av_packet_alloc());
    int32_t gotPacket = 0;
    int packets = 0;
    Image* image = grey.get();
    for (int i = 0; i < 10; ++i, packets += gotPacket)
        ASSERT_EQ(encoder.codec.EncodeImage(image, packet.get(), gotPacket), CxAV_OK);
    for (image = nullptr; encoder.codec.EncodeImage(image, packet.get(), gotPacket) == CxAV_OK;)
        packets += gotPacket;
    EXPECT_EQ(packets, 10);
}

TEST_F(FFMPEGCodecsEncode, PacketsOutliveTheirEncoder) {
    std::vector<TestPacket> packets;
    {
        TestEncoder shortLived;
        ASSERT_EQ(shortLived.Open(H264Entry()), CxAV_OK);
        ASSERT_EQ(shortLived.Encode(grey.get()), CxAV_OK);
        shortLived.Drain();
        packets = std::move(shortLived.packets);
    }
    ASSERT_EQ(packets.size(), 1U);
    ASSERT_NE(packets[0]->buf, nullptr) << "memory of its own";
    EXPECT_EQ(packets[0]->data[0], 0) << "of the length or start code of the first unit";
}

TEST_F(FFMPEGCodecsEncode, TheImageStaysAsItIs) {
    OpenH264();
    const std::vector<uint8_t> before = PixelBytes(*grey, ImageData_RGBA16);
    ASSERT_EQ(encoder.Encode(grey.get()), CxAV_OK);
    EXPECT_EQ(PixelBytes(*grey, ImageData_RGBA16), before);
}

TEST_F(FFMPEGCodecsEncode, FramesTellTheEncoderItsColors) {
    encoder.settings.value9 = AVCOL_PRI_BT2020;
    encoder.settings.value10 = AVCOL_TRC_SMPTE2084;
    encoder.settings.value11 = AVCOL_SPC_BT2020_NCL;
    OpenH264();
    const FrameSpy spy;
    ASSERT_EQ(encoder.Encode(grey.get()), CxAV_OK);
    EXPECT_EQ(FrameSpy::last->color_primaries, AVCOL_PRI_BT2020);
    EXPECT_EQ(FrameSpy::last->color_trc, AVCOL_TRC_SMPTE2084);
    EXPECT_EQ(FrameSpy::last->colorspace, AVCOL_SPC_BT2020_NCL);
}

// ---------------------------------------------------------------------------------------------------------
// Failures

TEST_F(FFMPEGCodecsEncode, WithoutAnOpenEncoderEveryImageIsAnInvalidState) {
    EXPECT_EQ(encoder.Encode(grey.get()), CxAV_INVALID_STATE);
    EXPECT_EQ(encoder.Encode(nullptr), CxAV_INVALID_STATE);
}

TEST_F(FFMPEGCodecsEncode, AnImageOfAnotherSizeFailsAndTheNextTakesItsTime) {
    OpenH264();
    EncodeGreys(2);
    for (const auto& [width, height] :
         {std::pair{63, 48}, {65, 48}, {64, 47}, {64, 49}, {8, 8}, {640, 480}}) {
        const ImagePtr other = MakeGreyImage(0, width, height);
        EXPECT_EQ(WordsOf([&] { EXPECT_EQ(encoder.Encode(other.get()), CxAV_FAILED); }), "");
    }
    EncodeGreys(1);
    encoder.Drain();
    std::vector<int64_t> times = TimesOf(encoder.packets);
    std::ranges::sort(times);
    EXPECT_EQ(times, CountUpTo(3));
}

TEST_F(FFMPEGCodecsEncode, AnImageWithoutPixelsFails) {
    OpenH264();
    EXPECT_EQ(encoder.Encode(MakeImage(0, 0).get()), CxAV_FAILED);
}

TEST_F(FFMPEGCodecsEncode, NoMemoryForAFrameIsAFailedRead) {
    OpenH264();
    ExpectFailureOnce([&] {
        const ReplacedFunction<decltype(av_frame_alloc)> failing(&FFmpegFunctions::av_frame_alloc,
                                                                 []() -> AVFrame* { return nullptr; });
        EXPECT_EQ(WordsOf([&] { EXPECT_EQ(encoder.Encode(grey.get()), CxAV_READ_FAILED); }),
                  "Could not allocate video frame\n");
    });
}

TEST_F(FFMPEGCodecsEncode, NoMemoryForAPictureIsAnInvalidState) {
    OpenH264();
    ExpectFailureOnce([&] {
        const ReplacedFunction<decltype(av_image_alloc)> failing(&FFmpegFunctions::av_image_alloc,
                                                                 FailToAllocate);
        EXPECT_EQ(WordsOf([&] { EXPECT_EQ(encoder.Encode(grey.get()), CxAV_INVALID_STATE); }),
                  "Could not allocate raw picture buffer\n");
    });
}

TEST_F(FFMPEGCodecsEncode, APictureThatCannotBeConvertedFailsWithoutAWord) {
    OpenH264();
    ExpectFailureOnce([&] {
        static int pictures;
        pictures = 0;
        // The first picture is that of words, the second the encoder's.
        const ReplacedFunction<decltype(av_image_alloc)> failing(
            &FFmpegFunctions::av_image_alloc,
            [](uint8_t* planes[4], int steps[4], int width, int height, AVPixelFormat format, int alignment) {
                return ++pictures == 2 ? AVERROR(ENOMEM)
                                       : av_image_alloc(planes, steps, width, height, format, alignment);
            });
        EXPECT_EQ(WordsOf([&] { EXPECT_EQ(encoder.Encode(grey.get()), CxAV_FAILED); }), "");
    });
}

TEST_F(FFMPEGCodecsEncode, AnEncoderThatFailsIsSaidAndTheNextImageIsEncoded) {
    OpenH264();
    ExpectFailureOnce([&] {
        const ReplacedFunction<decltype(avcodec_send_frame)> failing(
            &FFmpegFunctions::avcodec_send_frame,
            [](AVCodecContext*, const AVFrame*) { return AVERROR_EXTERNAL; });
        EXPECT_EQ(WordsOf([&] { EXPECT_EQ(encoder.Encode(grey.get()), CxAV_FAILED); }),
                  "Error encoding frame\n");
    });
}

TEST_F(FFMPEGCodecsEncode, APacketThatCannotBeTakenIsAFailure) {
    OpenH264();
    const ReplacedFunction<decltype(avcodec_receive_packet)> failing(
        &FFmpegFunctions::avcodec_receive_packet,
        [](AVCodecContext*, AVPacket*) { return AVERROR_EXTERNAL; });
    EXPECT_EQ(WordsOf([&] { EXPECT_EQ(encoder.Encode(grey.get()), CxAV_FAILED); }), "Error encoding frame\n");
}

TEST_F(FFMPEGCodecsEncode, ADecoderEncodesNothing) {
    const EncodedTrack track{TrackSpec{}};
    AVFormatContext* file = avformat_alloc_context();
    AVStream* const stream = avformat_new_stream(file, nullptr);
    DescribeTrack(track, *stream->codecpar);
    ASSERT_EQ(encoder.codec.OpenFromStream(stream), CxAV_OK);
    EXPECT_EQ(WordsOf([&] { EXPECT_EQ(encoder.Encode(grey.get()), CxAV_FAILED); }), "Error encoding frame\n");
    EXPECT_EQ(encoder.Encode(nullptr), CxAV_FAILED);
    avformat_free_context(file);
}

TEST_F(FFMPEGCodecsEncode, AnExceptionOfTheHostsRowThreadsIsAFailure) {
    OpenH264();
    const ImagePtr image = MakeGreyImage(3);
    image->GetPixel = [](Pixel&, const uint8_t*, const uint8_t*, Image*) { throw std::bad_alloc(); };
    EXPECT_EQ(encoder.Encode(image.get()), CxAV_FAILED);
    EXPECT_EQ(encoder.Encode(grey.get()), CxAV_OK);
}
