#pragma once

#include <string>

/// Keeps the first error that FFmpeg puts into words while this object lives, for who learns from a library
/// in between that something failed and not why. One object at a time.
class AvErrorWords {
public:
    AvErrorWords();
    ~AvErrorWords();
    AvErrorWords(const AvErrorWords&) = delete;
    AvErrorWords& operator=(const AvErrorWords&) = delete;

    /// The words with the name of what says them, such as "libx264: width not divisible by 2 (63x48)";
    /// `other` if there are none.
    std::string First(const std::string& other) const;
};
