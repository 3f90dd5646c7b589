#include "PeerCodec.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

void Require(bool condition) {
    if (!condition) std::abort();
}

/// Rounds words to the codes of one plane: every `step`th from the place `from` on.
template <typename Sample>
void FillPlane(const AVFrame& frame, int plane, const std::vector<uint16_t>& words, size_t from,
               size_t step) {
    const int shift = sizeof(Sample) == 1 ? 8 : 6;
    const auto rowWords = words.size() / static_cast<size_t>(frame.height);
    for (int y = 0; y < frame.height; ++y) {
        auto* const row = reinterpret_cast<Sample*>(frame.data[plane] + ptrdiff_t{y} * frame.linesize[plane]);
        const uint16_t* const source = words.data() + static_cast<size_t>(y) * rowWords;
        for (size_t x = 0, at = from; at < rowWords; ++x, at += step)
            row[x] = static_cast<Sample>((source[at] + (1 << (shift - 1))) >> shift);
    }
}

} // namespace

PeerCodec::PeerCodec(const std::vector<uint8_t>& frame)
    : frame_(av_packet_alloc()), encoded_(av_packet_alloc()), planes_(av_frame_alloc()) {
    Require(av_new_packet(frame_.get(), static_cast<int>(frame.size())) == 0);
    std::ranges::copy(frame, frame_->data);
    OpenDecoder();
    Decode();
    OpenEncoder();
}

void PeerCodec::OpenDecoder() {
    const AVCodec* const codec = avcodec_find_decoder(AV_CODEC_ID_DNXHD);
    decoder_.reset(avcodec_alloc_context3(codec));
    decoder_->thread_type = FF_THREAD_SLICE;
    decoder_->thread_count = 0;
    Require(avcodec_open2(decoder_.get(), codec, nullptr) == 0);
}

void PeerCodec::OpenEncoder() {
    const AVCodec* const codec = avcodec_find_encoder(AV_CODEC_ID_DNXHD);
    encoder_.reset(avcodec_alloc_context3(codec));
    encoder_->thread_type = FF_THREAD_SLICE;
    encoder_->thread_count = 0;
    encoder_->width = planes_->width;
    encoder_->height = planes_->height;
    encoder_->pix_fmt = static_cast<AVPixelFormat>(planes_->format);
    encoder_->time_base = {1, 25};
    // The decoder tells the profile of DNxHR, and the bit rate by which the encoder knows one of DNxHD.
    if (decoder_->profile != FF_PROFILE_DNXHD)
        av_opt_set_int(encoder_->priv_data, "profile", decoder_->profile, 0);
    else
        encoder_->bit_rate = planes_->interlaced_frame != 0 ? 185'000'000 : 175'000'000;
    if (planes_->interlaced_frame != 0) encoder_->flags |= AV_CODEC_FLAG_INTERLACED_DCT;
    Require(avcodec_open2(encoder_.get(), codec, nullptr) == 0);
    planes_->pict_type = AV_PICTURE_TYPE_NONE;
}

void PeerCodec::Decode() {
    Require(avcodec_send_packet(decoder_.get(), frame_.get()) == 0);
    Require(avcodec_receive_frame(decoder_.get(), planes_.get()) == 0);
}

void PeerCodec::SetPicture(const std::vector<uint8_t>& picture) {
    std::vector<uint16_t> words(picture.size() / 2);
    std::memcpy(words.data(), picture.data(), words.size() * 2);
    Require(av_frame_make_writable(planes_.get()) == 0);
    if (planes_->format == AV_PIX_FMT_GBRP10) {
        FillPlane<uint16_t>(*planes_, 0, words, 2, 4);
        FillPlane<uint16_t>(*planes_, 1, words, 3, 4);
        FillPlane<uint16_t>(*planes_, 2, words, 1, 4);
        return;
    }
    const auto fill = planes_->format == AV_PIX_FMT_YUV422P ? FillPlane<uint8_t> : FillPlane<uint16_t>;
    fill(*planes_, 0, words, 1, 2);
    fill(*planes_, 1, words, 0, 4);
    fill(*planes_, 2, words, 2, 4);
}

void PeerCodec::Encode() {
    ++planes_->pts;
    Require(avcodec_send_frame(encoder_.get(), planes_.get()) == 0);
    Require(avcodec_receive_packet(encoder_.get(), encoded_.get()) == 0);
}
