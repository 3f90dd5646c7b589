#pragma once

#include "framework/CxAlignedBuffer.h"

#include <cstdint>
#include <cstring>

/// Makes sure of `size` bytes for a picture. Fresh memory is cleared, so that what a decoder leaves out never
/// shows old memory.
/// @return false for a picture without bytes or of 2 GiB and more, and if memory is short
inline bool EnsurePicture(CxAlignedBuffer& buffer, int64_t size) {
    if (size <= 0 || size > INT32_MAX) return false;
    const int32_t capacity = buffer.capacity;
    if (!buffer.EnsureSize(static_cast<int32_t>(size))) return false;
    if (buffer.capacity != capacity) std::memset(buffer.data, 0, static_cast<size_t>(size));
    return true;
}
