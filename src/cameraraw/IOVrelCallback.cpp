#include "cameraraw/IOVrelCallback.h"

namespace {

/// The record of whoever waits for a job; null if nobody does.
RawWait* WaitOf(RawJob* job) {
    void* data = nullptr;
    if (job != nullptr) job->GetUserData(&data);
    return static_cast<RawWait*>(data);
}

/// Wakes whoever waits for the job. The record may be gone as soon as its event is set.
void Complete(RawJob* job, HRESULT result, IUnknown* product) {
    RawWait* const wait = WaitOf(job);
    if (wait == nullptr) return;
    wait->result = result;
    wait->product = RawPointer<IUnknown>::Share(product);
    Platform::SetEvent(wait->event.get());
}

} // namespace

HRESULT IOVrelCallback::QueryInterface(REFIID /*identifier*/, void** out) {
    if (out != nullptr) *out = nullptr;
    return E_FAIL;
}

void IOVrelCallback::ReadFinished(RawJob* job, HRESULT result, IUnknown* product) {
    Complete(job, result, product);
}

void IOVrelCallback::DecodeFinished(RawJob* job, HRESULT result) { Complete(job, result, nullptr); }

void IOVrelCallback::ProcessFinished(RawJob* job, HRESULT result, IUnknown* product) {
    Complete(job, result, product);
}

void IOVrelCallback::Progress(RawJob* job, float progress) {
    if (RawWait* const wait = WaitOf(job)) wait->progress = progress;
}

void IOVrelCallback::LastFinished(RawJob* job, HRESULT result) { Complete(job, result, nullptr); }
