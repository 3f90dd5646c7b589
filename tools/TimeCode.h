#pragma once

#include "media/Rational.h"

#include <cstdint>
#include <optional>
#include <string_view>

/// A time code that counts on from that of a movie's first frame (SMPTE ST 12-1).
class TimeCode {
public:
    /// @param text  "hh:mm:ss:ff", or "hh:mm:ss;ff" for drop-frame counting
    /// @param rate  frames per second of the movie; counted in whole frames, so 24000/1001 counts 24
    /// @return nothing for another text, a rate without drop-frame counting, or a rate beyond 39 frames per
    ///         second, which the binary coded form has no place for
    static std::optional<TimeCode> Parse(std::string_view text, const Rational& rate);

    /// hh mm ss ff in binary coded decimal, bit 6 set for drop-frame counting, `frames` frames on; the day
    /// has 24 hours.
    uint32_t PackedAfter(int64_t frames) const;

private:
    int64_t framesPerSecond_ = 0;
    bool dropFrame_ = false;
    int64_t start_ = 0; ///< frames since midnight
};
