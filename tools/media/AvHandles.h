#pragma once

#include "media/Rational.h"

#include <memory>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

// Owners of FFmpeg's objects.

struct AvInputDeleter {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct AvOutputDeleter {
    void operator()(AVFormatContext* context) const { avformat_free_context(context); }
};
struct AvIoDeleter {
    void operator()(AVIOContext* io) const { avio_close(io); }
};
struct AvPacketDeleter {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct AvFrameDeleter {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct AvCodecContextDeleter {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct AvParserDeleter {
    void operator()(AVCodecParserContext* parser) const { av_parser_close(parser); }
};

using AvInput = std::unique_ptr<AVFormatContext, AvInputDeleter>;
using AvOutput = std::unique_ptr<AVFormatContext, AvOutputDeleter>;
using AvIo = std::unique_ptr<AVIOContext, AvIoDeleter>;
using AvPacket = std::unique_ptr<AVPacket, AvPacketDeleter>;
using AvFrame = std::unique_ptr<AVFrame, AvFrameDeleter>;
using AvCodecContext = std::unique_ptr<AVCodecContext, AvCodecContextDeleter>;
using AvParser = std::unique_ptr<AVCodecParserContext, AvParserDeleter>;

/// A new packet.
/// @throw std::bad_alloc
AvPacket NewPacket();

/// A new frame.
/// @throw std::bad_alloc
AvFrame NewFrame();

/// An open decoder for a stream; null if there is none.
/// @param errorRecognition  of `AVCodecContext::err_recognition`
AvCodecContext OpenDecoder(const AVCodecParameters& parameters, int errorRecognition = 0);

/// FFmpeg's words for one of its negative results.
std::string AvErrorText(int error);

/// Keeps FFmpeg from writing to standard error, where the command says every failure in one line itself. For
/// the whole process, from the first call on.
void SilenceLibav();

/// FFmpeg's tag, first character least significant, as a FourCC, and back.
constexpr uint32_t SwapTag(uint32_t tag) {
    return tag >> 24 | (tag >> 8 & 0xFF00) | (tag << 8 & 0xFF0000) | tag << 24;
}

/// `ticks` units of `timeBase` seconds, reduced; 0/1 where that is beyond 64 bits.
Rational TicksToSeconds(int64_t ticks, AVRational timeBase);
