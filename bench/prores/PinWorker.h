#pragma once

#include <sched.h>

#include <atomic>
#include <cstdint>
#include <thread>

/// A thread start hook that puts each new worker on a processor of its own: a kernel may else keep two of
/// them on one.
inline void PinWorker() {
    static std::atomic<uint32_t> started = 0;
    cpu_set_t processor;
    CPU_ZERO(&processor);
    CPU_SET(started++ % std::thread::hardware_concurrency(), &processor);
    sched_setaffinity(0, sizeof processor, &processor);
}
