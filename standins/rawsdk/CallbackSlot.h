#pragma once

#include "cameraraw/RavenlightRawAPI.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace rawsdk {

/// Holds the callback, of which nobody is inside any more once it was replaced. Any thread.
class CallbackSlot {
public:
    CallbackSlot() = default;
    CallbackSlot(const CallbackSlot&) = delete;
    CallbackSlot& operator=(const CallbackSlot&) = delete;
    ~CallbackSlot() { Set(nullptr); }

    /// Sets the callback, or none, and waits for calls into the one before, other than that from which this
    /// is called.
    void Set(IRavenlightRawCallback* callback) {
        if (callback != nullptr) callback->AddRef();
        std::unique_lock lock(mutex_);
        std::swap(callback, callback_);
        left_.wait(lock, [&] { return inside_ <= (callsFromHere == this ? 1 : 0); });
        lock.unlock();
        if (callback != nullptr) callback->Release();
    }

    /// Calls the callback, if there is one.
    template <typename Action>
    void Tell(Action action) {
        if (IRavenlightRawCallback* const callback = Enter()) {
            action(*callback);
            Leave();
        }
    }

private:
    IRavenlightRawCallback* Enter() {
        const std::scoped_lock lock(mutex_);
        if (callback_ != nullptr) ++inside_;
        if (callback_ != nullptr) callsFromHere = this;
        return callback_;
    }
    void Leave() {
        const std::scoped_lock lock(mutex_);
        --inside_;
        callsFromHere = nullptr;
        left_.notify_all();
    }

    /// The slot whose callback this thread is inside.
    static inline thread_local const CallbackSlot* callsFromHere = nullptr;

    std::mutex mutex_; ///< guards what follows
    std::condition_variable left_;
    IRavenlightRawCallback* callback_ = nullptr;
    int inside_ = 0;
};

} // namespace rawsdk
