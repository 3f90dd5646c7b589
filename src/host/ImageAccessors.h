#pragma once

#include "host/Image.h"

/// All that is known of one kind of image: its storage and its accessors.
struct ImageKindDescriptor {
    ImageDataFormat format;
    Image::GetPixelFunction getPixel;
    Image::SetPixelFunction setPixel;
    Image::GetPixelFloatFunction getPixelFloat;
    Image::SetPixelFloatFunction setPixelFloat;
};

/// Descriptor of an `ImageDataKind`, or null if the host has no such kind. Constant for the whole process.
const ImageKindDescriptor* FindImageKind(uint32_t kind);
