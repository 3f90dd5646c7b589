#include "framework/AllocatorSpy.h"

#include "host/Platform.h"

#include <dlfcn.h>

std::atomic<int> AllocatorSpy::allocations = 0;
std::atomic<int> AllocatorSpy::frees = 0;
std::atomic<int64_t> AllocatorSpy::lastSize = 0;
std::atomic<int> AllocatorSpy::lastAlignment = 0;
std::atomic<bool> AllocatorSpy::fails = false;

void AllocatorSpy::Reset() {
    allocations = 0;
    frees = 0;
    lastSize = 0;
    lastAlignment = 0;
    fails = false;
}

namespace {

/// The host's own function, which the one of the same name in this file hides.
template <typename Function>
Function* HostFunction(const char* mangledName) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, mangledName));
}

} // namespace

void* Platform::AllocMemAligned(int64_t size, int alignment) {
    static auto* const host = HostFunction<void*(int64_t, int)>("_ZN8Platform15AllocMemAlignedEli");
    ++AllocatorSpy::allocations;
    AllocatorSpy::lastSize = size;
    AllocatorSpy::lastAlignment = alignment;
    return AllocatorSpy::fails ? nullptr : host(size, alignment);
}

void Platform::FreeMemAligned(void* block) {
    static auto* const host = HostFunction<void(void*)>("_ZN8Platform14FreeMemAlignedEPv");
    ++AllocatorSpy::frees;
    host(block);
}
