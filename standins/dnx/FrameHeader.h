#pragma once

#include "codecs/DNXRecords.h"

#include <cstddef>
#include <cstdint>

namespace dnx {

/// What the header of a frame tells (SMPTE ST 2019-1).
struct FrameHeader {
    uint32_t compressionId;
    uint32_t width;    ///< pixels
    uint32_t height;   ///< lines of the picture, both fields
    uint32_t depth;    ///< bits: 8, 10 or 12
    uint32_t sampling; ///< `dnxSampling...`
    uint32_t color;    ///< `dnxColor...`
    bool interlaced;
    bool alpha;
    bool losslessAlpha;
};

/// Reads the header of a frame of `size` bytes. False if the data isn't a frame; `header` is unchanged then.
bool ReadFrameHeader(const uint8_t* data, size_t size, FrameHeader& header);

} // namespace dnx
