#pragma once

#include "dnx/ErrorTexts.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
}

#include <memory>

namespace dnx {

struct FreeFFmpegObject {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

using CodecContextPtr = std::unique_ptr<AVCodecContext, FreeFFmpegObject>;
using FramePtr = std::unique_ptr<AVFrame, FreeFFmpegObject>;
using PacketPtr = std::unique_ptr<AVPacket, FreeFFmpegObject>;

/// The error that a result of FFmpeg means: none, no memory, or else the given one.
inline Error ErrorOf(int result, Error otherwise) {
    if (result >= 0) return Error::None;
    return result == AVERROR(ENOMEM) ? Error::OutOfMemory : otherwise;
}

/// A context that isn't open yet, or null without memory. It works on one frame at a time, with all cores,
/// and is silent: what went wrong is told by error codes alone.
inline CodecContextPtr AllocateContext(const AVCodec* codec) {
    CodecContextPtr context(avcodec_alloc_context3(codec));
    if (context == nullptr) return context;
    context->thread_type = FF_THREAD_SLICE;
    context->thread_count = 0;
    context->log_level_offset = AV_LOG_TRACE + 1;
    return context;
}

} // namespace dnx
