#include "cameraraw/automation/Utf8.h"

#include <climits>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace {

constexpr char32_t replacement = 0xFFFD;

constexpr bool IsSurrogate(char32_t point) { return point >= 0xD800 && point <= 0xDFFF; }

/// A code point and the units that it was read from; no point where these are not valid.
struct Read {
    std::optional<char32_t> point;
    size_t units;
};

/// What the first byte of a sequence says: the bytes that follow it, its own bits, and the limits of the next
/// byte, by which overlong forms, surrogates and points that are too high are told at once.
struct Lead {
    int following;
    char32_t bits;
    uint8_t lowest = 0x80;
    uint8_t highest = 0xBF;
};

std::optional<Lead> ReadLead(uint8_t byte) {
    if (byte < 0x80) return Lead{0, byte};
    if (byte >= 0xC2 && byte <= 0xDF) return Lead{1, byte & 0x1Fu};
    if (byte == 0xE0) return Lead{2, 0, 0xA0};
    if (byte == 0xED) return Lead{2, 0xD, 0x80, 0x9F};
    if (byte >= 0xE1 && byte <= 0xEF) return Lead{2, byte & 0xFu};
    if (byte == 0xF0) return Lead{3, 0, 0x90};
    if (byte == 0xF4) return Lead{3, 4, 0x80, 0x8F};
    if (byte >= 0xF1 && byte <= 0xF3) return Lead{3, byte & 7u};
    return std::nullopt;
}

/// Reads the point at the start of a text that is not empty. A sequence that breaks off stands for one point.
Read ReadPoint(std::string_view text) {
    std::optional<Lead> lead = ReadLead(static_cast<uint8_t>(text[0]));
    if (!lead) return {std::nullopt, 1};
    for (size_t i = 1; i <= static_cast<size_t>(lead->following); ++i) {
        if (i == text.size()) return {std::nullopt, i};
        const auto byte = static_cast<uint8_t>(text[i]);
        if (byte < lead->lowest || byte > lead->highest) return {std::nullopt, i};
        lead = Lead{lead->following, lead->bits << 6 | (byte & 0x3Fu)};
    }
    return {lead->bits, static_cast<size_t>(lead->following) + 1};
}

Read ReadPoint(std::u16string_view text) {
    const char32_t first = text[0];
    if (!IsSurrogate(first)) return {first, 1};
    const bool isPair = first < 0xDC00 && text.size() > 1 && (text[1] & 0xFC00) == 0xDC00;
    if (!isPair) return {std::nullopt, 1};
    return {0x10000 + ((first & 0x3FF) << 10) + (text[1] & 0x3FFu), 2};
}

void Append(char32_t point, std::u16string& text) {
    if (point >= 0x10000) text += static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10));
    text += static_cast<char16_t>(point >= 0x10000 ? 0xDC00 + (point & 0x3FF) : point);
}

void Append(char32_t point, std::string& text) {
    const auto continuation = [&](int shift) { return static_cast<char>(0x80 | (point >> shift & 0x3F)); };
    if (point < 0x80) {
        text += static_cast<char>(point);
    } else if (point < 0x800) {
        text += {static_cast<char>(0xC0 | point >> 6), continuation(0)};
    } else if (point < 0x10000) {
        text += {static_cast<char>(0xE0 | point >> 12), continuation(6), continuation(0)};
    } else {
        text += {static_cast<char>(0xF0 | point >> 18), continuation(12), continuation(6), continuation(0)};
    }
}

/// The text in the other form, or nothing if it is refused.
template <typename To, typename From>
std::optional<std::basic_string<To>> Convert(std::basic_string_view<From> text, bool strict) {
    std::basic_string<To> converted;
    while (!text.empty()) {
        const Read read = ReadPoint(text);
        if (!read.point && strict) return std::nullopt;
        Append(read.point.value_or(replacement), converted);
        text.remove_prefix(read.units);
    }
    return converted;
}

/// A text that is told by its length, or by -1 and a zero at its end, which belongs to it then.
template <typename Unit>
std::basic_string_view<Unit> TextOf(const Unit* text, int length) {
    const size_t units = length < 0 ? std::char_traits<Unit>::length(text) + 1 : static_cast<size_t>(length);
    return {text, units};
}

/// Both conversions: they differ in the units alone.
template <typename To, typename From>
int ConvertInto(const From* text, int length, bool strict, To* output, int capacity) {
    if (text == nullptr || length == 0 || length < -1 || capacity < 0) return 0;
    if (output == nullptr && capacity != 0) return 0;
    const auto converted = Convert<To>(TextOf(text, length), strict);
    if (!converted || converted->size() > INT_MAX) return 0;
    const int needed = static_cast<int>(converted->size());
    if (capacity == 0) return needed;
    if (needed > capacity) return 0;
    converted->copy(output, converted->size());
    return needed;
}

} // namespace

int MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int length, OLECHAR* wide,
                        int wideLength) {
    if (codePage != CP_UTF8 || (flags & ~MB_ERR_INVALID_CHARS) != 0) return 0;
    return ConvertInto(text, length, flags != 0, wide, wideLength);
}

int WideCharToMultiByte(UINT codePage, DWORD flags, const OLECHAR* wide, int wideLength, char* text,
                        int length, const char* defaultCharacter, BOOL* usedDefault) {
    if (codePage != CP_UTF8 || (flags & ~WC_ERR_INVALID_CHARS) != 0) return 0;
    if (defaultCharacter != nullptr || usedDefault != nullptr) return 0;
    return ConvertInto(wide, wideLength, flags != 0, text, length);
}
