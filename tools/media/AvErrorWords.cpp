#include "media/AvErrorWords.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>

extern "C" {
#include <libavutil/log.h>
}

namespace {

std::mutex lock;
std::string firstWords; ///< guarded by `lock`

/// Called on any thread, with the object that speaks: its first member is its class, or null.
void Listen(void* object, int level, const char* format, va_list values) {
    if (level > AV_LOG_ERROR) return;
    std::array<char, 512> text{};
    std::vsnprintf(text.data(), text.size(), format, values);
    const AVClass* speaker = object != nullptr ? *static_cast<AVClass**>(object) : nullptr;
    const std::string name = speaker != nullptr ? std::string(speaker->item_name(object)) + ": " : "";
    const std::lock_guard guard(lock);
    if (firstWords.empty()) firstWords = name + text.data();
}

} // namespace

AvErrorWords::AvErrorWords() {
    {
        const std::lock_guard guard(lock);
        firstWords.clear();
    }
    av_log_set_callback(Listen);
}

AvErrorWords::~AvErrorWords() { av_log_set_callback(av_log_default_callback); }

std::string AvErrorWords::First(const std::string& other) const {
    const std::lock_guard guard(lock);
    return firstWords.empty() ? other : firstWords;
}
