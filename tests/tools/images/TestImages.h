#pragma once

#include "images/HostImage.h"

#include <stdexcept>

/// A small picture with a different value in every channel of every pixel, alpha included.
inline HostImage MakePattern(int32_t width, int32_t height, ImageDataKind kind) {
    HostImage image = NewHostImage(width, height, kind);
    if (!image) throw std::runtime_error("no image");
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            const auto value = static_cast<float>(y * width + x) / static_cast<float>(width * height);
            const PixelFloat pixel{value, 1.0f - value, value * 0.5f, 0.25f + value * 0.5f};
            image->SetPixelFloat(pixel, image->RowAddress(y) + ptrdiff_t{x} * image->PixelStride, nullptr,
                                 image.get());
        }
    }
    return image;
}

/// Pixel of a picture, with row 0 at its top.
inline PixelFloat PixelAt(Image& image, int32_t x, int32_t y) {
    PixelFloat pixel{};
    const uint8_t* address = image.RowAddress(image.Height - 1 - y) + ptrdiff_t{x} * image.PixelStride;
    image.GetPixelFloat(pixel, address, nullptr, &image);
    return pixel;
}
