#pragma once

#include <cstdint>

/// Watches the host's allocator, which the test program stands before: every allocation of the program goes
/// through here on its way to the host. For tests that run on one thread.
struct AllocatorSpy {
    /// Forgets what was seen, and lets allocations through.
    static void Reset();

    static int allocations;   ///< calls of `Platform::AllocMemAligned`
    static int frees;         ///< calls of `Platform::FreeMemAligned`
    static int64_t lastSize;  ///< of the last allocation
    static int lastAlignment; ///< of the last allocation
    static bool fails;        ///< answers every allocation with null
};
