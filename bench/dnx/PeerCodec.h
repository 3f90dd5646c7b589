#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <cstdint>
#include <memory>
#include <vector>

/// FFmpeg's DNxHD codec alone, on all processors: frames to planes, and these planes to frames again. Ends
/// the process on any failure.
class PeerCodec {
public:
    /// Prepares for a frame, and for frames like it.
    explicit PeerCodec(const std::vector<uint8_t>& frame);

    /// Decodes the frame again.
    void Decode();
    /// Puts a picture into the planes: `v216`, or `a48r` for a frame of RGB.
    void SetPicture(const std::vector<uint8_t>& picture);
    /// Encodes the planes.
    void Encode();

private:
    struct Release {
        void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
        void operator()(AVPacket* packet) const { av_packet_free(&packet); }
        void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    };
    template <typename T>
    using Pointer = std::unique_ptr<T, Release>;

    void OpenDecoder();
    void OpenEncoder();

    Pointer<AVCodecContext> decoder_;
    Pointer<AVCodecContext> encoder_;
    Pointer<AVPacket> frame_;   ///< to be decoded
    Pointer<AVPacket> encoded_; ///< what was encoded last
    Pointer<AVFrame> planes_;   ///< what was decoded last, or is to be encoded
};
