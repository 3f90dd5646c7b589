#include "prores/peer/PeerDecoder.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
}

namespace {

struct Release {
    void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVCodecParameters* parameters) const { avcodec_parameters_free(&parameters); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, Release>;

void Check(bool ok, const std::string& what) {
    if (!ok) throw std::runtime_error("FFmpeg: " + what);
}

Owned<AVFormatContext> OpenMovie(const std::string& path) {
    AVFormatContext* format = nullptr;
    Check(avformat_open_input(&format, path.c_str(), nullptr, nullptr) == 0, "can't open " + path);
    return Owned<AVFormatContext>(format);
}

Owned<AVCodecContext> OpenDecoder(const AVCodecParameters& parameters) {
    const AVCodec* const codec = avcodec_find_decoder(parameters.codec_id);
    Check(codec != nullptr && parameters.codec_id == AV_CODEC_ID_PRORES, "no ProRes track");
    Owned<AVCodecContext> decoder(avcodec_alloc_context3(codec));
    Check(avcodec_parameters_to_context(decoder.get(), &parameters) >= 0, "parameters");
    decoder->thread_count = 1;
    Check(avcodec_open2(decoder.get(), codec, nullptr) == 0, "decoder");
    return decoder;
}

PeerFrame::Plane CopyPlane(const AVFrame& frame, int plane, int width, int height) {
    PeerFrame::Plane copy = {width, height, {}};
    copy.samples.resize(static_cast<size_t>(width) * static_cast<size_t>(height));
    for (int y = 0; y < height; ++y) {
        const size_t rowSize = static_cast<size_t>(width) * sizeof(uint16_t);
        std::memcpy(copy.samples.data() + static_cast<size_t>(y) * static_cast<size_t>(width),
                    frame.data[plane] + static_cast<ptrdiff_t>(y) * frame.linesize[plane], rowSize);
    }
    return copy;
}

PeerFrame CopyFrame(const AVFrame& frame) {
    const AVPixFmtDescriptor* const format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    Check(format != nullptr && format->comp[0].depth >= 10, "a pixel format of less than 10 bits");
    PeerFrame copy = {frame.width, frame.height, format->comp[0].depth, format->log2_chroma_w, {}};
    const int chromaWidth = (frame.width + (1 << copy.log2ChromaWidth) - 1) >> copy.log2ChromaWidth;
    for (int plane = 0; plane < format->nb_components; ++plane) {
        const bool isChroma = plane == 1 || plane == 2;
        copy.planes.push_back(CopyPlane(frame, plane, isChroma ? chromaWidth : frame.width, frame.height));
    }
    return copy;
}

/// Collects what the peer says of errors, until the end of its life.
class PeerWords {
public:
    PeerWords() {
        words_.clear();
        av_log_set_callback(Hear);
    }
    ~PeerWords() { av_log_set_callback(av_log_default_callback); }
    PeerWords(const PeerWords&) = delete;
    PeerWords& operator=(const PeerWords&) = delete;

    const std::string& Errors() const { return words_; }

private:
    static void Hear(void* /*object*/, int level, const char* format, va_list values) {
        if (level > AV_LOG_ERROR) return;
        char line[256] = "";
        vsnprintf(line, sizeof(line), format, values);
        words_ += line;
    }

    static inline std::string words_;
};

uint32_t BigEndian16(std::span<const uint8_t> bytes, size_t at) {
    return static_cast<uint32_t>(bytes[at] << 8 | bytes[at + 1]);
}

Owned<AVPacket> MakePacket(std::span<const uint8_t> frame) {
    Owned<AVPacket> packet(av_packet_alloc());
    Check(av_new_packet(packet.get(), static_cast<int>(frame.size())) == 0, "no memory");
    std::memcpy(packet->data, frame.data(), frame.size());
    return packet;
}

/// A track of frames like this one.
Owned<AVCodecParameters> DescribeTrack(std::span<const uint8_t> frame, uint32_t fourCC) {
    constexpr size_t widthAt = 16;
    constexpr size_t heightAt = 18;
    Owned<AVCodecParameters> parameters(avcodec_parameters_alloc());
    parameters->codec_type = AVMEDIA_TYPE_VIDEO;
    parameters->codec_id = AV_CODEC_ID_PRORES;
    parameters->codec_tag = __builtin_bswap32(fourCC);
    parameters->width = static_cast<int>(BigEndian16(frame, widthAt));
    parameters->height = static_cast<int>(BigEndian16(frame, heightAt));
    return parameters;
}

} // namespace

PeerFrame DecodeFrameByPeer(std::span<const uint8_t> frame, uint32_t fourCC) {
    const Owned<AVCodecParameters> track = DescribeTrack(frame, fourCC);
    const Owned<AVCodecContext> decoder = OpenDecoder(*track);
    const Owned<AVPacket> packet = MakePacket(frame);
    const Owned<AVFrame> picture(av_frame_alloc());
    const PeerWords words;
    Check(avcodec_send_packet(decoder.get(), packet.get()) == 0, "packet refused: " + words.Errors());
    Check(avcodec_receive_frame(decoder.get(), picture.get()) == 0, "no frame: " + words.Errors());
    Check(words.Errors().empty(), words.Errors());
    return CopyFrame(*picture);
}

std::vector<PeerPacket> DecodeByPeer(const std::string& path) {
    const Owned<AVFormatContext> format = OpenMovie(path);
    const Owned<AVCodecContext> decoder = OpenDecoder(*format->streams[0]->codecpar);
    const Owned<AVPacket> packet(av_packet_alloc());
    const Owned<AVFrame> frame(av_frame_alloc());
    std::vector<PeerPacket> packets;
    while (av_read_frame(format.get(), packet.get()) == 0) {
        Check(avcodec_send_packet(decoder.get(), packet.get()) == 0, "packet refused");
        Check(avcodec_receive_frame(decoder.get(), frame.get()) == 0, "no frame");
        packets.push_back({{packet->data, packet->data + packet->size}, CopyFrame(*frame)});
        av_packet_unref(packet.get());
    }
    return packets;
}
