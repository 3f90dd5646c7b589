#pragma once

#include "dnx/Packings.h"

#include <cstdint>

namespace dnx {

/// Packs rows of a frame of 4:2:2 planes into a picture of Y'CbCr, alpha opaque. At an odd width the last
/// pixel is given with its Cb and without its Cr.
void WritePairs(const AVFrame& frame, const PlaneFormat& planes, RowBand band, const Packing& packing,
                uint8_t* output);

/// Unpacks rows of a picture of Y'CbCr without alpha into a frame of 4:2:2 planes. At an odd width the last
/// pixel takes the Cr of the pair before it.
/// @param depth  bits of a sample in `input`: 8 or 16
void ReadPairs(const uint8_t* input, int depth, const PlaneFormat& planes, RowBand band, AVFrame& frame);

} // namespace dnx
