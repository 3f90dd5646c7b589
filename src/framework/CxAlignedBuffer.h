#pragma once

#include "host/Platform.h"

#include <cstdint>

/// A page-aligned work buffer that grows when asked and is freed with its owner. Its bytes are not kept when
/// it grows. One thread at a time.
struct CxAlignedBuffer {
    void* data = nullptr; ///< null while there is no buffer
    int32_t capacity = 0; ///< bytes at `data`
    int32_t used = 0;     ///< bytes that the owner has filled; the owner's to set

    CxAlignedBuffer() = default;
    CxAlignedBuffer(const CxAlignedBuffer&) = delete;
    CxAlignedBuffer& operator=(const CxAlignedBuffer&) = delete;
    ~CxAlignedBuffer() { Release(); }

    /// Makes sure of `size` bytes and sets `used` to 0. A buffer that is large enough stays; otherwise it is
    /// replaced. Size 0 fits always and allocates nothing.
    /// @return false if there is no memory, in which case there is no buffer afterwards
    bool EnsureSize(int32_t size) {
        used = 0;
        if (size >= 0 && size <= capacity) return true;
        Release();
        // A negative size never fits, and is left to the allocator to refuse. Kept.
        data = Platform::AllocMemAligned(size, Platform::GetMemoryPageSize());
        if (data == nullptr) return false;
        capacity = size;
        return true;
    }

    /// Frees the buffer, if there is one; `used` stays.
    void Release() {
        if (capacity > 0) Platform::FreeMemAligned(data);
        data = nullptr;
        capacity = 0;
    }
};
