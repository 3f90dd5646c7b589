#pragma once

#include "prores/Prx.h"
#include "prores/PrxThreads.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <thread>

/// Most workers that a decoder or an encoder gets.
inline constexpr int32_t prxMaxWorkers = 64;

/// What a pool's owner makes its workers do. None may throw: that ends the process. Want of memory for a job
/// is reported in the job record.
struct PrxPoolClient {
    void* (*createContext)(); ///< a worker's private memory, made in that worker; null on failure
    void (*destroyContext)(void* context); ///< in the same worker; accepts null
    void (*runJob)(void* job, void* context);
    size_t jobSize; ///< bytes from one job record to the next
};

/// The client whose jobs `Run` runs, each worker with a `Context` of its own.
template <class Job, class Context, void (*Run)(Job*, Context*)>
inline constexpr PrxPoolClient prxPoolClientFor{
    []() -> void* { return new (std::nothrow) Context; },
    [](void* context) { delete static_cast<Context*>(context); },
    [](void* job, void* context) { Run(static_cast<Job*>(job), static_cast<Context*>(context)); },
    sizeof(Job),
};

/// A fixed set of worker threads that run batches of jobs. Alone on its cache lines: its fields are written
/// by all workers. No function throws: a lock, a wait or a join that the operating system refuses ends the
/// process.
class alignas(64) PrxThreadPool {
public:
    /// A running pool of `count` workers, 1 to `prxMaxWorkers`, that have all reached their idle wait. Null
    /// on any failure: another count, no memory, a thread or a worker's context that can't be made.
    /// `*hookCell`, if there is one, is called once in each worker, before it takes any work, with the pool's
    /// lock held. `hookCell` may be null; it and `client` are borrowed for the pool's life. Nothing is left
    /// behind on failure. Each worker is made by `startThread`.
    static PrxThreadPool* create(int32_t count, const PrxThreadStartHook* hookCell,
                                 const PrxPoolClient& client,
                                 PrxThreadStarter startThread = PrxStartThread) noexcept;

    /// Runs `jobCount` (0 is fine) jobs, which stand one behind the other from `firstJob` on, in array order,
    /// each in whichever worker is free first, and returns when all workers are idle again. What the caller
    /// wrote before is seen by the jobs, and what they wrote is seen by the caller afterwards. Called by one
    /// thread at a time.
    void run(void* firstJob, size_t jobCount) noexcept;

    /// Stops and joins the workers and frees the pool. Not while `run` is under way. Null is fine.
    static void destroy(PrxThreadPool* pool) noexcept;

    PrxThreadPool(const PrxThreadPool&) = delete;
    PrxThreadPool& operator=(const PrxThreadPool&) = delete;

private:
    PrxThreadPool(int32_t count, const PrxThreadStartHook* hookCell, const PrxPoolClient& client)
        : client_(client), hookCell_(hookCell), targetCount_(count) {}
    ~PrxThreadPool() = default;

    bool startWorkers(PrxThreadStarter startThread);
    void runWorker();
    void takeJobs(std::unique_lock<std::mutex>& guard, void* context);
    void waitForWork(std::unique_lock<std::mutex>& guard);

    const PrxPoolClient& client_;
    const PrxThreadStartHook* const hookCell_;
    const int32_t targetCount_; ///< workers that must be idle for a batch to count as finished
    // These two are the owner's alone.
    int32_t threadCount_ = 0; ///< workers that exist: `targetCount_` once the pool runs
    std::unique_ptr<std::thread[]> threads_;

    std::mutex lock_;              ///< over all that follows
    std::condition_variable work_; ///< a batch is ready, or `exiting_` was set
    std::condition_variable done_; ///< `busy_` was cleared
    int32_t idleCount_ = 0;        ///< workers that wait on `work_`
    std::byte* nextJob_ = nullptr; ///< first job of the batch that nobody has taken
    std::byte* endJob_ = nullptr;
    bool busy_ = false; ///< a batch, or the start-up, isn't finished
    bool exiting_ = false;
    bool startFailed_ = false; ///< a worker got no context
};

/// A pool that stops and frees itself.
struct PrxThreadPoolDeleter {
    void operator()(PrxThreadPool* pool) const { PrxThreadPool::destroy(pool); }
};
using PrxThreadPoolPtr = std::unique_ptr<PrxThreadPool, PrxThreadPoolDeleter>;

/// Workers for a caller who asks for `workerCount`: no more than `prxMaxWorkers`, and one for each usable
/// processor if that is 0 or less. Throws `std::bad_alloc` only.
int32_t PrxWorkersFor(int32_t workerCount);
