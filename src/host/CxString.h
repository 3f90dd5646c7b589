#pragma once

#include "host/Export.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// The host's string class, used at the boundaries of path handling. The host has it for `char`, where text
/// is UTF-8 and lengths count bytes.
template <typename Char>
class CxStringT {
public:
    CxStringT() = default;
    CxStringT(std::nullptr_t) {}
    /// Copies null-terminated text; null counts as empty.
    CxStringT(const Char* text) {
        if (text != nullptr) text_ = text;
    }
    /// Converts null-terminated UTF-16 text to UTF-8; unpaired surrogates become U+FFFD. Null counts as
    /// empty.
    CORVEX_HOST_API explicit CxStringT(const char16_t* text);
    /// The same for UTF-16 text whose units are plain numbers.
    CORVEX_HOST_API explicit CxStringT(const uint16_t* text);

    CxStringT& operator+=(const CxStringT& other) {
        text_ += other.text_;
        return *this;
    }
    /// The last `count` characters, or all of them if there are fewer; empty for 0 or less.
    CORVEX_HOST_API CxStringT Right(int count) const;
    bool IsEmpty() const { return text_.empty(); }
    int Length() const { return static_cast<int>(text_.size()); }
    const Char* c_str() const { return text_.c_str(); }
    operator const Char*() const { return text_.c_str(); }
    /// Would be true always, as the text is never null; `IsEmpty` is what tells.
    explicit operator bool() const = delete;

    bool operator==(const CxStringT& other) const { return text_ == other.text_; }
    /// Compares with plain text; null counts as empty.
    bool operator==(const Char* other) const { return *this == CxStringT(other); }

private:
    std::basic_string<Char> text_;
};

template <>
CORVEX_HOST_API CxStringT<char>::CxStringT(const char16_t* text);
template <>
CORVEX_HOST_API CxStringT<char>::CxStringT(const uint16_t* text);
template <>
CORVEX_HOST_API CxStringT<char> CxStringT<char>::Right(int count) const;

using CxString = CxStringT<char>;
