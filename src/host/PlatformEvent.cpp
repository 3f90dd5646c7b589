#include "host/Platform.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace Platform {

struct Event {
    const bool manualReset;
    std::mutex lock;
    std::condition_variable changed;
    bool set; ///< guarded by `lock`
};

Event* NewEvent(bool manualReset, bool initiallySet) { return new Event{manualReset, {}, {}, initiallySet}; }

void SetEvent(Event* event) {
    // Notified under the lock: the waiter may delete the event as soon as it has the lock.
    const std::lock_guard guard(event->lock);
    event->set = true;
    event->changed.notify_all();
}

bool WaitEvent(Event* event, int milliseconds) {
    std::unique_lock guard(event->lock);
    const auto isSet = [event] { return event->set; };
    if (milliseconds < 0) {
        event->changed.wait(guard, isSet);
    } else if (!event->changed.wait_for(guard, std::chrono::milliseconds(milliseconds), isSet)) {
        return false;
    }
    event->set = event->manualReset;
    return true;
}

void DeleteEvent(Event* event) { delete event; }

} // namespace Platform
