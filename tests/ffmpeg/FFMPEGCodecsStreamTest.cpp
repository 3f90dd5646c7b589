// Decoding the packets of a stream that the caller demuxes.

#include "ffmpeg/FFMPEGCodecs.h"

#include "ffmpeg/CodecTestSupport.h"
#include "ffmpeg/FFmpegSpy.h"

namespace {

using CxFFMPEG::FFMPEGCodecs;

/// The stream of a file that holds a track, as a demuxer gives it.
class DemuxedTrack {
public:
    explicit DemuxedTrack(const EncodedTrack& track)
        : track_(track), format_(avformat_alloc_context()), stream(avformat_new_stream(format_, nullptr)),
          packet_(av_packet_alloc()) {
        DescribeTrack(track, *stream->codecpar);
    }
    ~DemuxedTrack() {
        av_packet_free(&packet_);
        avformat_free_context(format_);
    }
    DemuxedTrack(const DemuxedTrack&) = delete;
    DemuxedTrack& operator=(const DemuxedTrack&) = delete;

    /// The packet of a sample, valid until the next call; an empty one past the end.
    AVPacket* Packet(size_t sample) {
        av_packet_unref(packet_);
        if (sample >= track_.samples.size()) return packet_;
        const EncodedSample& content = track_.samples[sample];
        av_new_packet(packet_, static_cast<int>(content.bytes.size()));
        std::copy(content.bytes.begin(), content.bytes.end(), packet_->data);
        packet_->pts = content.frame;
        packet_->dts = content.decodeTime;
        return packet_;
    }

private:
    const EncodedTrack& track_;
    AVFormatContext* format_;

public:
    AVStream* stream;

private:
    AVPacket* packet_;
};

const EncodedTrack& Track() {
    static const EncodedTrack track({.bFrames = 2});
    return track;
}

const EncodedTrack& TrackWithoutDelay() {
    static const EncodedTrack track({.encoder = "mjpeg", .frames = 2, .format = AV_PIX_FMT_YUVJ420P});
    return track;
}

/// Opens a stream, and says what came of it.
struct Attempt {
    explicit Attempt(AVStream* stream) : codec(CxAV_DECODE, nullptr) {
        words = WordsOf([&] { result = codec.OpenFromStream(stream); });
    }

    FFMPEGCodecs codec;
    CxAVError result = CxAV_OK;
    std::string words;
};

TEST(FFMPEGCodecsStream, EveryFrameOfAStreamComesOutWithItsTimeStamp) {
    DemuxedTrack demuxed(Track());
    FFMPEGCodecs codec(CxAV_DECODE, nullptr);
    ASSERT_EQ(codec.OpenFromStream(demuxed.stream), CxAV_OK);
    AVFrame* frame = nullptr;
    CxAVError result = CxAV_OK;
    int32_t count = 0;
    for (size_t sample = 0; result != CxAV_FAILED; ++sample) {
        result = codec.DecodePacket(demuxed.Packet(sample), frame);
        if (result != CxAV_OK) continue;
        EXPECT_EQ(FrameOfLuma(frame->data[0][0]), count);
        EXPECT_EQ(frame->pts, count);
        ++count;
    }
    EXPECT_EQ(count, 12);
    codec.ReleaseDecodedFrame(frame);
    EXPECT_EQ(frame, nullptr);
}

TEST(FFMPEGCodecsStream, TheSizeIsThatOfTheStream) {
    const DemuxedTrack demuxed(Track());
    FFMPEGCodecs codec(CxAV_DECODE, nullptr);
    ASSERT_EQ(codec.OpenFromStream(demuxed.stream), CxAV_OK);
    EXPECT_EQ(codec.GetWidth(), 64);
    EXPECT_EQ(codec.GetHeight(), 48);
}

TEST(FFMPEGCodecsStream, ItsContextIsItsCodecsAndHasAsManyThreadsAsFFmpegLikes) {
    const DemuxedTrack demuxed(Track());
    const OpenedDecoders spy;
    FFMPEGCodecs codec(CxAV_DECODE, nullptr);
    ASSERT_EQ(codec.OpenFromStream(demuxed.stream), CxAV_OK);
    EXPECT_EQ(OpenedDecoders::asGiven.opaque, &codec);
    EXPECT_EQ(OpenedDecoders::asGiven.flags & AV_CODEC_FLAG_UNALIGNED, AV_CODEC_FLAG_UNALIGNED);
    EXPECT_EQ(OpenedDecoders::options,
              LIBAVCODEC_VERSION_MAJOR < 59 ? "refcounted_frames=1;threads=auto;" : "threads=auto;");
    EXPECT_EQ(OpenedDecoders::extradata, Track().configuration);
}

TEST(FFMPEGCodecsStream, AStreamThatFFmpegDoesNotDecodeIsUnsupported) {
    const DemuxedTrack demuxed(Track());
    for (const AVCodecID codec : {AV_CODEC_ID_NONE, AV_CODEC_ID_PROBE}) {
        demuxed.stream->codecpar->codec_id = codec;
        const Attempt attempt(demuxed.stream);
        EXPECT_EQ(attempt.result, CxAV_UNSUPPORTED);
        EXPECT_EQ(attempt.words, "");
    }
}

TEST(FFMPEGCodecsStream, WithoutMemoryForAContextAStreamIsUnsupported) {
    const DemuxedTrack demuxed(Track());
    const ReplacedFunction allocate(&FFmpegFunctions::avcodec_alloc_context3,
                                    [](const AVCodec*) -> AVCodecContext* { return nullptr; });
    const Attempt attempt(demuxed.stream);
    EXPECT_EQ(attempt.result, CxAV_UNSUPPORTED);
    EXPECT_EQ(attempt.words, "");
}

TEST(FFMPEGCodecsStream, ParametersThatFFmpegRefusesFailSilently) {
    const DemuxedTrack demuxed(Track());
    const ReplacedFunction refuse(&FFmpegFunctions::avcodec_parameters_to_context,
                                  [](AVCodecContext*, const AVCodecParameters*) { return AVERROR(ENOMEM); });
    Attempt attempt(demuxed.stream);
    EXPECT_EQ(attempt.result, CxAV_FAILED);
    EXPECT_EQ(attempt.words, "");
    EXPECT_EQ(attempt.codec.GetWidth(), 0);
}

TEST(FFMPEGCodecsStream, ParametersThatNoDecoderOpensWithFailWithWords) {
    const DemuxedTrack demuxed(Track());
    demuxed.stream->codecpar->width = demuxed.stream->codecpar->height = -1;
    Attempt attempt(demuxed.stream);
    EXPECT_EQ(attempt.result, CxAV_FAILED);
    EXPECT_EQ(attempt.words, "Could not open codec\n");
    EXPECT_EQ(attempt.codec.GetWidth(), 0);
    EXPECT_EQ(attempt.codec.GetLookAhead(), 0);
}

TEST(FFMPEGCodecsStream, AnotherStreamCanBeOpenedAfterwards) {
    const DemuxedTrack first(Track());
    DemuxedTrack second(TrackWithoutDelay());
    FFMPEGCodecs codec(CxAV_DECODE, nullptr);
    ASSERT_EQ(codec.OpenFromStream(first.stream), CxAV_OK);
    ASSERT_EQ(codec.OpenFromStream(second.stream), CxAV_OK);
    AVFrame* frame = nullptr;
    CxAVError result = codec.DecodePacket(second.Packet(1), frame);
    while (result == CxAV_NEED_MORE_DATA)
        result = codec.DecodePacket(second.Packet(2), frame);
    ASSERT_EQ(result, CxAV_OK);
    EXPECT_EQ(frame->pts, 1);
    codec.ReleaseDecodedFrame(frame);
}

TEST(FFMPEGCodecsLookAhead, IsNoneBeforeADecoderIsOpen) {
    FFMPEGCodecs codec(CxAV_DECODE, nullptr);
    EXPECT_EQ(codec.GetLookAhead(), 0);
}

TEST(FFMPEGCodecsLookAhead, IsNoneForAContextWithoutACodec) {
    const DemuxedTrack demuxed(Track());
    const OpenedDecoders spy;
    FFMPEGCodecs codec(CxAV_DECODE, nullptr);
    ASSERT_EQ(codec.OpenFromStream(demuxed.stream), CxAV_OK);
    const AVCodec* const decoder = std::exchange(OpenedDecoders::last->codec, nullptr);
    EXPECT_EQ(codec.GetLookAhead(), 0);
    OpenedDecoders::last->codec = decoder;
}

TEST(FFMPEGCodecsLookAhead, IsFourFramesAndTheDecodersDelayUpTo16) {
    const DemuxedTrack demuxed(Track());
    const OpenedDecoders spy;
    FFMPEGCodecs codec(CxAV_DECODE, nullptr);
    ASSERT_EQ(codec.OpenFromStream(demuxed.stream), CxAV_OK);
    for (const auto& [delay, expected] : {std::pair{0, 4}, {7, 11}, {16, 20}, {17, 20}, {-1, 4}}) {
        OpenedDecoders::last->delay = delay;
        EXPECT_EQ(codec.GetLookAhead(), expected) << delay;
    }
}

TEST(FFMPEGCodecsLookAhead, IsFourFramesForADecoderThatIsNotDelayed) {
    const DemuxedTrack demuxed(TrackWithoutDelay());
    const OpenedDecoders spy;
    FFMPEGCodecs codec(CxAV_DECODE, nullptr);
    ASSERT_EQ(codec.OpenFromStream(demuxed.stream), CxAV_OK);
    OpenedDecoders::last->delay = 7;
    EXPECT_EQ(codec.GetLookAhead(), 4);
}

TEST(FFMPEGCodecsLookAhead, DoesNotDependOnTheReorderingOfTheStream) {
    const DemuxedTrack demuxed(TrackWithoutDelay());
    const OpenedDecoders spy;
    FFMPEGCodecs codec(CxAV_DECODE, nullptr);
    ASSERT_EQ(codec.OpenFromStream(demuxed.stream), CxAV_OK);
    for (const int frames : {-5, 0, 1, 2, 16}) {
        OpenedDecoders::last->has_b_frames = frames;
        EXPECT_EQ(codec.GetLookAhead(), 4) << frames;
    }
}

} // namespace
