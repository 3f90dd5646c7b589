#pragma once

#include "ffmpeg/FFmpegFunctions.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// What libavformat finds in a file.
class SavedMovie {
public:
    explicit SavedMovie(const std::string& path);

    /// Whether the file can be read at all; if not, all else is empty.
    bool IsOpen() const { return file != nullptr; }
    /// Text of a key of the file's metadata, or "(none)".
    std::string Tag(const char* key) const;
    /// The stream of pictures or of sound, or null.
    const AVStream* Pictures() const { return Find(AVMEDIA_TYPE_VIDEO); }
    const AVStream* Sound() const { return Find(AVMEDIA_TYPE_AUDIO); }

    int pictureCount = 0;
    std::vector<uint8_t> pictures; ///< of all packets, one after the other
    std::vector<uint8_t> sound;    ///< the same

private:
    struct Closer {
        void operator()(AVFormatContext* context) const;
    };

    const AVStream* Find(AVMediaType type) const;
    void ReadPackets();

    std::unique_ptr<AVFormatContext, Closer> file;
};
