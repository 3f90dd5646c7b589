#pragma once

#include "dnx/Planes.h"
#include "dnx/VideoMatrix.h"

#include <cstdint>

namespace dnx {

// Pictures of words A R G B for each pixel, colour in video range, whose rows follow each other without
// padding.

/// Packs rows of a frame of planes of any kind, alpha opaque. Y'CbCr goes through `weights`; in 4:2:2
/// a chroma sample stands on the first pixel of its two, and the second takes the mean of the samples on both
/// sides. Throws std::bad_alloc.
void WriteRgb(const AVFrame& frame, const PlaneFormat& planes, RowBand band, LumaWeights weights,
              uint8_t* output);

/// Unpacks rows of a picture into a frame of planes: R'G'B' as it is, or Y'CbCr of BT.709 in 4:2:2, whose
/// chroma is weighed by (1 2 1) / 4 about the first pixel of each two. Beyond both edges the outermost pixel
/// repeats. Alpha is ignored. Throws std::bad_alloc.
void ReadRgb(const uint8_t* input, const PlaneFormat& planes, RowBand band, AVFrame& frame);

} // namespace dnx
