#include "standins/mediafoundation/Peer.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include <cmath>
#include <cstring>

namespace {

struct FreeObject {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using ContextPtr = std::unique_ptr<AVCodecContext, FreeObject>;
using FramePtr = std::unique_ptr<AVFrame, FreeObject>;
using PacketPtr = std::unique_ptr<AVPacket, FreeObject>;

struct PlaneView {
    size_t offset;
    size_t width;
    size_t height;
};

PlaneView PlaneOf(const PeerPicture& picture, int plane) {
    const size_t luma = picture.width * picture.height;
    if (plane == 0) return {0, picture.width, picture.height};
    return {luma + static_cast<size_t>(plane - 1) * luma / 4, picture.width / 2, picture.height / 2};
}

/// Fills a plane of any size and depth from the nearest samples of the picture's.
void FillPlane(const PeerPicture& picture, int plane, int depth, AVFrame& frame, size_t width,
               size_t height) {
    const PlaneView from = PlaneOf(picture, plane);
    for (size_t y = 0; y < height; ++y) {
        uint8_t* const row = frame.data[plane] + static_cast<ptrdiff_t>(y) * frame.linesize[plane];
        for (size_t x = 0; x < width; ++x) {
            const size_t at = y * from.height / height * from.width + x * from.width / width;
            const uint8_t sample = picture.samples[from.offset + at];
            if (depth == 8)
                row[x] = sample;
            else
                reinterpret_cast<uint16_t*>(row)[x] = static_cast<uint16_t>(sample << (depth - 8));
        }
    }
}

FramePtr FrameOf(const PeerPicture& picture, AVPixelFormat format, int64_t number) {
    const AVPixFmtDescriptor& layout = *av_pix_fmt_desc_get(format);
    FramePtr frame(av_frame_alloc());
    frame->width = static_cast<int>(picture.width);
    frame->height = static_cast<int>(picture.height);
    frame->format = format;
    frame->pts = number;
    if (av_frame_get_buffer(frame.get(), 0) < 0) return nullptr;
    for (int plane = 0; plane < layout.nb_components; ++plane) {
        const int right = plane == 0 ? 0 : layout.log2_chroma_w;
        const int down = plane == 0 ? 0 : layout.log2_chroma_h;
        FillPlane(picture, plane, layout.comp[0].depth, *frame, picture.width >> right,
                  picture.height >> down);
    }
    return frame;
}

PeerPicture PictureOf(const AVFrame& frame) {
    PeerPicture picture = {static_cast<size_t>(frame.width), static_cast<size_t>(frame.height), {}};
    picture.samples.resize(picture.width * picture.height * 3 / 2);
    for (int plane = 0; plane < 3; ++plane) {
        const PlaneView to = PlaneOf(picture, plane);
        for (size_t y = 0; y < to.height; ++y)
            std::memcpy(&picture.samples[to.offset + y * to.width],
                        frame.data[plane] + static_cast<ptrdiff_t>(y) * frame.linesize[plane], to.width);
    }
    return picture;
}

ContextPtr MakeContext(const AVCodec* codec) {
    ContextPtr context(avcodec_alloc_context3(codec));
    context->log_level_offset = AV_LOG_TRACE + 1;
    context->thread_count = 1;
    return context;
}

void TakePackets(AVCodecContext& context, std::vector<TimedBytes>& samples) {
    const PacketPtr packet(av_packet_alloc());
    while (avcodec_receive_packet(&context, packet.get()) >= 0) {
        samples.push_back({Bytes(packet->data, packet->data + packet->size),
                           TimeOf(static_cast<size_t>(packet->pts)), pictureDuration,
                           (packet->flags & AV_PKT_FLAG_KEY) != 0});
        av_packet_unref(packet.get());
    }
}

void TakeFrames(AVCodecContext& context, std::vector<PeerPicture>& pictures) {
    const FramePtr frame(av_frame_alloc());
    while (avcodec_receive_frame(&context, frame.get()) >= 0)
        pictures.push_back(PictureOf(*frame));
}

} // namespace

std::vector<PeerPicture> Scene(size_t width, size_t height, int count) {
    constexpr double pi = 3.14159265358979;
    std::vector<PeerPicture> pictures;
    for (int number = 0; number < count; ++number) {
        PeerPicture picture = {width, height, Bytes(width * height * 3 / 2)};
        for (int plane = 0; plane < 3; ++plane) {
            const PlaneView view = PlaneOf(picture, plane);
            const size_t left = static_cast<size_t>(number * 3) * view.width / width % (view.width / 2);
            for (size_t y = 0; y < view.height; ++y)
                for (size_t x = 0; x < view.width; ++x) {
                    const double phase = 2 * pi * static_cast<double>(x + 2 * y + 2 * left) / 48.0;
                    const bool isInBox = x >= left && x < left + view.width / 3 && y >= view.height / 4 &&
                                         y < view.height * 3 / 4;
                    const double value = 110 + 40 * std::sin(phase + plane) + (isInBox ? 50 - 30 * plane : 0);
                    picture.samples[view.offset + y * view.width + x] = static_cast<uint8_t>(value);
                }
        }
        pictures.push_back(std::move(picture));
    }
    return pictures;
}

double Nearness(const Bytes& a, const Bytes& b) {
    if (a.size() != b.size() || a.empty()) return 0;
    double squares = 0;
    for (size_t i = 0; i < a.size(); ++i)
        squares += std::pow(a[i] - b[i], 2);
    if (squares == 0) return 100;
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(a.size()) / squares);
}

PeerStream PeerEncode(const std::vector<PeerPicture>& pictures, const PeerCoding& coding) {
    const AVCodec* const codec = avcodec_find_encoder_by_name("libx264");
    const ContextPtr context = MakeContext(codec);
    context->width = static_cast<int>(pictures.front().width);
    context->height = static_cast<int>(pictures.front().height);
    context->pix_fmt = av_get_pix_fmt(coding.format.c_str());
    context->time_base = {1, 25};
    if (coding.hasGlobalHeader) context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_opt_set(context->priv_data, "profile", coding.profile.c_str(), 0);
    av_opt_set(context->priv_data, "x264-params", coding.parameters.c_str(), 0);
    PeerStream stream;
    if (avcodec_open2(context.get(), codec, nullptr) < 0) return stream;
    if (context->extradata_size > 0)
        stream.header.assign(context->extradata, context->extradata + context->extradata_size);
    for (size_t i = 0; i < pictures.size(); ++i) {
        avcodec_send_frame(context.get(),
                           FrameOf(pictures[i], context->pix_fmt, static_cast<int64_t>(i)).get());
        TakePackets(*context, stream.samples);
    }
    avcodec_send_frame(context.get(), nullptr);
    TakePackets(*context, stream.samples);
    return stream;
}

std::vector<PeerPicture> PeerDecode(const std::vector<TimedBytes>& samples, const Bytes& header) {
    const AVCodec* const codec = avcodec_find_decoder(AV_CODEC_ID_H264);
    const ContextPtr context = MakeContext(codec);
    std::vector<PeerPicture> pictures;
    if (!header.empty()) {
        context->extradata = static_cast<uint8_t*>(av_mallocz(header.size() + AV_INPUT_BUFFER_PADDING_SIZE));
        std::memcpy(context->extradata, header.data(), header.size());
        context->extradata_size = static_cast<int>(header.size());
    }
    if (avcodec_open2(context.get(), codec, nullptr) < 0) return pictures;
    for (const TimedBytes& sample : samples) {
        const PacketPtr packet(av_packet_alloc());
        if (av_new_packet(packet.get(), static_cast<int>(sample.bytes.size())) < 0) return pictures;
        std::memcpy(packet->data, sample.bytes.data(), sample.bytes.size());
        packet->pts = sample.time.value_or(0);
        avcodec_send_packet(context.get(), packet.get());
        TakeFrames(*context, pictures);
    }
    avcodec_send_packet(context.get(), nullptr);
    TakeFrames(*context, pictures);
    return pictures;
}
