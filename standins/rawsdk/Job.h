#pragma once

#include "rawsdk/JobQueue.h"
#include "rawsdk/Object.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string_view>

namespace rawsdk {

/// Work for the threads of a queue.
class Job : public Object<RawJob> {
public:
    HRESULT Submit() final;
    HRESULT SetUserData(void* data) final;
    HRESULT GetUserData(void** data) final;

    // For the queue.
    virtual size_t Stages() const { return 1; }
    /// Parts of a stage, at least 1.
    virtual uint32_t Parts([[maybe_unused]] size_t stage) const { return 1; }
    HRESULT RunPart(size_t stage, uint32_t part);
    /// Tells the callback that the job has finished. From here on it can be submitted again.
    void Complete(HRESULT result);

protected:
    /// @param kind  "read", "decode" or "process"; a literal
    /// @param run   the work, such as "ReadJob.Run", by which it can be made to go wrong; a literal
    Job(std::string_view kind, std::string_view run, std::shared_ptr<JobQueue> queue);

    /// @throw Failure
    virtual void Run(size_t stage, uint32_t part) = 0;
    virtual void Tell(IRavenlightRawCallback& callback, HRESULT result) = 0;

private:
    std::string_view kind_;
    std::string_view run_;
    std::shared_ptr<JobQueue> queue_;
    std::atomic<void*> userData_ = nullptr;
    std::atomic<bool> isSubmitted_ = false;
    std::optional<HRESULT> fault_; ///< what this run gives instead of doing its work
};

} // namespace rawsdk
