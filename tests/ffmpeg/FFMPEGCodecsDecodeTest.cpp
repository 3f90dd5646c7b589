// Feeding samples of real streams, one after the other.

#include "ffmpeg/FFMPEGCodecs.h"

#include "ffmpeg/CodecTestSupport.h"
#include "support/GuardedBytes.h"

#include <algorithm>

namespace {

using CxFFMPEG::FFMPEGCodecs;

/// A stream of each kind of decoder that matters here: with frame threads, with slice threads, and with
/// neither.
struct Stream {
    EncodedTrack track;
    uint32_t fourCC;
};

const std::vector<Stream>& Streams() {
    static const std::vector<Stream> streams = [] {
        std::vector<Stream> made;
        made.push_back({EncodedTrack({.bFrames = 2}), FourCC("avc1")});
        made.push_back({EncodedTrack({.encoder = "mpeg2video", .bFrames = 2}), FourCC("m2v1")});
        made.push_back({EncodedTrack({.encoder = "mpeg4", .bFrames = 1}), FourCC("mp4v")});
        made.push_back({EncodedTrack({.encoder = "mjpeg", .format = AV_PIX_FMT_YUVJ420P}), FourCC("jpeg")});
        made.push_back({EncodedTrack({.encoder = "libvpx-vp9", .options = "deadline=realtime:cpu-used=8"}),
                        FourCC("VP90")});
        return made;
    }();
    return streams;
}

std::vector<int32_t> FramesOf(const std::vector<DecodedFrame>& decoded) {
    std::vector<int32_t> frames;
    for (const DecodedFrame& one : decoded)
        frames.push_back(one.frame);
    return frames;
}

std::vector<int32_t> AllFrames(int32_t count) {
    std::vector<int32_t> frames;
    for (int32_t frame = 0; frame < count; ++frame)
        frames.push_back(frame);
    return frames;
}

TEST(FFMPEGCodecsDecode, EveryFrameComesOutInOrderOfPresentationAndTheLastOnesByDraining) {
    for (const Stream& stream : Streams()) {
        EncodedSource source(stream.track, stream.fourCC);
        const auto codec = OpenCodec(source);
        EXPECT_EQ(FramesOf(DecodeAll(*codec, source)), AllFrames(12)) << stream.track.spec.encoder;
    }
}

TEST(FFMPEGCodecsDecode, AFrameHasTheTimeOfItsSample) {
    for (const Stream& stream : Streams()) {
        EncodedSource source(stream.track, stream.fourCC);
        const auto codec = OpenCodec(source);
        for (const DecodedFrame& decoded : DecodeAll(*codec, source))
            EXPECT_EQ(decoded.time, EncodedSource::TimeOf(decoded.frame)) << stream.track.spec.encoder;
    }
}

TEST(FFMPEGCodecsDecode, ADecoderThatNeedsMoreInputSaysNothing) {
    EncodedSource source(Streams()[0].track, FourCC("avc1"));
    const auto codec = OpenCodec(source);
    AVFrame* frame = nullptr;
    CxDecodeRequest request;
    CxAVError result = CxAV_OK;
    EXPECT_EQ(WordsOf([&] { result = Feed(*codec, source, 0, frame, request); }), "");
    EXPECT_EQ(result, CxAV_NEED_MORE_DATA);
    EXPECT_EQ(frame, nullptr);
    EXPECT_EQ(request.frameTime, 0);
}

TEST(FFMPEGCodecsDecode, ADrainedDecoderFails) {
    EncodedSource source(Streams()[1].track, FourCC("m2v1"));
    const auto codec = OpenCodec(source);
    EXPECT_EQ(WordsOf([&] { DecodeAll(*codec, source); }), "Failed to frame\n");
    AVFrame* frame = nullptr;
    CxDecodeRequest request;
    CxAVError result = CxAV_OK;
    EXPECT_EQ(WordsOf([&] { result = codec->DecodeSample(nullptr, 0, frame, request); }),
              "Failed to frame\n");
    EXPECT_EQ(result, CxAV_FAILED);
    EXPECT_EQ(frame, nullptr);
}

TEST(FFMPEGCodecsDecode, ADrainedDecoderTakesNoSampleBeforeAFlush) {
    EncodedSource source(Streams()[1].track, FourCC("m2v1"));
    const auto codec = OpenCodec(source);
    WordsOf([&] { DecodeAll(*codec, source); });
    AVFrame* frame = nullptr;
    CxDecodeRequest request;
    CxAVError result = CxAV_OK;
    EXPECT_EQ(WordsOf([&] { result = Feed(*codec, source, 0, frame, request); }), "");
    EXPECT_EQ(result, CxAV_FAILED);
    codec->Flush();
    WordsOf([&] { EXPECT_EQ(FramesOf(DecodeAll(*codec, source)), AllFrames(12)); });
}

TEST(FFMPEGCodecsDecode, AFlushDropsTheFramesThatAreHeldBack) {
    EncodedSource source(Streams()[0].track, FourCC("avc1"));
    const auto codec = OpenCodec(source);
    AVFrame* frame = nullptr;
    CxDecodeRequest request;
    EXPECT_EQ(Feed(*codec, source, 0, frame, request), CxAV_NEED_MORE_DATA);
    codec->Flush();
    EXPECT_EQ(WordsOf([&] { codec->DecodeSample(nullptr, 0, frame, request); }), "Failed to frame\n");
    EXPECT_EQ(frame, nullptr);
}

TEST(FFMPEGCodecsDecode, AFlushWithoutADecoderIsHarmless) {
    FFMPEGCodecs codec(CxAV_DECODE, nullptr);
    codec.Flush();
    EXPECT_EQ(codec.GetWidth(), 0);
}

TEST(FFMPEGCodecsDecode, WithoutADecoderASampleIsAnInvalidState) {
    FFMPEGCodecs codec(CxAV_DECODE, nullptr);
    AVFrame* frame = nullptr;
    CxDecodeRequest request;
    uint8_t byte = 0;
    EXPECT_EQ(codec.DecodeSample(&byte, 1, frame, request), CxAV_INVALID_STATE);
    EXPECT_EQ(codec.DecodeSample(nullptr, 0, frame, request), CxAV_INVALID_STATE);
    EXPECT_EQ(frame, nullptr);
}

/// The time that comes with the frame of a sample of these two times.
int64_t FrameTimeFor(int64_t decodeTime, int64_t sampleTime) {
    EncodedSource source(Streams()[3].track, FourCC("jpeg"));
    const auto codec = OpenCodec(source);
    std::vector<uint8_t>& sample = source.samples[0].bytes;
    AVFrame* frame = nullptr;
    CxDecodeRequest request;
    request.decodeTime = decodeTime;
    request.sampleTime = sampleTime;
    CxAVError result =
        codec->DecodeSample(sample.data(), static_cast<int32_t>(sample.size()), frame, request);
    if (result == CxAV_NEED_MORE_DATA) result = codec->DecodeSample(nullptr, 0, frame, request);
    EXPECT_EQ(result, CxAV_OK);
    codec->ReleaseDecodedFrame(frame);
    EXPECT_EQ(request.decodeTime, decodeTime);
    EXPECT_EQ(request.sampleTime, sampleTime);
    return request.frameTime;
}

TEST(FFMPEGCodecsDecode, SampleTimesCountOnlyIfBothAreAbove0) {
    EXPECT_EQ(FrameTimeFor(1, 7), 7);
    EXPECT_EQ(FrameTimeFor(9, 7), 7);
    for (const auto& [decodeTime, sampleTime] : {std::pair{0, 7}, {7, 0}, {0, 0}, {-1, 7}, {7, -1}})
        EXPECT_EQ(FrameTimeFor(decodeTime, sampleTime), AV_NOPTS_VALUE) << decodeTime << ", " << sampleTime;
}

TEST(FFMPEGCodecsDecode, ASampleNeedsNoPadding) {
    for (const Stream& stream : Streams()) {
        EncodedSource source(stream.track, stream.fourCC);
        const auto codec = OpenCodec(source);
        std::vector<int32_t> frames;
        CxAVError result = CxAV_OK;
        for (int32_t sample = 0; result == CxAV_OK || result == CxAV_NEED_MORE_DATA; ++sample) {
            const auto at = static_cast<size_t>(sample);
            const std::vector<uint8_t> bytes =
                at < source.samples.size() ? source.samples[at].bytes : std::vector<uint8_t>();
            const GuardedBytes guarded(bytes.size(), GuardedBytes::Guard::Behind);
            std::ranges::copy(bytes, guarded.data());
            AVFrame* frame = nullptr;
            CxDecodeRequest request;
            result = codec->DecodeSample(bytes.empty() ? nullptr : guarded.data(),
                                         static_cast<int32_t>(bytes.size()), frame, request);
            if (result == CxAV_OK) frames.push_back(FrameOfLuma(frame->data[0][0]));
            codec->ReleaseDecodedFrame(frame);
        }
        EXPECT_EQ(frames, AllFrames(12)) << stream.track.spec.encoder;
    }
}

TEST(FFMPEGCodecsDecode, ANegativeSizeFails) {
    EncodedSource source(Streams()[1].track, FourCC("m2v1"));
    const auto codec = OpenCodec(source);
    for (const int32_t size : {-1, -64, std::numeric_limits<int32_t>::min()}) {
        AVFrame* frame = nullptr;
        CxDecodeRequest request;
        CxAVError result = CxAV_OK;
        EXPECT_EQ(WordsOf([&] {
                      result = codec->DecodeSample(source.samples[0].bytes.data(), size, frame, request);
                  }),
                  "");
        EXPECT_EQ(result, CxAV_FAILED);
        EXPECT_EQ(frame, nullptr);
    }
    EXPECT_EQ(DecodeAll(*codec, source).size(), 12u);
}

TEST(FFMPEGCodecsDecode, ASampleOfNoBytesFails) {
    EncodedSource source(Streams()[1].track, FourCC("m2v1"));
    const auto codec = OpenCodec(source);
    AVFrame* frame = nullptr;
    CxDecodeRequest request;
    EXPECT_EQ(codec->DecodeSample(source.samples[0].bytes.data(), 0, frame, request), CxAV_FAILED);
    EXPECT_EQ(frame, nullptr);
    EXPECT_EQ(DecodeAll(*codec, source).size(), 12u);
}

TEST(FFMPEGCodecsDecode, WithoutDataTheSizeCountsAsNone) {
    EncodedSource source(Streams()[3].track, FourCC("jpeg"));
    const auto codec = OpenCodec(source);
    std::vector<uint8_t>& sample = source.samples[0].bytes;
    AVFrame* frame = nullptr;
    CxDecodeRequest request;
    CxAVError result =
        codec->DecodeSample(sample.data(), static_cast<int32_t>(sample.size()), frame, request);
    for (int32_t sizes : {1000, -1000}) {
        if (result == CxAV_NEED_MORE_DATA) result = codec->DecodeSample(nullptr, sizes, frame, request);
    }
    EXPECT_EQ(result, CxAV_OK);
    codec->ReleaseDecodedFrame(frame);
}

TEST(FFMPEGCodecsDecode, TheDecoderKeepsTheSizeThatTheStreamHas) {
    EncodedSource source(Streams()[0].track, FourCC("avc1"));
    source.width = 20;
    source.height = 10;
    const auto codec = OpenCodec(source);
    DecodeAll(*codec, source);
    EXPECT_EQ(codec->GetWidth(), 64);
    EXPECT_EQ(codec->GetHeight(), 48);
}

} // namespace
