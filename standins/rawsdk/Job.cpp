#include "rawsdk/Job.h"

#include <utility>

namespace rawsdk {

Job::Job(std::string_view kind, std::string_view run, std::shared_ptr<JobQueue> queue)
    : Object("RawJob.QueryInterface"), kind_(kind), run_(run), queue_(std::move(queue)) {}

HRESULT Job::Submit() {
    return Perform({"RawJob.Submit", kind_}, [&] {
        if (isSubmitted_.exchange(true)) throw Failure{E_UNEXPECTED};
        try {
            fault_ = TakeFault({run_});
            queue_->Submit(Ref<Job>::Share(this));
        } catch (...) {
            isSubmitted_ = false;
            throw;
        }
    });
}

HRESULT Job::SetUserData(void* data) {
    return Perform({"RawJob.SetUserData", kind_}, [&] { userData_ = data; });
}

HRESULT Job::GetUserData(void** data) {
    if (data == nullptr) return E_POINTER;
    *data = userData_;
    return S_OK;
}

HRESULT Job::RunPart(size_t stage, uint32_t part) {
    if (fault_) return *fault_;
    return Guarded([&] { Run(stage, part); });
}

void Job::Complete(HRESULT result) {
    isSubmitted_ = false;
    queue_->Callback().Tell([&](IRavenlightRawCallback& callback) { Tell(callback, result); });
}

} // namespace rawsdk
