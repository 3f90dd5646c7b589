#pragma once

#include "host/Image.h"

#include <memory>

struct FreeHostImage {
    void operator()(Image* image) const { Image::Free(image); }
};

/// A host image that is freed with its owner.
using HostImage = std::unique_ptr<Image, FreeHostImage>;

/// Makes an image of transparent black; null as `Image::Allocate` says.
inline HostImage NewHostImage(int32_t width, int32_t height, ImageDataKind kind) {
    return HostImage(Image::Allocate(width, height, kind));
}
