#include "PeerMovie.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <cstdlib>

namespace {

void Require(bool condition) {
    if (!condition) std::abort();
}

} // namespace

PeerMovie::PeerMovie(const std::string& path, AVPixelFormat rgb)
    : packet_(av_packet_alloc()), frame_(av_frame_alloc()), picture_(av_frame_alloc()) {
    AVFormatContext* input = nullptr;
    Require(avformat_open_input(&input, path.c_str(), nullptr, nullptr) == 0);
    input_.reset(input);
    Require(avformat_find_stream_info(input, nullptr) >= 0);
    const AVCodec* codec = nullptr;
    stream_ = av_find_best_stream(input, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    Require(stream_ >= 0);
    decoder_.reset(avcodec_alloc_context3(codec));
    Require(avcodec_parameters_to_context(decoder_.get(), input->streams[stream_]->codecpar) >= 0);
    decoder_->thread_count = 0;
    Require(avcodec_open2(decoder_.get(), codec, nullptr) == 0);
    Decode();
    OpenScaler(rgb);
    Rewind();
}

void PeerMovie::OpenScaler(AVPixelFormat rgb) {
    scaler_.reset(sws_alloc_context());
    const int size[] = {frame_->width, frame_->height};
    for (const char* const side : {"src", "dst"}) {
        av_opt_set_int(scaler_.get(), (std::string(side) + "w").c_str(), size[0], 0);
        av_opt_set_int(scaler_.get(), (std::string(side) + "h").c_str(), size[1], 0);
    }
    av_opt_set_int(scaler_.get(), "src_format", frame_->format, 0);
    av_opt_set_int(scaler_.get(), "dst_format", rgb, 0);
    // The fastest that it has.
    av_opt_set_int(scaler_.get(), "sws_flags", SWS_POINT, 0);
    av_opt_set_int(scaler_.get(), "threads", 0, 0);
    Require(sws_init_context(scaler_.get(), nullptr, nullptr) >= 0);
    picture_->format = rgb;
    picture_->width = size[0];
    picture_->height = size[1];
    Require(av_frame_get_buffer(picture_.get(), 0) == 0);
}

void PeerMovie::Rewind() {
    Require(av_seek_frame(input_.get(), stream_, 0, AVSEEK_FLAG_BACKWARD) >= 0);
    avcodec_flush_buffers(decoder_.get());
    ended_ = false;
}

void PeerMovie::Decode() {
    for (;;) {
        const int result = avcodec_receive_frame(decoder_.get(), frame_.get());
        if (result == 0) return;
        if (result == AVERROR_EOF) {
            Rewind();
            continue;
        }
        Require(result == AVERROR(EAGAIN) && !ended_);
        ended_ = av_read_frame(input_.get(), packet_.get()) < 0;
        if (ended_ || packet_->stream_index == stream_)
            Require(avcodec_send_packet(decoder_.get(), ended_ ? nullptr : packet_.get()) == 0);
        av_packet_unref(packet_.get());
    }
}

void PeerMovie::Next() {
    Decode();
    Require(sws_scale_frame(scaler_.get(), picture_.get(), frame_.get()) >= 0);
}
