#include "standins/dnx/Peer.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include <cstring>
#include <memory>

namespace {

struct FreeObject {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using ContextPtr = std::unique_ptr<AVCodecContext, FreeObject>;
using FramePtr = std::unique_ptr<AVFrame, FreeObject>;
using PacketPtr = std::unique_ptr<AVPacket, FreeObject>;

/// The planes of a frame whose samples have a type.
template <typename Sample>
PeerPlanes PlanesOf(const AVFrame& frame) {
    return MakePlanes(static_cast<AVPixelFormat>(frame.format), static_cast<size_t>(frame.width),
                      static_cast<size_t>(frame.height), [&](int plane, size_t x, size_t y) {
                          const ptrdiff_t row = static_cast<ptrdiff_t>(y) * frame.linesize[plane];
                          return reinterpret_cast<const Sample*>(frame.data[plane] + row)[x];
                      });
}

template <typename Sample>
void FillFrame(const PeerPlanes& planes, AVFrame& frame) {
    for (int plane = 0; plane < 3; ++plane)
        for (size_t y = 0; y < planes.height; ++y) {
            const ptrdiff_t row = static_cast<ptrdiff_t>(y) * frame.linesize[plane];
            const auto samples = reinterpret_cast<Sample*>(frame.data[plane] + row);
            for (size_t x = 0, width = planes.PlaneWidth(plane); x < width; ++x)
                samples[x] = static_cast<Sample>(planes.At(plane, x, y));
        }
}

bool IsBytes(int format) {
    return av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format))->comp[0].depth == 8;
}

ContextPtr MakeContext(const AVCodec* codec) {
    ContextPtr context(avcodec_alloc_context3(codec));
    context->log_level_offset = AV_LOG_TRACE + 1;
    return context;
}

FramePtr FrameOf(const PeerPlanes& planes) {
    FramePtr frame(av_frame_alloc());
    frame->width = static_cast<int>(planes.width);
    frame->height = static_cast<int>(planes.height);
    frame->format = planes.format;
    if (av_frame_get_buffer(frame.get(), 0) < 0) return nullptr;
    if (IsBytes(planes.format))
        FillFrame<uint8_t>(planes, *frame);
    else
        FillFrame<uint16_t>(planes, *frame);
    return frame;
}

} // namespace

size_t PlaneWidthOf(AVPixelFormat format, size_t width, int plane) {
    const bool half = plane > 0 && av_pix_fmt_desc_get(format)->log2_chroma_w == 1;
    return half ? (width + 1) / 2 : width;
}

Bytes PeerEncode(const PeerPlanes& planes, int profile, int megabits, bool interlaced) {
    const AVCodec* const codec = avcodec_find_encoder(AV_CODEC_ID_DNXHD);
    const ContextPtr context = MakeContext(codec);
    context->width = static_cast<int>(planes.width);
    context->height = static_cast<int>(planes.height);
    context->pix_fmt = planes.format;
    context->time_base = {1, 25};
    context->bit_rate = int64_t{megabits} * 1'000'000;
    if (interlaced) context->flags |= AV_CODEC_FLAG_INTERLACED_DCT;
    av_opt_set_int(context->priv_data, "profile", profile, 0);
    const FramePtr frame = FrameOf(planes);
    const PacketPtr packet(av_packet_alloc());
    if (avcodec_open2(context.get(), codec, nullptr) < 0) return {};
    if (avcodec_send_frame(context.get(), frame.get()) < 0) return {};
    avcodec_send_frame(context.get(), nullptr);
    if (avcodec_receive_packet(context.get(), packet.get()) < 0) return {};
    return Bytes(packet->data, packet->data + packet->size);
}

PeerPlanes PeerDecode(const Bytes& frame) {
    const AVCodec* const codec = avcodec_find_decoder(AV_CODEC_ID_DNXHD);
    const ContextPtr context = MakeContext(codec);
    const PacketPtr packet(av_packet_alloc());
    const FramePtr decoded(av_frame_alloc());
    if (av_new_packet(packet.get(), static_cast<int>(frame.size())) < 0) return {};
    std::memcpy(packet->data, frame.data(), frame.size());
    if (avcodec_open2(context.get(), codec, nullptr) < 0) return {};
    if (avcodec_send_packet(context.get(), packet.get()) < 0) return {};
    if (avcodec_receive_frame(context.get(), decoded.get()) < 0) return {};
    PeerPlanes planes = IsBytes(decoded->format) ? PlanesOf<uint8_t>(*decoded) : PlanesOf<uint16_t>(*decoded);
    planes.topFieldFirst = decoded->interlaced_frame != 0 && decoded->top_field_first != 0;
    return planes;
}
