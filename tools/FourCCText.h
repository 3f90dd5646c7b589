#pragma once

#include <cstdint>
#include <string>

/// A four-character code as people write it; codes with other than printable characters, such as 24 and 32,
/// as a number.
inline std::string FourCCText(uint32_t fourCC) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto c = static_cast<char>(fourCC >> shift & 0xFF);
        if (c < ' ' || c > '~') return std::to_string(fourCC);
        text += c;
    }
    return text;
}
