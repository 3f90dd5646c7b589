#include "rawsdk/ReadJob.h"

#include <utility>

namespace rawsdk {

ReadJob::ReadJob(std::shared_ptr<JobQueue> queue, std::shared_ptr<const ClipFile> file, uint64_t frame,
                 std::span<uint8_t> buffer)
    : Job("read", "ReadJob.Run", std::move(queue)), file_(std::move(file)), frame_(frame), buffer_(buffer) {}

void ReadJob::Run(size_t, uint32_t) {
    product_ = Ref<Frame>::Own(new Frame(file_, file_->Read(frame_, buffer_)));
}

void ReadJob::Tell(IRavenlightRawCallback& callback, HRESULT result) {
    // The callback may submit the job again at once, which makes another product.
    const Ref<Frame> product = std::exchange(product_, {});
    callback.ReadFinished(this, result, static_cast<RawFrame*>(product.Get()));
}

} // namespace rawsdk
