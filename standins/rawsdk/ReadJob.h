#pragma once

#include "rawsdk/Frame.h"
#include "rawsdk/Job.h"

#include <span>

namespace rawsdk {

/// Reads a frame into a buffer. Its product is the `Frame`.
class ReadJob final : public Job {
public:
    ReadJob(std::shared_ptr<JobQueue> queue, std::shared_ptr<const ClipFile> file, uint64_t frame,
            std::span<uint8_t> buffer);

protected:
    void Run(size_t stage, uint32_t part) override;
    void Tell(IRavenlightRawCallback& callback, HRESULT result) override;

private:
    std::shared_ptr<const ClipFile> file_;
    uint64_t frame_;
    std::span<uint8_t> buffer_;
    Ref<Frame> product_; ///< of this run, until it is told
};

} // namespace rawsdk
