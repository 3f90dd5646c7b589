#include "ffmpeg/TimeCode.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace CxFFMPEG {

namespace {

uint8_t Number(std::string_view digits) {
    uint32_t number = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9') break;
        number = number * 10 + static_cast<uint32_t>(digit - '0');
    }
    return static_cast<uint8_t>(number);
}

/// Numbers that drop-frame counting leaves out in a minute that is not the tenth.
int64_t DroppedAMinute(uint32_t framesPerSecond) {
    if (framesPerSecond < 31) return 2;
    return framesPerSecond <= 60 ? 4 : 8;
}

/// Adds the numbers that were left out up to a frame. Ten minutes have 17982 frames at 29.97 and the rates
/// above count as if they had the same. Kept.
uint32_t WithDropped(uint32_t count, uint32_t framesPerSecond) {
    constexpr uint32_t tenMinutes = 17982;
    constexpr uint32_t minute = 1798;
    const uint32_t step = framesPerSecond <= 30 ? 2 : 4;
    const uint32_t tens = count / tenMinutes;
    const uint32_t rest = std::max(count - tens * tenMinutes, step) - step;
    return count + (rest / minute + tens * 9) * step;
}

} // namespace

TimeCode TimeCode::FromText(const std::string& text) {
    const std::string_view all = text;
    TimeCode code;
    if (all.size() >= 2) code.hours = Number(all.substr(0, 2));
    if (all.size() >= 5) code.minutes = Number(all.substr(3, 2));
    if (all.size() >= 8) code.seconds = Number(all.substr(6, 2));
    if (all.size() == 11 || all.size() == 12) code.frames = Number(all.substr(9));
    return code;
}

TimeCode TimeCode::FromFrameCount(uint32_t count, AVRational rate, uint8_t framesPerSecond, bool dropFrame) {
    const uint32_t divisor = std::max<uint32_t>(framesPerSecond, 1);
    if (dropFrame) count = WithDropped(count, divisor);
    const uint32_t seconds = count / divisor;
    TimeCode code;
    code.hours = static_cast<uint8_t>(seconds / 3600);
    code.minutes = static_cast<uint8_t>(seconds / 60 % 60);
    code.seconds = static_cast<uint8_t>(seconds % 60);
    code.frames = static_cast<uint8_t>(count % divisor);
    code.rate = rate;
    code.framesPerSecond = framesPerSecond;
    code.dropFrame = dropFrame;
    return code;
}

int64_t TimeCode::FrameCount() const {
    const int64_t perSecond = std::max<int64_t>(framesPerSecond, 1);
    const int64_t count = ((hours * int64_t{60} + minutes) * 60 + seconds) * perSecond + frames;
    if (!dropFrame) return count;
    const int64_t wholeMinutes = count / (perSecond * 60);
    return count + (wholeMinutes / 10 - wholeMinutes) * DroppedAMinute(framesPerSecond);
}

std::string TimeCode::Text() const {
    char text[16];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d:%02d", hours, minutes, seconds, frames);
    return text;
}

} // namespace CxFFMPEG
