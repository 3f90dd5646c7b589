#include "cameraraw/scripted/ScriptedJob.h"

#include "cameraraw/scripted/ScriptedObject.h"

#include <chrono>
#include <thread>

namespace {

IRavenlightRawCallback* jobCallback = nullptr;

std::vector<std::thread>& Threads() {
    static auto* const threads = new std::vector<std::thread>;
    return *threads;
}

class ScriptedJob final : public ScriptedObject<RawJob> {
public:
    ScriptedJob(const char* kind, TellEnd tellEnd)
        : ScriptedObject("RawJob"), kind_(kind), tellEnd_(std::move(tellEnd)) {}

    HRESULT Submit() override {
        if (const HRESULT result = Enter("Submit " + kind_); result != S_OK) return result;
        const HRESULT result = Script().submitResult;
        if (Script().finish == Finish::InsideSubmit)
            Run();
        else
            Threads().emplace_back([this, isLate = Script().finish == Finish::Late] {
                if (isLate) std::this_thread::sleep_for(std::chrono::milliseconds(10));
                Run();
            });
        return result;
    }
    HRESULT SetUserData(void* data) override {
        const HRESULT result = Enter("SetUserData " + kind_);
        if (result == S_OK) data_ = data;
        return result;
    }
    HRESULT GetUserData(void** data) override {
        *data = data_;
        return S_OK;
    }

private:
    void Run() {
        if (jobCallback == nullptr) return;
        IRavenlightRawCallback& callback = *jobCallback;
        callback.JobStarted(this);
        callback.Progress(this, 0.5F);
        callback.JobWarning(this, S_FALSE);
        // Whoever waits may release the job as soon as he is told.
        const TellEnd tellEnd = tellEnd_;
        tellEnd(callback, this);
        callback.QueueIdle();
    }

    const std::string kind_;
    const TellEnd tellEnd_;
    void* data_ = nullptr;
};

} // namespace

RawJob* NewScriptedJob(const char* kind, TellEnd tellEnd) {
    return new ScriptedJob(kind, std::move(tellEnd));
}

void SetJobCallback(IRavenlightRawCallback* callback) {
    JoinThreads();
    jobCallback = callback;
}

void JoinThreads() {
    for (std::thread& thread : Threads())
        thread.join();
    Threads().clear();
}
