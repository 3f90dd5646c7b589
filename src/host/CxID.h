#pragma once

#include "host/Export.h"

/// The host's interned identifier: two identifiers of the same text share one string for the life of the
/// process, so copies are free and comparison of identifiers is by address. Safe from any thread.
class CxID {
public:
    /// The empty identifier; its text is "".
    CORVEX_HOST_API CxID();
    /// Interns `text` (null counts as empty). The second argument is the host's and is always true.
    CORVEX_HOST_API CxID(const char* text, bool intern);

    CxID(const CxID&) = default;
    CxID& operator=(const CxID&) = default;

    /// The text, null-terminated, valid until the process ends; never null.
    operator const char*() const { return text_; }
    /// Would be true always, as the text is never null; `IsEmpty` is what tells.
    explicit operator bool() const = delete;
    bool IsEmpty() const { return text_[0] == '\0'; }

    bool operator==(const CxID& other) const { return text_ == other.text_; }
    /// Compares with plain text, bytewise; null counts as empty.
    CORVEX_HOST_API bool operator==(const char* text) const;

private:
    const char* text_;
};
