#pragma once

#include "ffmpeg/FFmpegFunctions.h"
#include "host/ColorConvert.h"

namespace CxFFMPEG {

/// A pixel format whose frames the host's colour conversion takes as they stand.
struct FrameLayout {
    AVPixelFormat format;
    ColorLayout full;  ///< of a frame that uses every code
    ColorLayout video; ///< of any other
    int planes;        ///< 1 to 3

    /// Whether a frame's rows are where the host expects them. The host is told the line size of the first
    /// plane alone, and takes those of two chroma planes to be half of it and that of one to be the same.
    /// Decoders that allocate their frames themselves, odd widths and flipped frames may have it otherwise.
    bool HasRowsOf(const AVFrame& frame) const;
};

/// The layout of the frame's pixel format, or null if the host has none.
const FrameLayout* FindFrameLayout(const AVFrame& frame);

} // namespace CxFFMPEG
