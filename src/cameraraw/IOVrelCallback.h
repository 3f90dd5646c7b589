#pragma once

#include "cameraraw/RavenlightRawAPI.h"
#include "cameraraw/RawPointer.h"
#include "host/Platform.h"

#include <memory>

/// What a caller waits with for a job. It is the job's user data, stands on the caller's stack, and is
/// written by a thread of the SDK before the event is set: the event is what orders the two.
struct RawWait {
    struct EventDeleter {
        void operator()(Platform::Event* event) const { Platform::DeleteEvent(event); }
    };

    /// Throws std::bad_alloc.
    RawWait() : event(Platform::NewEvent(false, false)) {}
    /// Blocks until the job has finished, however long that takes.
    void Wait() const { Platform::WaitEvent(event.get(), -1); }

    const std::unique_ptr<Platform::Event, EventDeleter> event;
    HRESULT result = E_FAIL;
    RawPointer<IUnknown> product;
    float progress = 0.0F; ///< 0 to 1, as far as the SDK tells
};

/// Whom the SDK tells of finished jobs, on threads of its own: wakes whoever waits. It has no state, so any
/// number of threads may call it. It belongs to its context, and references to it count for nothing.
class IOVrelCallback final : public IRavenlightRawCallback {
public:
    IOVrelCallback() = default;
    IOVrelCallback(const IOVrelCallback&) = delete;
    IOVrelCallback& operator=(const IOVrelCallback&) = delete;

    /// Refuses every interface, with `E_FAIL`, `IUnknown` too. Kept.
    HRESULT QueryInterface(REFIID identifier, void** out) override;
    /// Both give 1.
    ULONG AddRef() override { return 1; }
    ULONG Release() override { return 1; }

    void ReadFinished(RawJob* job, HRESULT result, IUnknown* product) override;
    void DecodeFinished(RawJob* job, HRESULT result) override;
    void ProcessFinished(RawJob* job, HRESULT result, IUnknown* product) override;
    void Progress(RawJob* job, float progress) override;
    void LastFinished(RawJob* job, HRESULT result) override;
    void JobStarted(RawJob*) override {}
    void QueueIdle() override {}
    void JobWarning(RawJob*, HRESULT) override {}
};
