#pragma once

#include "ffmpeg/FFmpegFunctions.h"
#include "host/Image.h"

namespace CxFFMPEG {

/// The format of 16-bit words, RGB or RGBA, that holds what the frame has; `AV_PIX_FMT_NONE` if FFmpeg
/// doesn't know the frame's own.
AVPixelFormat WordFormatOf(const AVFrame& frame);

/// Writes a frame of 16-bit words into an image, over the rows and columns that both have, on the host's
/// threads. Bottom rows meet: an image's rows run bottom-up, a frame's top-down.
///
/// @param frame  of a format of `WordFormatOf`; RGB becomes opaque
/// @return what `Image::DoMultiProcess` returns; an exception of an accessor reaches the caller
bool WriteFrameRows(const AVFrame& frame, Image& image);

} // namespace CxFFMPEG
