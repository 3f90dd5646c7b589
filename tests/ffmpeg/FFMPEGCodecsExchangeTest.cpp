// Every answer that FFmpeg may give to a packet and to the request for a frame, told by a decoder that
// follows a script.

#include "ffmpeg/FFMPEGCodecs.h"

#include "ffmpeg/CodecTestSupport.h"
#include "ffmpeg/FFmpegSpy.h"

#include <cerrno>
#include <deque>

namespace {

using CxFFMPEG::FFMPEGCodecs;

constexpr int again = AVERROR(EAGAIN);

/// Answers in place of FFmpeg's decoder, and keeps the calls.
class ScriptedAnswers {
public:
    ScriptedAnswers() {
        sends.clear();
        receives.clear();
        calls.clear();
    }

    static inline std::deque<int> sends;    ///< results to come
    static inline std::deque<int> receives; ///< results to come
    static inline std::string calls;        ///< 's' and 'r'

private:
    static int Next(std::deque<int>& results) {
        if (results.empty()) {
            ADD_FAILURE() << "a call that the script does not have";
            return AVERROR(EINVAL);
        }
        const int result = results.front();
        results.pop_front();
        return result;
    }
    static int Send(AVCodecContext*, const AVPacket*) {
        calls += 's';
        return Next(sends);
    }
    static int Receive(AVCodecContext*, AVFrame* frame) {
        calls += 'r';
        EXPECT_NE(frame, nullptr);
        const int result = Next(receives);
        if (result == 0) frame->pts = 1234;
        return result;
    }

    ReplacedFunction<decltype(avcodec_send_packet)> send_{&FFmpegFunctions::avcodec_send_packet, Send};
    ReplacedFunction<decltype(avcodec_receive_frame)> receive_{&FFmpegFunctions::avcodec_receive_frame,
                                                               Receive};
};

/// One exchange after a script, in the form of a sample and in that of a packet: they give the same.
struct Exchange {
    Exchange(std::deque<int> sends, std::deque<int> receives, int size = 1) {
        static const EncodedTrack track({.encoder = "mjpeg", .frames = 1, .format = AV_PIX_FMT_YUVJ420P});
        EncodedSource source(track, FourCC("jpeg"));
        const auto codec = OpenCodec(source);
        const ScriptedAnswers answers;
        ScriptedAnswers::sends = sends;
        ScriptedAnswers::receives = receives;
        FeedSample(*codec, size);
        const std::string callsOfSample = std::exchange(ScriptedAnswers::calls, "");
        const std::string wordsOfSample = words;
        const CxAVError resultOfSample = result;
        ScriptedAnswers::sends = sends;
        ScriptedAnswers::receives = receives;
        FeedPacket(*codec, size);
        calls = ScriptedAnswers::calls;
        EXPECT_EQ(callsOfSample, calls);
        EXPECT_EQ(wordsOfSample, words);
        EXPECT_EQ(resultOfSample, result);
        EXPECT_TRUE(ScriptedAnswers::sends.empty() && ScriptedAnswers::receives.empty());
    }

    CxAVError result = CxAV_OK;
    std::string words;
    std::string calls;

private:
    void FeedSample(FFMPEGCodecs& codec, int32_t size) {
        AVFrame* frame = nullptr;
        CxDecodeRequest request;
        uint8_t byte = 0;
        words =
            WordsOf([&] { result = codec.DecodeSample(size > 0 ? &byte : nullptr, size, frame, request); });
        // Nobody but the codec itself could release a frame that a failure leaves.
        EXPECT_EQ(frame != nullptr, result == CxAV_OK);
        EXPECT_EQ(request.frameTime, result == CxAV_OK ? 1234 : 0);
        codec.ReleaseDecodedFrame(frame);
    }
    void FeedPacket(FFMPEGCodecs& codec, int32_t size) {
        AVFrame* frame = nullptr;
        AVPacket* packet = av_packet_alloc();
        uint8_t byte = 0;
        packet->data = size > 0 ? &byte : nullptr;
        packet->size = size;
        words = WordsOf([&] { result = codec.DecodePacket(packet, frame); });
        av_packet_free(&packet);
        codec.ReleaseDecodedFrame(frame);
    }
};

void ExpectExchange(const Exchange& exchange, CxAVError result, const std::string& words,
                    const std::string& calls) {
    EXPECT_EQ(exchange.result, result);
    EXPECT_EQ(exchange.words, words);
    EXPECT_EQ(exchange.calls, calls);
}

TEST(FFMPEGCodecsExchange, APacketThatIsTakenGivesAFrame) {
    ExpectExchange(Exchange({0}, {0}), CxAV_OK, "", "sr");
}

TEST(FFMPEGCodecsExchange, APacketThatIsTakenMayGiveNoFrameYet) {
    ExpectExchange(Exchange({0}, {again}), CxAV_NEED_MORE_DATA, "", "sr");
}

TEST(FFMPEGCodecsExchange, APacketThatIsRefusedFailsSilently) {
    for (const int result : {AVERROR_INVALIDDATA, AVERROR(EINVAL), AVERROR(ENOMEM), AVERROR_EOF, 1})
        ExpectExchange(Exchange({result}, {}), CxAV_FAILED, "", "s");
}

TEST(FFMPEGCodecsExchange, DrainingADrainedDecoderGoesOnToItsFrames) {
    ExpectExchange(Exchange({AVERROR_EOF}, {0}, 0), CxAV_OK, "", "sr");
}

TEST(FFMPEGCodecsExchange, ADecoderWithoutFurtherFramesFailsWithWords) {
    ExpectExchange(Exchange({AVERROR_EOF}, {AVERROR_EOF}, 0), CxAV_FAILED, "Failed to frame\n", "sr");
}

TEST(FFMPEGCodecsExchange, AFrameThatFailsFailsWithWords) {
    for (const int result : {AVERROR_INVALIDDATA, AVERROR(EINVAL), AVERROR_EOF})
        ExpectExchange(Exchange({0}, {result}), CxAV_FAILED, "Failed to frame\n", "sr");
}

TEST(FFMPEGCodecsExchange, APacketThatFindsNoRoomIsSentAgainOnceAFrameIsOut) {
    ExpectExchange(Exchange({again, 0}, {0}), CxAV_OK, "ReSending packet\n", "srs");
}

TEST(FFMPEGCodecsExchange, APacketThatIsRefusedTheSecondTimeFailsWithWords) {
    for (const int result : {again, AVERROR_INVALIDDATA, AVERROR_EOF})
        ExpectExchange(Exchange({again, result}, {0}), CxAV_FAILED, "ReSending packet\nFailed to frame\n",
                       "srs");
}

TEST(FFMPEGCodecsExchange, APositiveAnswerToAPacketSentAgainFailsWithoutFurtherWords) {
    ExpectExchange(Exchange({again, 1}, {0}), CxAV_FAILED, "ReSending packet\n", "srs");
}

TEST(FFMPEGCodecsExchange, ADecoderThatTakesNothingAndGivesNothingFailsWithWords) {
    ExpectExchange(Exchange({again}, {again}), CxAV_FAILED, "Failed to frame\n", "sr");
    ExpectExchange(Exchange({again}, {AVERROR_EOF}), CxAV_FAILED, "Failed to frame\n", "sr");
}

TEST(FFMPEGCodecsExchange, WithoutMemoryForAFrameThePacketFailsSilently) {
    const ReplacedFunction allocate(&FFmpegFunctions::av_frame_alloc, []() -> AVFrame* { return nullptr; });
    ExpectExchange(Exchange({0}, {}), CxAV_FAILED, "", "s");
}

TEST(FFMPEGCodecsExchange, WithoutMemoryForAPacketASampleFailsSilently) {
    static const EncodedTrack track({.encoder = "mjpeg", .frames = 1, .format = AV_PIX_FMT_YUVJ420P});
    EncodedSource source(track, FourCC("jpeg"));
    const auto codec = OpenCodec(source);
    const ReplacedFunction allocate(&FFmpegFunctions::av_packet_alloc, []() -> AVPacket* { return nullptr; });
    AVFrame* frame = nullptr;
    CxDecodeRequest request;
    CxAVError result = CxAV_OK;
    EXPECT_EQ(WordsOf([&] { result = Feed(*codec, source, 0, frame, request); }), "");
    EXPECT_EQ(result, CxAV_FAILED);
    EXPECT_EQ(frame, nullptr);
}

TEST(FFMPEGCodecsExchange, APacketsFrameIsReusedAndStaysTheCallersAfterAFailure) {
    static const EncodedTrack track({.encoder = "mjpeg", .frames = 1, .format = AV_PIX_FMT_YUVJ420P});
    EncodedSource source(track, FourCC("jpeg"));
    const auto codec = OpenCodec(source);
    const ScriptedAnswers answers;
    AVFrame* frame = av_frame_alloc();
    AVFrame* const own = frame;
    AVPacket* packet = av_packet_alloc();
    ScriptedAnswers::sends = {0, 0, AVERROR(EINVAL)};
    ScriptedAnswers::receives = {0, again};
    EXPECT_EQ(codec->DecodePacket(packet, frame), CxAV_OK);
    EXPECT_EQ(codec->DecodePacket(packet, frame), CxAV_NEED_MORE_DATA);
    EXPECT_EQ(codec->DecodePacket(packet, frame), CxAV_FAILED);
    EXPECT_EQ(frame, own);
    av_packet_free(&packet);
    av_frame_free(&frame);
}

TEST(FFMPEGCodecsExchange, WithoutADecoderAPacketFails) {
    FFMPEGCodecs codec(CxAV_DECODE, nullptr);
    AVFrame* frame = nullptr;
    AVPacket* packet = av_packet_alloc();
    EXPECT_EQ(codec.DecodePacket(packet, frame), CxAV_FAILED);
    EXPECT_EQ(frame, nullptr);
    av_packet_free(&packet);
}

} // namespace
