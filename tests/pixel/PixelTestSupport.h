#pragma once

#include "host/Image.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <cstdint>
#include <vector>

inline uint32_t BytesPerPixelOf(ImageDataKind kind) {
    switch (kind) {
    case ImageData_RGBA8: return 4;
    case ImageData_RGBA16:
    case ImageData_RGBAHalf: return 8;
    case ImageData_RGBAFloat: return 16;
    }
    return 0;
}

/// The bytes of an image's pixels, row 0 (the bottom row) first.
inline std::vector<uint8_t> PixelBytes(const Image& image, ImageDataKind kind) {
    std::vector<uint8_t> bytes;
    const size_t rowBytes = static_cast<size_t>(image.Width) * BytesPerPixelOf(kind);
    for (int32_t row = 0; row < image.Height; ++row)
        bytes.insert(bytes.end(), image.RowTable[row], image.RowTable[row] + rowBytes);
    return bytes;
}

inline Pixel GetPixelAt(Image& image, int32_t x, int32_t row) {
    Pixel pixel;
    image.GetPixel(pixel, image.RowTable[row] + int64_t{x} * image.PixelStride, nullptr, &image);
    return pixel;
}

inline void SetPixelAt(Image& image, int32_t x, int32_t row, const Pixel& pixel) {
    image.SetPixel(pixel, image.RowTable[row] + int64_t{x} * image.PixelStride, nullptr, &image);
}

inline void SetPixelAt(Image& image, int32_t x, int32_t row, const PixelFloat& pixel) {
    image.SetPixelFloat(pixel, image.RowTable[row] + int64_t{x} * image.PixelStride, nullptr, &image);
}
