#pragma once

#include "codecs/DNXRecords.h"
#include "dnx/Planes.h"

#include <cstdint>

namespace dnx {

/// How an uncompressed picture stands in memory: rows without padding, top row first. The module's packings
/// are
///
///     a48r  words A R G B, colour in video range
///     2vuy  bytes Cb Y0 Cr Y1 for two pixels, video range      v216  the same in words
///     yv8u  bytes Cb Y0 A0 Cr Y1 A1, alpha in full range       yv16  the same in words
struct Packing {
    bool rgb;
    int depth;  ///< bits of a sample: bytes for 8, little-endian words for 16
    bool alpha; ///< samples of each pixel are followed, in R'G'B' preceded, by alpha
};

/// The packing that a record tells. False if its fields do not belong together.
bool FindPacking(const DNXUncompressedParameters& parameters, Packing& packing);

/// Bytes of a picture of at most 65535 by 65535 pixels.
uint64_t PictureBytes(const Packing& packing, uint32_t width, uint32_t height);

/// Whether a packing holds what planes of a format give, and the other way around.
bool Converts(const Packing& packing, const PlaneFormat& planes);

/// Packs rows of a frame, alpha opaque, into a picture of `PictureBytes` bytes. The two must go together.
/// Throws std::bad_alloc.
void PackRows(const AVFrame& frame, const PlaneFormat& planes, RowBand band, const Packing& packing,
              uint8_t* output);

/// Unpacks rows of a picture of `PictureBytes` bytes into a writable frame, without their alpha. The two must
/// go together, and Y'CbCr has no alpha. Throws std::bad_alloc.
void UnpackRows(const uint8_t* input, const Packing& packing, const PlaneFormat& planes, RowBand band,
                AVFrame& frame);

} // namespace dnx
