#pragma once

#include "ffmpeg/FFmpegFunctions.h"
#include "ffmpeg/PlaneKernels.h"
#include "host/Image.h"

namespace CxFFMPEG {

/// Whether frames of a format are written by `WritePlanes`: Y'CbCr of 8 to 16 bits in planes, with or without
/// alpha, in which at most two columns and two rows share a chroma sample.
bool HasWritablePlanes(AVPixelFormat format);

/// Writes a picture of 16-bit R, G, B as Y'CbCr, on the host's threads.
///
/// Matrix and range are those that the picture says. A chroma sample stands on the first of its two columns
/// and midway between its two rows, which is where players expect it that are told nothing (ISO/IEC 14496-10,
/// E.2.1, type 0): it has the weights 1 2 1 about that column and the mean of the rows. Beyond the edges the
/// outermost pixel repeats. Codes are rounded once, to nearest; alpha is opaque.
///
/// @param words    of `AV_PIX_FMT_RGB48LE`
/// @param picture  as large, of a format with `HasWritablePlanes`, in memory of its own
/// @param image    its `DoMultiProcess` runs the rows; nothing else of it is touched
/// @param kernels  the instruction set
/// @return what `DoMultiProcess` returns. Throws std::bad_alloc
bool WritePlanes(const AVFrame& words, AVFrame& picture, Image& image,
                 const PlaneKernels& kernels = VectorPlaneKernels());

} // namespace CxFFMPEG
