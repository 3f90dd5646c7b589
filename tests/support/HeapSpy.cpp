#include "support/HeapSpy.h"

#include <dlfcn.h>

#include <atomic>
#include <limits>
#include <new>

// Each form asks the function that this program would otherwise have called, so that blocks go back where
// they came from and sanitizers see them.

namespace {

thread_local bool isLimited = false;
thread_local int allocationsLeft = 0;

constexpr size_t never = std::numeric_limits<size_t>::max();

/// By form: allocations of at least this many bytes fail.
constinit std::atomic<size_t> failingSizes[] = {never, never, never};

std::atomic<size_t>& FailingSize(Allocation form) { return failingSizes[static_cast<int>(form)]; }

/// The function that would have been called if this program had none of that name.
template <typename Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

HeapSpy::HeapSpy(int allocations) {
    allocationsLeft = allocations;
    isLimited = true;
}

HeapSpy::~HeapSpy() { isLimited = false; }

bool HeapSpy::RanOut() const { return allocationsLeft < 0; }

NoMemory::NoMemory(Allocation form, size_t leastSize) : form_(form) { FailingSize(form_) = leastSize; }

NoMemory::~NoMemory() { FailingSize(form_) = never; }

void* operator new(size_t size) {
    static auto* const next = Next<void*(size_t)>("_Znwm");
    if (isLimited && --allocationsLeft < 0) throw std::bad_alloc();
    if (size >= FailingSize(Allocation::Single)) throw std::bad_alloc();
    return next(size);
}

void* operator new(size_t size, const std::nothrow_t&) noexcept {
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* operator new[](size_t size, const std::nothrow_t& tag) noexcept {
    static auto* const next = Next<void*(size_t, const std::nothrow_t&)>("_ZnamRKSt9nothrow_t");
    return size >= FailingSize(Allocation::Array) ? nullptr : next(size, tag);
}

void* operator new(size_t size, std::align_val_t alignment, const std::nothrow_t& tag) noexcept {
    static auto* const next =
        Next<void*(size_t, std::align_val_t, const std::nothrow_t&)>("_ZnwmSt11align_val_tRKSt9nothrow_t");
    return size >= FailingSize(Allocation::Aligned) ? nullptr : next(size, alignment, tag);
}
