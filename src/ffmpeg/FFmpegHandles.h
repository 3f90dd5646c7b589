#pragma once

#include "ffmpeg/FFmpegBinding.h"

#include <memory>

// Owners of FFmpeg's objects, to be used once `LoadFFmpeg` has returned true.

namespace CxFFMPEG {

struct CodecContextDeleter {
    void operator()(AVCodecContext* context) const { FFmpeg().avcodec_free_context(&context); }
};
struct ScalerDeleter {
    void operator()(SwsContext* scaler) const { FFmpeg().sws_freeContext(scaler); }
};
struct PacketDeleter {
    void operator()(AVPacket* packet) const { FFmpeg().av_packet_free(&packet); }
};
struct InputDeleter {
    void operator()(AVFormatContext* input) const { FFmpeg().avformat_close_input(&input); }
};

using CodecContextPointer = std::unique_ptr<AVCodecContext, CodecContextDeleter>;
using ScalerPointer = std::unique_ptr<SwsContext, ScalerDeleter>;
using PacketPointer = std::unique_ptr<AVPacket, PacketDeleter>;
using InputPointer = std::unique_ptr<AVFormatContext, InputDeleter>;

} // namespace CxFFMPEG
