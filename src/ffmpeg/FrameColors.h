#pragma once

#include "ffmpeg/FFmpegFunctions.h"

#include <cstdint>

namespace CxFFMPEG {

/// Selector of the host's colour conversion for a frame's matrix: 1 BT.709, 0 and 2 BT.601.
int32_t HostMatrixOf(const AVFrame& frame);

/// The number of a frame's matrix for `sws_getCoefficients`. Those that it doesn't know, and none, are BT.709
/// here.
int ScalerMatrixOf(const AVFrame& frame);

/// Share of red and blue in luma.
struct LumaShares {
    double red;
    double blue;

    double Green() const { return 1 - red - blue; }
};

/// Those of the matrix of `ScalerMatrixOf`.
LumaShares LumaSharesOf(const AVFrame& frame);

/// Whether samples of a format are Y'CbCr or luma, which have a range, rather than R, G, B.
bool HasRange(AVPixelFormat format);

/// Whether the samples of a frame use every code, as the frame says or else its format. The formats of JPEG
/// always do, and grey does where the frame says nothing.
///
/// @param byDefault  for other frames that say nothing
bool IsFullRange(const AVFrame& frame, bool byDefault);

/// The format of the frame's samples without a range: the formats of JPEG, which FFmpeg wants to lose, are
/// others in full range.
AVPixelFormat FormatWithoutRange(const AVFrame& frame);

} // namespace CxFFMPEG
