#pragma once

#include "dnx/ErrorTexts.h"
#include "dnx/Planes.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
}

#include <algorithm>
#include <atomic>
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

/// Runs `work` for bands of a picture's rows, on the threads that the open context has for slices.
/// @return no memory if `work` throws, after all bands
template <typename Work>
Error ForEachBand(AVCodecContext& context, size_t rows, const Work& work) {
    constexpr int bands = 16;
    struct Job {
        const Work& work;
        size_t rows;
        /// FFmpeg's threads are in order with this one by atomics of its own, which ThreadSanitizer can't
        /// see.
        std::atomic<int> ended = 0;
    } job = {work, rows};
    const auto run = [](AVCodecContext*, void* argument, int index, int) {
        Job& shared = *static_cast<Job*>(argument);
        const auto band = static_cast<size_t>(index);
        int result = 0;
        try {
            shared.work(RowBand{shared.rows * band / bands, shared.rows * (band + 1) / bands});
        } catch (...) {
            result = AVERROR(ENOMEM);
        }
        shared.ended.fetch_add(1, std::memory_order_release);
        return result;
    };
    int results[bands] = {};
    context.execute2(&context, run, &job, results, bands);
    if (job.ended.load(std::memory_order_acquire) != bands) return Error::OutOfMemory;
    const bool failed = std::ranges::any_of(results, [](int result) { return result < 0; });
    return failed ? Error::OutOfMemory : Error::None;
}

} // namespace dnx
