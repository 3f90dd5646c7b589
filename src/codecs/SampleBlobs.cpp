#include "codecs/SampleBlobs.h"

#include "host/Image.h"
#include "pixel/PixelConvert.h"
#include "pixel/PixelFormatTable.h"

namespace {

/// Whether a blob of `size` bytes holds all that a conversion to `image` reads. The image's size may differ
/// from the track's, and a sample may be cut short.
bool HoldsImage(int32_t size, uint32_t packing, int32_t rowBytes, const Image& image) {
    const PixelFormat* const format = FindPixelFormat(packing);
    if (format == nullptr || size < 0 || rowBytes < 0) return false;
    return static_cast<uint64_t>(size) >= BytesRead(*format, image.Width, image.Height, rowBytes);
}

} // namespace

bool ConvertToImage(uint8_t* blob, int32_t size, int32_t rowBytes, uint32_t packing, Image*& image) {
    if (image == nullptr || !HoldsImage(size, packing, rowBytes, *image)) return false;
    try {
        return PixelConvert::BlobToImage(blob, static_cast<uint32_t>(rowBytes), packing, image);
    } catch (...) {
        return false;
    }
}
