#include "TimeCode.h"

#include "Numbers.h"

namespace {

constexpr int64_t kMaxFramesPerSecond = 39;
/// Drop-frame counting leaves out frames 0 and 1 of each minute but every tenth; at 30 a second only.
constexpr int64_t kDropRate = 30;
constexpr int64_t kDropped = 2;
constexpr uint32_t kDropFrameFlag = 0x40;

uint32_t Decimal(int64_t value) { return static_cast<uint32_t>(value / 10 << 4 | value % 10); }

} // namespace

std::optional<TimeCode> TimeCode::Parse(std::string_view text, const Rational& rate) {
    if (text.size() != 11 || rate.num <= 0 || rate.den <= 0) return std::nullopt;
    const auto hours = ParseNumber(text.substr(0, 2));
    const auto minutes = ParseNumber(text.substr(3, 2));
    const auto seconds = ParseNumber(text.substr(6, 2));
    const auto frames = ParseNumber(text.substr(9, 2));
    if (!hours || !minutes || !seconds || !frames) return std::nullopt;

    TimeCode code;
    code.framesPerSecond_ = (rate.num + rate.den / 2) / rate.den;
    code.dropFrame_ = text[8] == ';';
    const bool countable = code.framesPerSecond_ >= 1 && code.framesPerSecond_ <= kMaxFramesPerSecond;
    if (!countable || *frames >= code.framesPerSecond_) return std::nullopt;
    if (code.dropFrame_ && code.framesPerSecond_ != kDropRate) return std::nullopt;

    const int64_t totalMinutes = *hours * 60 + *minutes;
    code.start_ = (totalMinutes * 60 + *seconds) * code.framesPerSecond_ + *frames;
    if (code.dropFrame_) code.start_ -= kDropped * (totalMinutes - totalMinutes / 10);
    return code;
}

uint32_t TimeCode::PackedAfter(int64_t frames) const {
    const int64_t perTenMinutes = framesPerSecond_ * 600 - (dropFrame_ ? 9 * kDropped : 0);
    int64_t count = (start_ + frames) % (perTenMinutes * 6 * 24);
    if (dropFrame_) {
        const int64_t perMinute = framesPerSecond_ * 60 - kDropped;
        const int64_t inTen = count % perTenMinutes;
        const int64_t minutesPassed = inTen < kDropped ? 0 : (inTen - kDropped) / perMinute;
        count += kDropped * (9 * (count / perTenMinutes) + minutesPassed);
    }
    const int64_t seconds = count / framesPerSecond_;
    const uint32_t flag = dropFrame_ ? kDropFrameFlag : 0;
    return Decimal(seconds / 3600 % 24) << 24 | Decimal(seconds / 60 % 60) << 16 |
           Decimal(seconds % 60) << 8 | Decimal(count % framesPerSecond_) | flag;
}
