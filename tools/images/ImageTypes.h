#pragma once

#include "host/Image.h"

#include <OpenImageIO/typedesc.h>

/// OpenImageIO's type of one channel of a host image of this kind.
inline OIIO::TypeDesc ChannelType(ImageDataKind kind) {
    switch (kind) {
    case ImageData_RGBA8: return OIIO::TypeDesc::UINT8;
    case ImageData_RGBAHalf: return OIIO::TypeDesc::HALF;
    case ImageData_RGBAFloat: return OIIO::TypeDesc::FLOAT;
    case ImageData_RGBA16: break;
    }
    return OIIO::TypeDesc::UINT16;
}

/// Host image that holds values of this type; integers beyond 16 bits become floats.
inline ImageDataKind KindOf(const OIIO::TypeDesc& type) {
    if (type == OIIO::TypeDesc::UINT8) return ImageData_RGBA8;
    if (type == OIIO::TypeDesc::HALF) return ImageData_RGBAHalf;
    if (type == OIIO::TypeDesc::UINT16) return ImageData_RGBA16;
    return ImageData_RGBAFloat;
}
