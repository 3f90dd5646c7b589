#include "rawsdk/Control.h"

#include "rawsdk/Calls.h"
#include "rawsdk/ControlAccess.h"
#include "rawsdk/Object.h"

#include <mutex>

namespace rawsdk {

namespace {

/// What a fault or a record calls it.
std::string TextOf(const Call& call) {
    std::string text(call.operation);
    if (!call.subject.empty()) text.append(" ").append(call.subject);
    return text;
}

class ProcessControl final : public Control {
public:
    HRESULT QueryInterface(REFIID identifier, void** interface) override {
        if (interface == nullptr) return E_POINTER;
        const bool isKnown = identifier == IID_IUnknown || identifier == IID_Control;
        *interface = isKnown ? this : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    // It is there as long as the process.
    ULONG AddRef() override { return 1; }
    ULONG Release() override { return 1; }

    void Reset() override {
        const std::scoped_lock lock(mutex_);
        faults_.clear();
        calls_.clear();
        delay_ = 0;
        isRecording_ = false;
    }
    void Add(const Fault& fault) override {
        const std::scoped_lock lock(mutex_);
        faults_.push_back(fault);
    }
    void DelayJobs(uint32_t milliseconds) override {
        const std::scoped_lock lock(mutex_);
        delay_ = milliseconds;
    }
    void RecordCalls() override {
        const std::scoped_lock lock(mutex_);
        isRecording_ = true;
    }
    std::vector<std::string> Calls() override {
        const std::scoped_lock lock(mutex_);
        return calls_;
    }
    uint64_t LiveObjects() override { return liveObjects; }

    void Record(const Call& call) {
        const std::scoped_lock lock(mutex_);
        if (isRecording_) calls_.push_back(TextOf(call));
    }
    std::optional<HRESULT> Take(const Call& call) {
        const std::scoped_lock lock(mutex_);
        if (faults_.empty()) return std::nullopt;
        const std::string text = TextOf(call);
        for (Fault& fault : faults_) {
            if (fault.times == 0 || (fault.call != text && fault.call != call.operation)) continue;
            if (fault.skip == 0) {
                --fault.times;
                return fault.result;
            }
            --fault.skip;
            return std::nullopt;
        }
        return std::nullopt;
    }
    uint32_t Delay() {
        const std::scoped_lock lock(mutex_);
        return delay_;
    }

private:
    std::mutex mutex_; ///< guards all of this
    std::vector<Fault> faults_;
    std::vector<std::string> calls_;
    uint32_t delay_ = 0;
    bool isRecording_ = false;
};

/// Calls may come until the process has ended, so that it has no destructor that runs.
ProcessControl& TheControl() {
    static ProcessControl* const control = new ProcessControl;
    return *control;
}

} // namespace

Control* GetControl() { return &TheControl(); }

void EnterCall(const Call& call) {
    TheControl().Record(call);
    if (const std::optional<HRESULT> fault = TakeFault(call)) throw Failure{*fault};
}

void RecordEnd(const Call& call) noexcept { TheControl().Record(call); }

std::optional<HRESULT> TakeFault(const Call& call) { return TheControl().Take(call); }

uint32_t JobDelay() { return TheControl().Delay(); }

} // namespace rawsdk
