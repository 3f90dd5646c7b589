#pragma once

#include <algorithm>
#include <cstdint>

/// Bytes from `sample` on that lie in the buffer of `capacity` bytes, if it lies there; otherwise `size`,
/// which is all that is known of memory of the source's own.
inline int32_t LimitToBuffer(int32_t size, const uint8_t* sample, const uint8_t* buffer, int32_t capacity) {
    const uintptr_t offset = reinterpret_cast<uintptr_t>(sample) - reinterpret_cast<uintptr_t>(buffer);
    const bool isInside = offset == 0 || offset < static_cast<uintptr_t>(capacity);
    return isInside ? std::min(size, capacity - static_cast<int32_t>(offset)) : size;
}
