#include "host/CxString.h"

namespace {

constexpr bool IsLeadSurrogate(char16_t unit) { return unit >= 0xd800 && unit < 0xdc00; }
constexpr bool IsTrailSurrogate(char16_t unit) { return unit >= 0xdc00 && unit < 0xe000; }

/// Takes one code point off UTF-16 text. A surrogate without its partner gives U+FFFD.
template <typename Unit>
char32_t TakeCodePoint(const Unit*& text) {
    const char16_t unit = *text++;
    if (IsLeadSurrogate(unit) && IsTrailSurrogate(*text)) {
        const char16_t trail = *text++;
        return 0x10000 + ((unit - 0xd800u) << 10) + (trail - 0xdc00u);
    }
    return IsLeadSurrogate(unit) || IsTrailSurrogate(unit) ? 0xfffd : unit;
}

/// Appends a code point as UTF-8 (RFC 3629, 3).
void AppendUtf8(std::string& text, char32_t point) {
    const auto continuation = [&](int shift) { text += static_cast<char>(0x80 | ((point >> shift) & 0x3f)); };
    if (point < 0x80) {
        text += static_cast<char>(point);
    } else if (point < 0x800) {
        text += static_cast<char>(0xc0 | (point >> 6));
        continuation(0);
    } else if (point < 0x10000) {
        text += static_cast<char>(0xe0 | (point >> 12));
        continuation(6);
        continuation(0);
    } else {
        text += static_cast<char>(0xf0 | (point >> 18));
        continuation(12);
        continuation(6);
        continuation(0);
    }
}

/// Converts null-terminated UTF-16 text, which may be null, to UTF-8.
template <typename Unit>
std::string ToUtf8(const Unit* text) {
    std::string converted;
    while (text != nullptr && *text != 0)
        AppendUtf8(converted, TakeCodePoint(text));
    return converted;
}

} // namespace

template <>
CxStringT<char>::CxStringT(const char16_t* text) : text_(ToUtf8(text)) {}

template <>
CxStringT<char>::CxStringT(const uint16_t* text) : text_(ToUtf8(text)) {}

template <>
CxStringT<char> CxStringT<char>::Right(int count) const {
    CxStringT result;
    if (count <= 0) return result;
    const size_t length = static_cast<size_t>(count);
    result.text_ = length < text_.size() ? text_.substr(text_.size() - length) : text_;
    return result;
}
