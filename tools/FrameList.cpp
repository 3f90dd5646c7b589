#include "FrameList.h"

#include "Numbers.h"

#include <set>

std::optional<FrameList::Range> FrameList::ParseRange(std::string_view text) {
    const size_t dash = text.find('-');
    const std::optional<int64_t> first = ParseNumber(text.substr(0, dash));
    if (!first) return std::nullopt;
    if (dash == std::string_view::npos) return Range{*first, first};
    if (dash + 1 == text.size()) return Range{*first, std::nullopt};
    const std::optional<int64_t> last = ParseNumber(text.substr(dash + 1));
    if (!last || *last < *first) return std::nullopt;
    return Range{*first, last};
}

std::optional<FrameList> FrameList::Parse(std::string_view text) {
    FrameList list;
    list.everything_ = false;
    list.ranges_.clear();
    while (true) {
        const size_t comma = text.find(',');
        const std::optional<Range> range = ParseRange(text.substr(0, comma));
        if (!range) return std::nullopt;
        list.ranges_.push_back(*range);
        if (comma == std::string_view::npos) return list;
        text.remove_prefix(comma + 1);
    }
}

std::optional<std::vector<int64_t>> FrameList::Resolve(int64_t first, int64_t last) const {
    std::set<int64_t> numbers;
    for (const Range& range : ranges_) {
        const int64_t from = everything_ ? first : range.first;
        const int64_t to = range.last.value_or(last);
        if (from < first || to > last || from > to) return std::nullopt;
        for (int64_t number = from; number <= to; ++number)
            numbers.insert(numbers.end(), number);
    }
    return std::vector<int64_t>(numbers.begin(), numbers.end());
}
