#include "ffmpeg/FrameTimes.h"

#include <cmath>
#include <limits>

namespace CxFFMPEG {

namespace {

int64_t Add(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
}

int64_t Subtract(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
}

int64_t Multiply(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) * static_cast<uint64_t>(b));
}

/// Product of 32 bits.
int32_t MultiplyShort(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

/// Quotient, rounded towards 0; 0 where there is none.
int64_t Divide(int64_t a, int64_t b) {
    if (b == 0) return 0;
    return b == -1 ? Subtract(0, a) : a / b;
}

/// The whole number nearest to one that may be any, or none.
int32_t Saturate(double number) {
    constexpr auto lowest = std::numeric_limits<int32_t>::min();
    constexpr auto highest = std::numeric_limits<int32_t>::max();
    if (std::isnan(number)) return 0;
    if (number <= lowest) return lowest;
    return number >= highest ? highest : static_cast<int32_t>(number);
}

double Quotient(AVRational fraction) {
    return fraction.den == 0 ? 0.0 : static_cast<double>(fraction.num) / fraction.den;
}

} // namespace

double FrameTimes::FramesPerSecond() const { return Quotient(frameRate); }

int64_t FrameTimes::FrameToTime(int32_t frame) const {
    // The denominators, and all that is reckoned of sound, have 32 bits. Kept.
    if (channels >= 1) {
        const int64_t units =
            Divide(MultiplyShort(timeBase.den, frame), MultiplyShort(sampleRate, timeBase.num));
        return Add(static_cast<int32_t>(units), start);
    }
    const int64_t scaled = Multiply(Multiply(frameRate.den, timeBase.den), frame);
    return Add(Divide(scaled, MultiplyShort(frameRate.num, timeBase.num)), start);
}

int32_t FrameTimes::TimeToFrame(int64_t time) const {
    const int64_t units = Subtract(time, start);
    if (channels >= 1)
        return static_cast<int32_t>(
            Divide(Multiply(timeBase.num, Multiply(units, sampleRate)), timeBase.den));
    return FramesIn(units);
}

int32_t FrameTimes::FramesIn(int64_t duration) const {
    const double seconds = static_cast<double>(duration) * Quotient(timeBase);
    return Saturate(std::floor(seconds * FramesPerSecond() + 0.5));
}

bool FrameTimes::IsNext(int32_t frame, int64_t time) const { return frame == int64_t{TimeToFrame(time)} + 1; }

} // namespace CxFFMPEG
