#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Which frames a command works on, as the user writes it: `0-9,20,100-`. Numbers are those of the input: a
/// movie counts from 0, an image sequence has the numbers of its files.
class FrameList {
public:
    /// Every frame of the input.
    FrameList() : ranges_{{0, std::nullopt}}, everything_(true) {}

    /// Reads a list of numbers and ranges; a range without an end goes to the last frame.
    /// @return nothing if the text is no such list
    static std::optional<FrameList> Parse(std::string_view text);

    /// The frames of the list, ascending, each once.
    /// @param first,last  numbers of the input's first and last frame
    /// @return nothing if the list names a frame that the input doesn't have
    std::optional<std::vector<int64_t>> Resolve(int64_t first, int64_t last) const;

private:
    struct Range {
        int64_t first;
        std::optional<int64_t> last; ///< none: the last frame of the input
    };
    static std::optional<Range> ParseRange(std::string_view text);

    std::vector<Range> ranges_;
    bool everything_ = false;
};
