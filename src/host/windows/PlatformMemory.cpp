// Memory on Windows, in place of the file of the same name one folder up.

#include "host/Platform.h"

#include <algorithm>
#include <bit>
#include <malloc.h>
#include <windows.h>

namespace Platform {

void* AllocMemAligned(int64_t size, int alignment) {
    if (size < 0 || alignment <= 0 || !std::has_single_bit(static_cast<unsigned>(alignment))) return nullptr;
    const size_t usedAlignment = std::max(static_cast<size_t>(alignment), sizeof(void*));
    return _aligned_malloc(static_cast<size_t>(std::max<int64_t>(size, 1)), usedAlignment);
}

void FreeMemAligned(void* block) { _aligned_free(block); }

int GetMemoryPageSize() {
    SYSTEM_INFO information = {};
    GetSystemInfo(&information);
    return static_cast<int>(information.dwPageSize);
}

} // namespace Platform
