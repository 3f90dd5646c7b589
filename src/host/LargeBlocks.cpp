#include "host/LargeBlocks.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <malloc.h>
#include <sys/mman.h>

namespace {

constexpr size_t hugePage = size_t{2} << 20;

bool IsAligned(const void* block, size_t alignment) {
    return (reinterpret_cast<uintptr_t>(block) & (alignment - 1)) == 0;
}

/// Advice goes to whole huge pages, lest one be split. What the system makes of it changes no result.
void Advise(void* block, size_t size, int advice) {
    if (IsAligned(block, hugePage)) madvise(block, size & ~(hugePage - 1), advice);
}

} // namespace

// GCC has a macro, Clang a feature.
#ifdef __has_feature
#define CORVEX_HAS_FEATURE(name) __has_feature(name)
#else
#define CORVEX_HAS_FEATURE(name) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || CORVEX_HAS_FEATURE(address_sanitizer)
constexpr bool LargeBlocks::areKept = false;
#else
constexpr bool LargeBlocks::areKept = true;
#endif

LargeBlocks::~LargeBlocks() { Clear(); }

void LargeBlocks::Clear() {
    const std::lock_guard lock(mutex_);
    while (count_ != 0)
        std::free(Remove(0));
}

void* LargeBlocks::Take(size_t size, size_t alignment) {
    void* block = TakeKept(size, alignment);
    if (block != nullptr) return block;
    const size_t usedAlignment = std::max(alignment, hugePage);
    if (posix_memalign(&block, usedAlignment, size) != 0) {
        Clear();
        if (posix_memalign(&block, usedAlignment, size) != 0) return nullptr;
    }
    Advise(block, size, MADV_HUGEPAGE);
    return block;
}

void* LargeBlocks::TakeKept(size_t size, size_t alignment) {
    const std::lock_guard lock(mutex_);
    const auto end = blocks_.begin() + count_;
    auto best = end;
    for (auto block = blocks_.begin(); block != end; ++block) {
        const bool fits = block->size >= size && block->size / 2 <= size && IsAligned(block->data, alignment);
        if (fits && (best == end || block->size < best->size)) best = block;
    }
    return best == end ? nullptr : Remove(static_cast<size_t>(best - blocks_.begin()));
}

bool LargeBlocks::Keep(void* block) {
    const size_t size = malloc_usable_size(block);
    if (!areKept || size < leastSize || size > mostKept) return false;
    Advise(block, size, MADV_FREE);
    const std::lock_guard lock(mutex_);
    while (count_ == blocks_.size() || kept_ + size > mostKept)
        std::free(Remove(0));
    blocks_[count_++] = {block, size};
    kept_ += size;
    return true;
}

void* LargeBlocks::Remove(size_t index) {
    const auto block = blocks_.begin() + index;
    void* const data = block->data;
    kept_ -= block->size;
    std::move(block + 1, blocks_.begin() + count_, block);
    --count_;
    return data;
}
