#pragma once

#include "rawsdk/FrameState.h"
#include "rawsdk/Job.h"
#include "rawsdk/picture/Processing.h"

namespace rawsdk {

/// Makes the picture of a decoded frame.
class ProcessJob final : public Job {
public:
    /// @param decoded    what a decode job of the same state has written
    /// @param processed  `ProcessedBytes` bytes, aligned for words
    /// @param table      or null for none
    ProcessJob(std::shared_ptr<JobQueue> queue, const FrameState& state, uint16_t* decoded,
               uint16_t* processed, std::shared_ptr<const ColorTable> table);

    uint32_t Parts(size_t stage) const override;

protected:
    void Run(size_t stage, uint32_t part) override;
    void Tell(IRavenlightRawCallback& callback, HRESULT result) override;

private:
    PlanarPicture colors_;
    PlanarPicture output_;
    Processing processing_;
};

} // namespace rawsdk
