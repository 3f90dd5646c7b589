#pragma once

#include <cstdint>
#include <thread>

/// The engine's tie to the operating system's threads, as far as the standard library doesn't cover it.

/// What a new thread runs.
using PrxThreadEntry = void (*)(void* argument);

/// Makes `*thread`, which must not be joinable, a new thread that calls `entry(argument)`; to be joined by
/// the caller. What `argument` points to has to outlive the thread. Returns false, with `*thread` as it was,
/// if the thread can't be made. Never throws.
using PrxThreadStarter = bool (*)(std::thread* thread, PrxThreadEntry entry, void* argument);

/// The starter that asks the operating system. The thread runs under the system's normal scheduling policy,
/// whatever that of the caller is; if the system doesn't allow it, under the caller's. The nice value is
/// always the caller's.
bool PrxStartThread(std::thread* thread, PrxThreadEntry entry, void* argument);

/// Processors that threads of this process can use, by the rule below. Throws `std::bad_alloc` only.
int32_t PrxProcessorCount();

/// The lesser of the system's processors and those that the process may run on; 1 if the system reports none.
/// 0 if the process may run on none.
int32_t PrxUsableProcessors(int32_t systemProcessors, int32_t allowedProcessors);
