#pragma once

#include "rawsdk/CallbackSlot.h"
#include "rawsdk/Object.h"

#include <condition_variable>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace rawsdk {

class Job;

/// Runs jobs on threads, one for each processor, in the order in which they come. A job is a row of stages,
/// and a stage is done in parts, by all threads that are free.
class JobQueue : public std::enable_shared_from_this<JobQueue> {
public:
    static std::shared_ptr<JobQueue> Start();

    /// @throw Failure  `E_UNEXPECTED` once the queue has been stopped
    void Submit(Ref<Job> job);
    /// Finishes the jobs that are there and ends the threads. Called on one of them it doesn't wait for that
    /// one.
    void Stop();

    CallbackSlot& Callback() { return callback_; }

private:
    struct Running {
        Ref<Job> job;
        size_t stage = 0;
        uint32_t parts = 0;  ///< of the stage
        uint32_t next = 0;   ///< part to begin
        uint32_t active = 0; ///< parts that threads are working on
        HRESULT result = S_OK;
    };
    using Lock = std::unique_lock<std::mutex>;

    JobQueue() = default;
    void Work();
    std::list<Running>::iterator FindWork();
    void RunPart(std::list<Running>::iterator running, Lock& lock);
    void EndStage(std::list<Running>::iterator running, Lock& lock);
    void Complete(std::list<Running>::iterator running, Lock& lock);

    CallbackSlot callback_;
    std::mutex mutex_; ///< guards what follows
    std::condition_variable wake_;
    std::list<Running> running_;
    bool isStopped_ = false;
    std::vector<std::thread> threads_; ///< of whoever starts and stops
};

} // namespace rawsdk
