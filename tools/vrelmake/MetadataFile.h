#pragma once

#include "rawsdk/clip/Metadata.h"

#include <cstdint>
#include <string>
#include <vector>

/// Metadata for a clip, from a JSON file with any of
///
///     "clip": {...}         entries of the clip
///     "everyFrame": {...}   entries of each frame
///     "frames": [{...}]     entries of the first frame, the second, and so on
///
/// Entries go by their keys. A text, a truth or a number is one value; a whole number becomes `i4`, or `ui4`
/// or `i8` where it has to, any other `r4`. A list of numbers is an array, of `i4` or of `r4`. An object
/// {"type": "ui2", "value": ...} tells its type: i1, ui1, i2, ui2, i4, ui4, i8, ui8, r4 or r8.
class MetadataFile {
public:
    /// No metadata.
    MetadataFile() = default;
    /// @throw ToolError  cannot open; damaged if it isn't such a file
    explicit MetadataFile(const std::string& path);

    const rawsdk::Metadata& Clip() const { return clip_; }
    /// @param index  of the frame, from 0 on
    rawsdk::Metadata Frame(int64_t index) const;

private:
    rawsdk::Metadata clip_;
    rawsdk::Metadata everyFrame_;
    std::vector<rawsdk::Metadata> frames_;
};
