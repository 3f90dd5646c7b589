#pragma once

#include "support/CameraMaterial.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libswscale/swscale.h>
}

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// FFmpeg's ProRes codecs as peers: each on one thread.

/// One of the six codec types, with the number that FFmpeg's encoders give it.
struct PeerProfile {
    const char* name; ///< FourCC
    int number;
    bool is444;
};
inline constexpr PeerProfile peerProfiles[] = {
    {"apco", 0, false}, {"apcs", 1, false}, {"apcn", 2, false},
    {"apch", 3, false}, {"ap4h", 4, true},  {"ap4x", 5, true},
};

/// What FFmpeg's encoders take for a profile: 10 bits a sample, 4:2:2, or 4:4:4 with or without alpha.
inline AVPixelFormat PeerPixelFormat(const PeerProfile& profile, bool hasAlpha) {
    if (!profile.is444) return AV_PIX_FMT_YUV422P10;
    return hasAlpha ? AV_PIX_FMT_YUVA444P10 : AV_PIX_FMT_YUV444P10;
}

struct FreePacket {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct FreeContext {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FreeScaler {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
using PeerPacket = std::unique_ptr<AVPacket, FreePacket>;
using PeerFrame = std::unique_ptr<AVFrame, FreeFrame>;

/// The planar frame of `picture` in one of the formats of `PeerPixelFormat`.
PeerFrame MakePeerFrame(const CameraPicture& picture, AVPixelFormat format);

/// Encodes pictures on one thread.
class PeerEncoder {
public:
    /// `encoder`: "prores_ks" or "prores_aw". `bitsPerMacroblock` is what `prores_ks` aims for; 0 leaves that
    /// to the profile.
    PeerEncoder(const char* encoder, const PeerProfile& profile, AVPixelFormat format, int32_t width,
                int32_t height, int32_t bitsPerMacroblock = 0);
    PeerPacket Encode(const AVFrame& frame);

private:
    std::unique_ptr<AVCodecContext, FreeContext> context_;
};

/// Decodes packets on one thread into planar frames.
class PeerDecoder {
public:
    PeerDecoder(const PeerProfile& profile, int32_t width, int32_t height);
    const AVFrame& Decode(const AVPacket& packet);

private:
    std::unique_ptr<AVCodecContext, FreeContext> context_;
    PeerFrame frame_;
};

/// Packets of the first `count` camera pictures by `prores_ks`; made once for each argument list.
const std::vector<PeerPacket>& PeerPackets(const PeerProfile& profile, int32_t width, int32_t height,
                                           int32_t count);
