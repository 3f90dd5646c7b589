#include "framework/HeapSpy.h"

#include <cstdlib>
#include <new>

// The forms of `new` and `delete` for single objects are replaced together, so that each block goes back
// where it came from. Those for arrays and aligned blocks stay as they are.

namespace {

thread_local bool isLimited = false;
thread_local int allocationsLeft = 0;

} // namespace

HeapSpy::HeapSpy(int allocations) {
    allocationsLeft = allocations;
    isLimited = true;
}

HeapSpy::~HeapSpy() { isLimited = false; }

bool HeapSpy::RanOut() const { return allocationsLeft < 0; }

void* operator new(size_t size) {
    if (isLimited && --allocationsLeft < 0) throw std::bad_alloc();
    if (void* const block = std::malloc(size > 0 ? size : 1)) return block;
    throw std::bad_alloc();
}

void* operator new(size_t size, const std::nothrow_t&) noexcept {
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* block) noexcept { std::free(block); }

void operator delete(void* block, size_t) noexcept { std::free(block); }
