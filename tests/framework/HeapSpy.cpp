#include "framework/HeapSpy.h"

#include <cstdlib>
#include <new>

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

void operator delete(void* block) noexcept { std::free(block); }

void operator delete(void* block, size_t) noexcept { std::free(block); }
