#pragma once

#include "ffmpeg/FFmpegFunctions.h"
#include "framework/CxAbstractAVCodec.h"

#include <cstdint>
#include <string>
#include <vector>

/// What a track is to be made of. Frame n of it is grey all over: its luma is that of `LumaOfFrame`.
struct TrackSpec {
    const char* encoder = "libx264";
    int32_t frames = 12;
    int32_t width = 64;
    int32_t height = 48;
    AVPixelFormat format = AV_PIX_FMT_YUV420P; ///< of 8 bits and planar
    int32_t groupLength = 250;                 ///< frames from one key frame to the next
    int32_t bFrames = 0;                       ///< between two others
    bool hasConfiguration = true;              ///< parameter sets beside the samples, not in them
    const char* options = "";                  ///< the encoder's own, "key=value" with ':' between
};

/// Luma of 8 bits in video range that frame n has; frames from 24 on repeat.
inline int32_t LumaOfFrame(int32_t frame) { return 40 + frame % 24 * 8; }

/// The frame that a luma was made for, if it is within 3 of it; otherwise -1.
inline int32_t FrameOfLuma(double luma) {
    for (int32_t frame = 0; frame < 24; ++frame)
        if (luma > LumaOfFrame(frame) - 3 && luma < LumaOfFrame(frame) + 3) return frame;
    return -1;
}

/// One compressed frame, in a block of exactly its size.
struct EncodedSample {
    std::vector<uint8_t> bytes;
    int32_t frame = 0;       ///< number in order of presentation
    int32_t decodeTime = 0;  ///< in frames; may be below 0
    bool isKeySample = true; ///< a decoder can start here
};

/// A track that one of FFmpeg's encoders made in memory.
struct EncodedTrack {
    explicit EncodedTrack(const TrackSpec& spec);

    TrackSpec spec;
    std::vector<EncodedSample> samples; ///< in order of decoding
    std::vector<uint8_t> configuration; ///< what belongs into the container, if any
    AVCodecID codec = AV_CODEC_ID_NONE;
};

/// Tells a stream of a file what it holds, as a demuxer or a muxer's caller does.
void DescribeTrack(const EncodedTrack& track, AVCodecParameters& parameters);

/// Such a track as a host's reader gives it. A frame is 40 ms, and the first one is shown at 1 s. Everything
/// may be changed; a sample of no bytes can't be read.
class EncodedSource : public CxAbstractDataSource {
public:
    /// @param track  must outlive the source
    EncodedSource(const EncodedTrack& track, uint32_t code)
        : fourCC(code), width(track.spec.width), height(track.spec.height), samples(track.samples),
          configuration(track.configuration) {}

    int32_t GetWidth() override { return width; }
    int32_t GetHeight() override { return height; }
    int64_t GetSampleTime(int32_t sample) override { return TimeOf(FrameOfSample(sample)); }
    int32_t GetSampleCount() override { return static_cast<int32_t>(samples.size()); }
    int32_t GetMaxSampleSize() override;
    uint8_t* ReadSample(int32_t sample, uint8_t* buffer, int32_t& size) override;
    const std::vector<uint8_t>* GetCodecPrivateData() override { return &configuration; }
    uint32_t GetFourCC() override { return fourCC; }
    int32_t GetSampleForFrame(int32_t frame) override;
    int32_t GetFieldOrder() override { return fieldOrder; }
    int32_t GetColorRange() override { return colorRange; }
    int32_t GetColorMatrix() override { return colorMatrix; }
    int32_t GetColorPrimaries() override { return colorPrimaries; }
    int32_t GetReserved() override { return 0; }
    /// Of a frame that is shown before the key sample that precedes it, the key sample before that one.
    int32_t GetKeySample(int32_t sample) override;
    int64_t GetDecodeTime(int32_t sample) override;
    int32_t GetFrameForTime(int64_t time) override {
        return static_cast<int32_t>((time - firstTime) / frameTime);
    }

    uint32_t fourCC;
    int32_t width;
    int32_t height;
    int32_t fieldOrder = 1;
    int32_t colorRange = 1;
    int32_t colorMatrix = 1;
    int32_t colorPrimaries = 1;
    std::vector<EncodedSample> samples;
    std::vector<uint8_t> configuration;

    static constexpr int64_t firstTime = 1000;
    static constexpr int64_t frameTime = 40;

    static int64_t TimeOf(int32_t frame) { return firstTime + frame * frameTime; }

private:
    /// Past the end, a frame later than all others.
    int32_t FrameOfSample(int32_t sample) const;
};
