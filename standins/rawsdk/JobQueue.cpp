#include "rawsdk/JobQueue.h"

#include "rawsdk/Job.h"

#include <algorithm>
#include <chrono>

namespace rawsdk {

std::shared_ptr<JobQueue> JobQueue::Start() {
    const std::shared_ptr<JobQueue> queue(new JobQueue);
    const unsigned threads = std::max(1u, std::thread::hardware_concurrency());
    try {
        for (unsigned i = 0; i < threads; ++i)
            queue->threads_.emplace_back([queue] { queue->Work(); });
    } catch (...) {
        queue->Stop();
        throw;
    }
    return queue;
}

void JobQueue::Submit(Ref<Job> job) {
    const Lock lock(mutex_);
    if (isStopped_) throw Failure{E_UNEXPECTED};
    Running& running = running_.emplace_back();
    running.job = std::move(job);
    running.parts = running.job->Parts(0);
    wake_.notify_all();
}

void JobQueue::Stop() {
    {
        const Lock lock(mutex_);
        isStopped_ = true;
        wake_.notify_all();
    }
    for (std::thread& thread : threads_) {
        if (thread.get_id() == std::this_thread::get_id())
            thread.detach();
        else
            thread.join();
    }
    threads_.clear();
}

void JobQueue::Work() {
    Lock lock(mutex_);
    for (;;) {
        const auto running = FindWork();
        if (running != running_.end())
            RunPart(running, lock);
        else if (isStopped_ && running_.empty())
            return;
        else
            wake_.wait(lock);
    }
}

std::list<JobQueue::Running>::iterator JobQueue::FindWork() {
    return std::ranges::find_if(running_,
                                [](const Running& running) { return running.next < running.parts; });
}

void JobQueue::RunPart(std::list<Running>::iterator running, Lock& lock) {
    Job& job = *running->job;
    const size_t stage = running->stage;
    const uint32_t part = running->next++;
    ++running->active;
    lock.unlock();
    if (stage == 0 && part == 0)
        callback_.Tell([&](IRavenlightRawCallback& callback) { callback.JobStarted(&job); });
    const HRESULT result = job.RunPart(stage, part);
    lock.lock();
    --running->active;
    if (result != S_OK) {
        running->result = result;
        running->next = running->parts;
    }
    if (running->next == running->parts && running->active == 0) EndStage(running, lock);
}

/// Goes on after the last part of a stage, which nobody else can take up now.
void JobQueue::EndStage(std::list<Running>::iterator running, Lock& lock) {
    Job& job = *running->job;
    const size_t done = running->stage + 1;
    if (running->result != S_OK || done == job.Stages()) {
        Complete(running, lock);
        return;
    }
    lock.unlock();
    const float progress = static_cast<float>(done) / static_cast<float>(job.Stages());
    callback_.Tell([&](IRavenlightRawCallback& callback) { callback.Progress(&job, progress); });
    lock.lock();
    running->stage = done;
    running->parts = job.Parts(done);
    running->next = 0;
    wake_.notify_all();
}

void JobQueue::Complete(std::list<Running>::iterator running, Lock& lock) {
    Running finished = std::move(*running);
    running_.erase(running);
    const bool isIdle = running_.empty();
    lock.unlock();
    if (const uint32_t delay = JobDelay(); delay != 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(delay));
    finished.job->Complete(finished.result);
    finished.job = {};
    if (isIdle) callback_.Tell([](IRavenlightRawCallback& callback) { callback.QueueIdle(); });
    lock.lock();
    wake_.notify_all();
}

} // namespace rawsdk
