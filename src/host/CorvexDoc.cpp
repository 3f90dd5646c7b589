#include "host/CorvexDoc.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

namespace {

struct Console {
    std::mutex lock;
    CorvexDoc::ConsoleHook hook; ///< guarded by `lock`

    /// Never destroyed: other static objects print while the process ends.
    static Console& Get() {
        static Console* const console = new Console;
        return *console;
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

    Console& console = Console::Get();
    std::unique_lock guard(console.lock);
    const ConsoleHook hook = console.hook;
    guard.unlock(); // a hook may print or set another hook
    if (hook) {
        hook(level, text);
    } else {
        std::fputs(text.c_str(), stderr);
    }
}

void CorvexDoc::SetConsoleHook(ConsoleHook hook) {
    Console& console = Console::Get();
    const std::lock_guard guard(console.lock);
    std::swap(console.hook, hook); // the old one is destroyed by the caller's argument, outside the lock
}
