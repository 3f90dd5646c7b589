#pragma once

#include <cstdint>

class CxAbstractAVCodec;
class Image;

/// Reads sample `index` of the codec's source, which it must have, into the codec's sample buffer.
/// @param size  out: bytes of the sample that may be read; negative if the source says so
/// @return null if there is no such sample or it is empty; otherwise valid until the next call
const uint8_t* ReadSample(CxAbstractAVCodec& codec, int32_t index, int32_t& size);

/// Whether a blob of `size` bytes holds all that a conversion to `image` reads. The image's size may differ
/// from the track's, and a sample may be cut short.
bool HoldsImage(int32_t size, uint32_t packing, int32_t rowBytes, const Image& image);

/// `PixelConvert::BlobToImage` for a blob of `size` bytes.
/// @return false, with the image unchanged, also for an exception of the host's, and for a blob or a row size
///         that is too small for `image`, whose size may be another than the track's
bool ConvertToImage(uint8_t* blob, int32_t size, int32_t rowBytes, uint32_t packing, Image*& image);
