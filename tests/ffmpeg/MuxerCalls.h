#pragma once

#include "ffmpeg/FFmpegSpy.h"

#include <cstdint>
#include <string>
#include <vector>

using Calls = std::vector<std::string>;

/// Sees the streams that are added to files, and the calls that write them, during its life.
class MuxerCalls {
public:
    MuxerCalls()
        : stream_(&FFmpegFunctions::avformat_new_stream, NewStream),
          header_(&FFmpegFunctions::avformat_write_header, WriteHeader),
          frame_(&FFmpegFunctions::av_write_frame, WriteFrame),
          interleaved_(&FFmpegFunctions::av_interleaved_write_frame, WriteInterleaved),
          flush_(&FFmpegFunctions::avio_flush, Flush),
          trailer_(&FFmpegFunctions::av_write_trailer, WriteTrailer) {
        streams.clear();
        all.clear();
        headerResult = 0;
    }

    /// The last one that the file has.
    static AVStream& LastStream() { return *streams.back(); }
    static std::string FileTag(const char* key) { return TextOf(file->metadata, key); }
    static std::string TextOf(const AVDictionary* dictionary, const char* key) {
        const AVDictionaryEntry* const entry = av_dict_get(dictionary, key, nullptr, 0);
        return entry != nullptr ? entry->value : "(none)";
    }

    static inline AVFormatContext* file = nullptr; ///< the last one that got a stream, as long as it is open
    static inline std::vector<AVStream*> streams;  ///< as long as their files are open
    static inline Calls all;
    static inline std::vector<int64_t> times; ///< of the last packet: pts, dts, duration
    static inline int packetStream = -1;      ///< of the last packet
    static inline int headerResult = 0;       ///< given instead of writing a header, if negative

private:
    static AVStream* NewStream(AVFormatContext* context, const AVCodec* codec) {
        file = context;
        return streams.emplace_back(avformat_new_stream(context, codec));
    }
    static int WriteHeader(AVFormatContext* context, AVDictionary** options) {
        all.emplace_back("header");
        return headerResult < 0 ? headerResult : avformat_write_header(context, options);
    }
    static void Note(const char* name, const AVPacket* packet) {
        all.emplace_back(packet != nullptr ? name : "end of packets");
        if (packet == nullptr) return;
        times = {packet->pts, packet->dts, packet->duration};
        packetStream = packet->stream_index;
    }
    static int WriteFrame(AVFormatContext* context, AVPacket* packet) {
        Note("packet", packet);
        return av_write_frame(context, packet);
    }
    static int WriteInterleaved(AVFormatContext* context, AVPacket* packet) {
        Note("sorted packet", packet);
        return av_interleaved_write_frame(context, packet);
    }
    static void Flush(AVIOContext* context) {
        all.emplace_back("flush");
        avio_flush(context);
    }
    static int WriteTrailer(AVFormatContext* context) {
        all.emplace_back("trailer");
        return av_write_trailer(context);
    }

    ReplacedFunction<decltype(avformat_new_stream)> stream_;
    ReplacedFunction<int(AVFormatContext*, AVDictionary**)> header_; ///< `decltype` has an attribute
    ReplacedFunction<decltype(av_write_frame)> frame_;
    ReplacedFunction<decltype(av_interleaved_write_frame)> interleaved_;
    ReplacedFunction<decltype(avio_flush)> flush_;
    ReplacedFunction<decltype(av_write_trailer)> trailer_;
};
