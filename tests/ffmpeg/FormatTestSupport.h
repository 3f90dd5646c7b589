#pragma once

#include "ffmpeg/CodecTestSupport.h"
#include "ffmpeg/FFMPEGFileFormats.h"
#include "ffmpeg/FFmpegSpy.h"
#include "ffmpeg/GreyMovie.h"

#include <string>
#include <vector>

/// A format object on its own, as the host's tools drive it.
class LoadedFormat {
public:
    LoadedFormat() : format(nullptr, ScriptVal(), TagList()) {}
    explicit LoadedFormat(const std::string& path) : LoadedFormat() { Open(path); }

    bool Open(const std::string& path) { return format.LoadHeaderTagList(path.c_str(), tags); }

    /// Loads a frame into a 16-bit image of its own.
    /// @return the frame that the picture is of, modulo 24; -1 if it is of none or the load fails
    int32_t Load(uint32_t frame) {
        const ImagePtr image = MakeImage(format.width, format.height);
        Image* target = image.get();
        return format.LoadFrameTagList(frame, target, tags) ? FrameOfImage(*image) : -1;
    }

    int32_t Count() { return format.GetAttr(CxFFMPEG::FFmpegTag_FrameCount, 0); }
    double Rate() { return format.GetAttr(CxFFMPEG::FFmpegTag_FrameRate, -1.0); }

    CxFFMPEG::FFMPEGFileFormats format;
    TagList tags;
};

/// Sees every place that is sought during its life.
class SoughtPlaces {
public:
    struct Place {
        int stream;
        int64_t time;
        int flags;
        bool operator==(const Place&) const = default;
    };

    SoughtPlaces() : replaced_(&FFmpegFunctions::av_seek_frame, Seek) {
        all.clear();
        isFailing = false;
    }

    static int Count() { return static_cast<int>(all.size()); }

    static inline std::vector<Place> all;
    static inline bool isFailing = false; ///< nothing can be sought

private:
    static int Seek(AVFormatContext* file, int stream, int64_t time, int flags) {
        all.push_back({stream, time, flags});
        return isFailing ? AVERROR(EIO) : av_seek_frame(file, stream, time, flags);
    }

    ReplacedFunction<decltype(av_seek_frame)> replaced_;
};

/// Changes what FFmpeg finds out of the streams of files that are opened during its life, and remembers the
/// last such file.
class ChangedStreams {
public:
    using Change = void (*)(AVStream& stream);

    explicit ChangedStreams(Change function) : replaced_(&FFmpegFunctions::avformat_find_stream_info, Find) {
        change = function;
        file = nullptr;
    }

    static inline Change change = nullptr;
    static inline AVFormatContext* file = nullptr; ///< as long as it is open

private:
    static int Find(AVFormatContext* context, AVDictionary** options) {
        const int result = avformat_find_stream_info(context, options);
        file = context;
        for (unsigned i = 0; i < context->nb_streams; ++i)
            change(*context->streams[i]);
        return result;
    }

    ReplacedFunction<decltype(avformat_find_stream_info)> replaced_;
};

/// Changes the packets that are read during its life.
class ChangedPackets {
public:
    /// May change the result too; negative is the end.
    using Change = int (*)(AVPacket& packet);

    explicit ChangedPackets(Change function) : replaced_(&FFmpegFunctions::av_read_frame, Read) {
        change = function;
        count = 0;
    }

    static inline Change change = nullptr;
    static inline int count = 0; ///< packets that were read

private:
    static int Read(AVFormatContext* file, AVPacket* packet) {
        const int result = av_read_frame(file, packet);
        if (result < 0) return result;
        ++count;
        const int changed = change(*packet);
        if (changed < 0) av_packet_unref(packet);
        return changed;
    }

    ReplacedFunction<decltype(av_read_frame)> replaced_;
};
