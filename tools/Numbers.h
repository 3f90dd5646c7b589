#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

/// Reads a whole number of decimal digits alone, without a sign.
/// @return nothing for any other text, and for a number that 64 bits don't hold
inline std::optional<int64_t> ParseNumber(std::string_view text) {
    int64_t value = 0;
    const char* end = text.data() + text.size();
    if (text.empty() || text.front() == '-') return std::nullopt;
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end) return std::nullopt;
    return value;
}
