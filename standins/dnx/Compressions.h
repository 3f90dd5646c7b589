#pragma once

extern "C" {
#include <libavutil/pixfmt.h>
}

#include <cstdint>

namespace dnx {

/// One compression that frames can be encoded in, with all that is known of it.
struct Compression {
    uint32_t id;
    uint32_t width;  ///< pixels; 0 for any
    uint32_t height; ///< pixels; 0 for any
    bool interlaced;
    AVPixelFormat format;   ///< planes that frames are encoded from
    int32_t selector;       ///< by which FFmpeg knows it: DNxHD Mbit/s, DNxHR profile
    uint32_t frameByteUnit; ///< DNxHD: bytes of every frame; DNxHR: bytes for 255 macroblocks

    bool IsHR() const { return width == 0; }
};

/// The compression of an ID, or null if frames of it are decoded at most.
const Compression* FindCompression(uint32_t id);

/// Whether pictures of a size can be encoded: the one size of a DNxHD compression, or any that FFmpeg encodes
/// and decodes as DNxHR.
bool AllowsSize(const Compression& compression, uint32_t width, uint32_t height);

/// Bytes of an encoded frame; all frames of a size are equally large.
uint32_t FrameBytes(const Compression& compression, uint32_t width, uint32_t height);

} // namespace dnx
