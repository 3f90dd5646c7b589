#pragma once

#include "media/AvHandles.h"

#include <cstdint>
#include <string>

/// How a track of one code stands in a file of one container.
struct TrackFormat {
    const char* muxer = nullptr; ///< FFmpeg's name of the container
    AVCodecID codec = AV_CODEC_ID_NONE;
    AVPixelFormat pixelFormat = AV_PIX_FMT_NONE; ///< of uncompressed tracks
    uint32_t tag = 0;                            ///< in FFmpeg's byte order; 0 leaves it to the container
    int bitsPerPixel = 24;                       ///< depth of the sample description; 32 tells of alpha
};

/// Chooses the form of a track by the file's extension.
/// @param fourCC  code of an encoder
/// @throw ToolError  `Unsupported`: an extension without a container, or a code that it can't hold
TrackFormat ChooseTrackFormat(const std::string& path, uint32_t fourCC, bool alpha);

/// Bytes of a row of an uncompressed code as files hold it: whole pixel groups, where
/// `PixelConvert::CalcRowBytes` may end inside one. 0 for other codes.
int64_t FileRowBytes(uint32_t fourCC, int width);
