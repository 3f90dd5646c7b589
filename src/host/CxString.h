#pragma once

#include <string>
#include <string_view>

/// The host's string class, used at the boundaries of path handling. Text is UTF-8 for `char`.
template <typename Char> class CxStringT {
public:
    CxStringT() = default;
    /// Copies null-terminated text; null counts as empty.
    CxStringT(const Char* text) : text_(text != nullptr ? text : std::basic_string<Char>().c_str()) {}
    /// Converts null-terminated UTF-16 text; unpaired surrogates become U+FFFD. Null counts as empty.
    explicit CxStringT(const char16_t* text);

    CxStringT& operator+=(const CxStringT& other) {
        text_ += other.text_;
        return *this;
    }
    /// The last `count` characters, or all of them if there are fewer; empty for 0 or less.
    CxStringT Right(int count) const;
    bool IsEmpty() const { return text_.empty(); }
    int Length() const { return static_cast<int>(text_.size()); }
    const Char* c_str() const { return text_.c_str(); }
    operator const Char*() const { return text_.c_str(); }

    bool operator==(const CxStringT& other) const { return text_ == other.text_; }
    bool operator!=(const CxStringT& other) const { return text_ != other.text_; }

private:
    std::basic_string<Char> text_;
};

using CxString = CxStringT<char>;
