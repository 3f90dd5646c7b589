#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A path whose file name has one field for a frame number: `name.%04d.exr`, `name.####.exr` (as many digits
/// as there are marks) or `name.@.exr`. Directories are never part of the field.
class SequencePattern {
public:
    /// Reads a path with a number field.
    /// @return nothing if the file name has no field, or more than one
    static std::optional<SequencePattern> Parse(const std::string& path);

    /// Takes the last run of digits in the name of an existing file, its extension aside, for the field. The
    /// files beside it decide whether the numbers are padded with zeros.
    /// @return nothing if there are no digits
    static std::optional<SequencePattern> OfFile(const std::string& path);

    /// Path of the file with this number, 0 or more.
    std::string PathOf(int64_t number) const;

    /// The number in a file's name (without directory), or nothing if the name is none of this pattern's.
    std::optional<int64_t> NumberIn(std::string_view fileName) const;

    /// Numbers of the files that are there, ascending. Empty also if the directory can't be read.
    std::vector<int64_t> NumbersOnDisk() const;

    /// The whole pattern as it was given.
    const std::string& Text() const { return text_; }

private:
    std::string text_;
    std::string directory_; ///< with its last separator; empty for the working directory
    std::string before_;    ///< of the file name, in front of the field
    std::string after_;     ///< of the file name, behind the field
    size_t digits_ = 1;     ///< least digits; shorter numbers are padded with zeros
};
