#pragma once

#include "CameraMaterial.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libswscale/swscale.h>
}

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// FFmpeg's ProRes codecs as peers: each on one thread.

/// One of the six codec types, with how FFmpeg's encoders name it.
struct PeerProfile {
    const char* name; ///< FourCC
    const char* profile;
    bool is444;
};
inline constexpr PeerProfile peerProfiles[] = {
    {"apco", "proxy", false}, {"apcs", "lt", false},  {"apcn", "standard", false},
    {"apch", "hq", false},    {"ap4h", "4444", true}, {"ap4x", "4444xq", true},
};

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

/// The planar frame, 10 bits a sample, that FFmpeg's encoders take of `picture`: 4:2:2, or 4:4:4 with opaque
/// alpha.
PeerFrame MakePeerFrame(const CameraPicture& picture, bool is444);

/// Encodes pictures on one thread.
class PeerEncoder {
public:
    /// `encoder`: "prores_ks" or "prores_aw".
    PeerEncoder(const char* encoder, const PeerProfile& profile, int32_t width, int32_t height);
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
