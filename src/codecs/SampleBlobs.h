#pragma once

#include <cstdint>

class Image;

/// `PixelConvert::BlobToImage` for a blob of `size` bytes.
/// @return false, with the image unchanged, also for an exception of the host's, and for a blob or a row size
///         that is too small for `image`, whose size may be another than the track's
bool ConvertToImage(uint8_t* blob, int32_t size, int32_t rowBytes, uint32_t packing, Image*& image);
