#include "images/ImageOperations.h"

#include <algorithm>
#include <limits>

namespace {

/// Runs `visit(row, x)` for every pixel.
template <typename Visit>
void ForEachPixel(const Image& image, Visit visit) {
    for (int32_t row = 0; row < image.Height; ++row) {
        for (int32_t x = 0; x < image.Width; ++x)
            visit(row, x);
    }
}

uint8_t* PixelAddress(const Image& image, int32_t row, int32_t x) {
    return image.RowAddress(row) + static_cast<ptrdiff_t>(x) * image.PixelStride;
}

PixelFloat ReadPixel(const Image& image, int32_t row, int32_t x) {
    PixelFloat pixel{};
    // The accessor takes the image for its description; it changes nothing.
    image.GetPixelFloat(pixel, PixelAddress(image, row, x), nullptr, const_cast<Image*>(&image));
    return pixel;
}

void WritePixel(Image& image, int32_t row, int32_t x, const PixelFloat& pixel) {
    image.SetPixelFloat(pixel, PixelAddress(image, row, x), nullptr, &image);
}

} // namespace

HostImage ConvertImage(const Image& image, ImageDataKind kind) {
    HostImage converted = NewHostImage(image.Width, image.Height, kind);
    if (!converted) return nullptr;
    ForEachPixel(image,
                 [&](int32_t row, int32_t x) { WritePixel(*converted, row, x, ReadPixel(image, row, x)); });
    return converted;
}

HostImage NewOpaqueBlackImage(int32_t width, int32_t height, ImageDataKind kind) {
    HostImage image = NewHostImage(width, height, kind);
    if (!image) return nullptr;
    ForEachPixel(*image, [&](int32_t row, int32_t x) {
        WritePixel(*image, row, x, {0.0f, 0.0f, 0.0f, 1.0f});
    });
    return image;
}

ChannelRanges MeasureRanges(const Image& image) {
    ChannelRanges ranges;
    ranges.least.fill(std::numeric_limits<float>::infinity());
    ranges.greatest.fill(-std::numeric_limits<float>::infinity());
    ForEachPixel(image, [&](int32_t row, int32_t x) {
        const PixelFloat pixel = ReadPixel(image, row, x);
        const std::array<float, 4> values = {pixel.R, pixel.G, pixel.B, pixel.A};
        for (size_t channel = 0; channel < values.size(); ++channel) {
            ranges.least[channel] = std::min(ranges.least[channel], values[channel]);
            ranges.greatest[channel] = std::max(ranges.greatest[channel], values[channel]);
        }
    });
    return ranges;
}
