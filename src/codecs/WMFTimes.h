#pragma once

#include <algorithm>
#include <cstdint>

// Times of the codec interface are milliseconds, those of Media Foundation ticks of 100 ns. What has no room
// in 64 bits wraps around.

namespace CxWMF {

inline constexpr int64_t ticksPerMillisecond = 10000;

inline int64_t WrappingProduct(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) * static_cast<uint64_t>(b));
}

inline int64_t TicksOf(int64_t milliseconds) { return WrappingProduct(milliseconds, ticksPerMillisecond); }

/// Cuts fractions off.
inline int64_t MillisecondsOf(int64_t ticks) { return ticks / ticksPerMillisecond; }

/// A number without its fraction, as far as 64 bits go.
inline int64_t Truncated(double number) {
    constexpr double most = 9.2e18;
    return static_cast<int64_t>(std::clamp(number, -most, most));
}

} // namespace CxWMF
