#include "host/LargeBlocks.h"
#include "host/Platform.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <unistd.h>

namespace {

/// Never destroyed: blocks are freed until the process ends, by other objects of its life too.
union Lasting {
    LargeBlocks blocks;
    constexpr Lasting() : blocks() {}
    ~Lasting() {}
};
constinit Lasting kept;

} // namespace

namespace Platform {

void* AllocMemAligned(int64_t size, int alignment) {
    if (size < 0 || alignment <= 0 || !std::has_single_bit(static_cast<unsigned>(alignment))) return nullptr;
    const size_t usedAlignment = std::max(static_cast<size_t>(alignment), sizeof(void*));
    const auto bytes = static_cast<size_t>(std::max<int64_t>(size, 1));
    if (bytes >= LargeBlocks::leastSize) return kept.blocks.Take(bytes, usedAlignment);
    void* block = nullptr;
    return posix_memalign(&block, usedAlignment, bytes) == 0 ? block : nullptr;
}

void FreeMemAligned(void* block) {
    if (!kept.blocks.Keep(block)) std::free(block);
}

int GetMemoryPageSize() { return static_cast<int>(sysconf(_SC_PAGESIZE)); }

} // namespace Platform
