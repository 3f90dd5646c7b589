#pragma once

#include "dnx/Packings.h"

#include <cstdint>

namespace dnx {

/// Packs the picture of a frame of 4:2:2 planes as Y'CbCr, alpha opaque. At an odd width the last pixel is
/// given with its Cb and without its Cr.
void WritePairs(const AVFrame& frame, const PlaneFormat& planes, const Packing& packing, uint8_t* output);

/// Unpacks a picture of Y'CbCr without alpha into a frame of 4:2:2 planes. At an odd width the last pixel
/// takes the Cr of the pair before it.
/// @param depth  bits of a sample in `input`: 8 or 16
void ReadPairs(const uint8_t* input, int depth, const PlaneFormat& planes, AVFrame& frame);

} // namespace dnx
