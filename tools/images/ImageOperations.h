#pragma once

#include "images/HostImage.h"

#include <array>

/// A copy of `image` of another kind, through the host's accessors; null if memory is short.
HostImage ConvertImage(const Image& image, ImageDataKind kind);

/// An image of opaque black; null if memory is short.
HostImage NewOpaqueBlackImage(int32_t width, int32_t height, ImageDataKind kind);

/// Smallest and largest value of each channel R, G, B, A, with 1.0 as white. Not-a-number does not count.
struct ChannelRanges {
    std::array<float, 4> least{};
    std::array<float, 4> greatest{};
};
ChannelRanges MeasureRanges(const Image& image);
