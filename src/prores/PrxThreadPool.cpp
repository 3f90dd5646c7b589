#include "prores/PrxThreadPool.h"

#include <algorithm>
#include <new>

PrxThreadPool* PrxThreadPool::create(int32_t count, const PrxThreadStartHook* hookCell,
                                     const PrxPoolClient& client, PrxThreadStarter startThread) noexcept {
    if (count < 1 || count > prxMaxWorkers) return nullptr;
    auto* pool = new (std::nothrow) PrxThreadPool(count, hookCell, client);
    if (pool == nullptr || pool->startWorkers(startThread)) return pool;
    destroy(pool);
    return nullptr;
}

/// Returns whether all workers wait for work. The lock is held from before the first thread is made until the
/// wait, so no worker calls the hook while others are still being made.
bool PrxThreadPool::startWorkers(PrxThreadStarter startThread) {
    threads_.reset(new (std::nothrow) std::thread[static_cast<size_t>(targetCount_)]);
    if (threads_ == nullptr) return false;
    const auto entry = [](void* pool) { static_cast<PrxThreadPool*>(pool)->runWorker(); };
    std::unique_lock guard(lock_);
    busy_ = true;
    for (; threadCount_ < targetCount_; ++threadCount_) {
        if (!startThread(&threads_[threadCount_], entry, this)) return false;
    }
    done_.wait(guard, [this] { return !busy_; });
    return !startFailed_;
}

void PrxThreadPool::run(void* firstJob, size_t jobCount) noexcept {
    std::unique_lock guard(lock_);
    nextJob_ = static_cast<std::byte*>(firstJob);
    endJob_ = nextJob_ + jobCount * client_.jobSize;
    busy_ = true;
    work_.notify_all();
    done_.wait(guard, [this] { return !busy_; });
}

void PrxThreadPool::destroy(PrxThreadPool* pool) noexcept {
    if (pool == nullptr) return;
    {
        const std::lock_guard guard(pool->lock_);
        pool->exiting_ = true;
    }
    pool->work_.notify_all();
    for (int32_t i = 0; i < pool->threadCount_; ++i)
        pool->threads_[i].join();
    delete pool;
}

/// The life of a worker. One without a context joins in all the same, so that `startWorkers` doesn't wait in
/// vain; it never sees a job, since the pool is destroyed at once.
void PrxThreadPool::runWorker() {
    void* context = client_.createContext();
    {
        std::unique_lock guard(lock_);
        if (hookCell_ != nullptr && *hookCell_ != nullptr) (*hookCell_)();
        if (context == nullptr) startFailed_ = true;
        while (!exiting_) {
            takeJobs(guard, context);
            waitForWork(guard);
        }
    }
    client_.destroyContext(context);
}

void PrxThreadPool::takeJobs(std::unique_lock<std::mutex>& guard, void* context) {
    while (nextJob_ != endJob_) {
        void* job = nextJob_;
        nextJob_ += client_.jobSize;
        guard.unlock();
        client_.runJob(job, context);
        guard.lock();
    }
}

/// The last worker to come here ends the batch: none has a job then. Returns also without a reason, which
/// does no harm: the worker looks for jobs and comes back.
void PrxThreadPool::waitForWork(std::unique_lock<std::mutex>& guard) {
    ++idleCount_;
    if (idleCount_ == targetCount_ && busy_) {
        busy_ = false;
        done_.notify_one();
    }
    work_.wait(guard);
    --idleCount_;
}

int32_t PrxWorkersFor(int32_t workerCount) {
    return std::min(workerCount > 0 ? workerCount : PrxProcessorCount(), prxMaxWorkers);
}
