#pragma once

#include "images/SequencePattern.h"

#include <cstdint>
#include <string>
#include <vector>

/// What to do about numbers that an image sequence lacks.
enum class MissingFrames {
    Refuse, ///< fail, naming the numbers
    Hold,   ///< show the image before the hole again
    Black,  ///< show black
};

/// The files of an image sequence, in the order of their numbers. A still image is a sequence of one.
class ImageSequence {
public:
    /// Finds the sequence that `input` names: by a pattern with a number field or by any one of its files.
    /// @throw ToolError (cannot open) if there is no such file or pattern, or if numbers are missing and
    ///         `missing` refuses that
    ImageSequence(const std::string& input, MissingFrames missing);

    /// As the user named it.
    const std::string& Name() const { return name_; }
    int64_t FirstNumber() const { return first_; }
    /// Frames from the first number to the last, missing ones included; at least 1.
    int64_t FrameCount() const { return last_ - first_ + 1; }
    /// First file of the sequence, which is always there.
    const std::string& FirstFile() const { return firstFile_; }
    /// File that stands for frame `first + index`; empty if black stands there.
    std::string FileAt(int64_t index) const;

    /// Numbers between the first and the last that have no file, as people write them: `3, 7-9`.
    std::string MissingNumbers() const;

private:
    std::string name_;
    MissingFrames missing_;
    std::string firstFile_;
    std::optional<SequencePattern> pattern_; ///< none for a file without a number
    std::vector<int64_t> numbers_;           ///< that are there, ascending; empty without a pattern
    int64_t first_ = 0;
    int64_t last_ = 0;
};
