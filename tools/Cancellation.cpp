#include "Cancellation.h"

#include "media/ToolError.h"

#include <atomic>
#include <csignal>

namespace {

std::atomic<bool> cancelled = false;
static_assert(std::atomic<bool>::is_always_lock_free, "set in a signal handler");

void Cancel(int) { cancelled = true; }

} // namespace

void CatchSignals() {
    std::signal(SIGINT, Cancel);
    std::signal(SIGTERM, Cancel);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

void ThrowIfCancelled(const std::string& file) {
    if (cancelled) throw ToolError(ExitStatus::Cancelled, file, "cancelled");
}
