#pragma once

#include <atomic>
#include <cstdint>

/// Watches the host's allocator, which the test program stands before: every allocation of the program goes
/// through here on its way to the host, whatever the thread.
struct AllocatorSpy {
    /// Forgets what was seen, and lets allocations through.
    static void Reset();

    static std::atomic<int> allocations;   ///< calls of `Platform::AllocMemAligned`
    static std::atomic<int> frees;         ///< calls of `Platform::FreeMemAligned`
    static std::atomic<int64_t> lastSize;  ///< of the last allocation
    static std::atomic<int> lastAlignment; ///< of the last allocation
    static std::atomic<bool> fails;        ///< answers every allocation with null
};
