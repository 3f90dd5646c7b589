#include "host/CorvexDoc.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

namespace {

/// A hook that any thread may replace while others call it.
template <typename Hook>
class HookSlot {
public:
    /// A copy to call, so that a hook may send what it receives and set another hook.
    Hook Get() {
        const std::lock_guard guard(lock_);
        return hook_;
    }
    void Set(Hook hook) {
        const std::lock_guard guard(lock_);
        std::swap(hook_, hook); // the old one is destroyed with the caller's argument, outside the lock
    }

private:
    std::mutex lock_;
    Hook hook_; ///< guarded by `lock_`
};

/// What the document holds.
struct State {
    HookSlot<CorvexDoc::ConsoleHook> console;
    HookSlot<CorvexDoc::NotifyHook> notifications;
    std::atomic<int32_t> frameRateDivisor = 0;

    /// Never destroyed: other static objects print while the process ends.
    static State& Get() {
        static State* const state = new State;
        return *state;
    }
};

std::string FormatText(const char* format, va_list arguments) {
    va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length < 0) return {};
    std::string text(static_cast<size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

} // namespace

CorvexDoc* CorvexDoc::Get() {
    static CorvexDoc document;
    return &document;
}

void CorvexDoc::PrintF(EventConsoleSubID level, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const std::string text = FormatText(format, arguments);
    va_end(arguments);

    const ConsoleHook hook = State::Get().console.Get();
    if (hook) {
        hook(level, text);
    } else {
        std::fputs(text.c_str(), stderr);
    }
}

void CorvexDoc::SetConsoleHook(ConsoleHook hook) { State::Get().console.Set(std::move(hook)); }

void CorvexDoc::Notify(int32_t code, int32_t argument, Operator* tool) {
    const NotifyHook hook = State::Get().notifications.Get();
    if (hook) hook(code, argument, tool);
}

void CorvexDoc::SetNotifyHook(NotifyHook hook) { State::Get().notifications.Set(std::move(hook)); }

int32_t CorvexDoc::GetFrameRateDivisor() const { return State::Get().frameRateDivisor; }

void CorvexDoc::SetFrameRateDivisor(int32_t divisor) { State::Get().frameRateDivisor = divisor; }
