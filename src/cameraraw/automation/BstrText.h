#pragma once

#include "cameraraw/automation/Automation.h"

#include <string>
#include <string_view>

/// The text as a new string, which the caller frees. Bytes that are not UTF-8 become U+FFFD.
/// @return null without memory. Throws std::bad_alloc.
BSTR BstrOfText(std::string_view text);

/// The string as UTF-8; empty for null. Units that are not UTF-16 become U+FFFD. Throws std::bad_alloc.
std::string TextOfBstr(BSTR string);

/// A string that is freed with its owner.
class BstrHolder {
public:
    BstrHolder() = default;
    explicit BstrHolder(std::string_view text) : string_(BstrOfText(text)) {}
    BstrHolder(const BstrHolder&) = delete;
    BstrHolder& operator=(const BstrHolder&) = delete;
    ~BstrHolder() { SysFreeString(string_); }

    BSTR Get() const { return string_; }
    std::string Text() const { return TextOfBstr(string_); }

    /// Frees the string, and gives the place for another one.
    BSTR* Receive() {
        SysFreeString(string_);
        string_ = nullptr;
        return &string_;
    }

private:
    BSTR string_ = nullptr;
};
