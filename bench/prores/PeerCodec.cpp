#include "prores/PeerCodec.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <map>
#include <stdexcept>
#include <tuple>

namespace {

void Require(bool done, const char* what) {
    if (!done) throw std::runtime_error(what);
}

void CopyPlane(AVFrame& frame, int plane, const std::vector<uint16_t>& from, int32_t width, int32_t step) {
    for (int32_t row = 0; row < frame.height; ++row) {
        auto* out = reinterpret_cast<uint16_t*>(frame.data[plane] + int64_t{row} * frame.linesize[plane]);
        const uint16_t* in = from.data() + int64_t{row} * width;
        for (int32_t x = 0; x < width; x += step)
            *out++ = in[x];
    }
}

} // namespace

PeerFrame MakePeerFrame(const CameraPicture& picture, AVPixelFormat format) {
    PeerFrame frame(av_frame_alloc());
    frame->width = picture.width;
    frame->height = picture.height;
    frame->format = format;
    Require(av_frame_get_buffer(frame.get(), 0) == 0, "frame");
    const int32_t chromaStep = format == AV_PIX_FMT_YUV422P10 ? 2 : 1;
    CopyPlane(*frame, 0, picture.luma, picture.width, 1);
    CopyPlane(*frame, 1, picture.cb, picture.width, chromaStep);
    CopyPlane(*frame, 2, picture.cr, picture.width, chromaStep);
    if (format == AV_PIX_FMT_YUVA444P10) CopyPlane(*frame, 3, picture.alpha, picture.width, 1);
    return frame;
}

PeerEncoder::PeerEncoder(const char* encoder, const PeerProfile& profile, AVPixelFormat format, int32_t width,
                         int32_t height, int32_t bitsPerMacroblock) {
    const AVCodec* codec = avcodec_find_encoder_by_name(encoder);
    Require(codec != nullptr, "encoder");
    context_.reset(avcodec_alloc_context3(codec));
    context_->width = width;
    context_->height = height;
    context_->time_base = {1, 24};
    context_->pix_fmt = format;
    context_->thread_count = 1;
    // One encoder reads the common field, the other an option of its own that goes by the same name.
    context_->profile = profile.number;
    av_opt_set_int(context_.get(), "profile", profile.number, AV_OPT_SEARCH_CHILDREN);
    if (bitsPerMacroblock != 0)
        av_opt_set_int(context_.get(), "bits_per_mb", bitsPerMacroblock, AV_OPT_SEARCH_CHILDREN);
    Require(avcodec_open2(context_.get(), codec, nullptr) == 0, "encoder start");
}

PeerPacket PeerEncoder::Encode(const AVFrame& frame) {
    PeerPacket packet(av_packet_alloc());
    Require(avcodec_send_frame(context_.get(), &frame) == 0, "encode");
    Require(avcodec_receive_packet(context_.get(), packet.get()) == 0, "encoded packet");
    return packet;
}

PeerDecoder::PeerDecoder(const PeerProfile& profile, int32_t width, int32_t height)
    : frame_(av_frame_alloc()) {
    const AVCodec* codec = avcodec_find_decoder_by_name("prores");
    Require(codec != nullptr, "decoder");
    context_.reset(avcodec_alloc_context3(codec));
    context_->width = width;
    context_->height = height;
    context_->codec_tag = MKTAG(profile.name[0], profile.name[1], profile.name[2], profile.name[3]);
    context_->thread_count = 1;
    Require(avcodec_open2(context_.get(), codec, nullptr) == 0, "decoder start");
}

const AVFrame& PeerDecoder::Decode(const AVPacket& packet) {
    Require(avcodec_send_packet(context_.get(), &packet) == 0, "decode");
    Require(avcodec_receive_frame(context_.get(), frame_.get()) == 0, "decoded frame");
    return *frame_;
}

const std::vector<PeerPacket>& PeerPackets(const PeerProfile& profile, int32_t width, int32_t height,
                                           int32_t count) {
    static std::map<std::tuple<std::string, int32_t, int32_t, int32_t>, std::vector<PeerPacket>> made;
    std::vector<PeerPacket>& packets = made[{profile.name, width, height, count}];
    if (packets.empty()) {
        const AVPixelFormat format = PeerPixelFormat(profile, true);
        PeerEncoder encoder("prores_ks", profile, format, width, height);
        for (int32_t i = 0; i < count; ++i)
            packets.push_back(encoder.Encode(*MakePeerFrame(MakeCameraPicture(width, height, i), format)));
    }
    return packets;
}
