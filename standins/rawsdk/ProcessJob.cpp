#include "rawsdk/ProcessJob.h"

#include "rawsdk/DecodeJob.h"
#include "rawsdk/clip/StripCodec.h"

#include <utility>

namespace rawsdk {

ProcessJob::ProcessJob(std::shared_ptr<JobQueue> queue, const FrameState& state, uint16_t* decoded,
                       uint16_t* processed, std::shared_ptr<const ColorTable> table)
    : Job("process", "ProcessJob.Run", std::move(queue)),
      colors_(DecodeJob::ColorsOf(state, decoded)), output_{processed, state.width, state.height},
      processing_(state.tone, std::move(table)) {}

uint32_t ProcessJob::Parts(size_t) const { return StripsOf(output_.height); }

void ProcessJob::Run(size_t, uint32_t part) {
    processing_.Process(colors_, output_, part * stripRows, RowsOfStrip(output_.height, part));
}

void ProcessJob::Tell(IRavenlightRawCallback& callback, HRESULT result) {
    callback.ProcessFinished(this, result, nullptr);
}

} // namespace rawsdk
