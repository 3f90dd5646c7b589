#include "host/Platform.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <unistd.h>

namespace Platform {

void* AllocMemAligned(int64_t size, int alignment) {
    if (size < 0 || alignment <= 0 || !std::has_single_bit(static_cast<unsigned>(alignment))) return nullptr;
    const size_t usedAlignment = std::max(static_cast<size_t>(alignment), sizeof(void*));
    void* block = nullptr;
    const int result = posix_memalign(&block, usedAlignment, static_cast<size_t>(std::max<int64_t>(size, 1)));
    return result == 0 ? block : nullptr;
}

void FreeMemAligned(void* block) { std::free(block); }

int GetMemoryPageSize() { return static_cast<int>(sysconf(_SC_PAGESIZE)); }

} // namespace Platform
