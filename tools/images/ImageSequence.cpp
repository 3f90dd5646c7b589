#include "images/ImageSequence.h"

#include "Text.h"
#include "media/ToolError.h"

#include <algorithm>
#include <filesystem>
#include <limits>

namespace {

bool IsFile(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

} // namespace

ImageSequence::ImageSequence(const std::string& input, MissingFrames missing)
    : name_(input), missing_(missing), firstFile_(input) {
    const bool single = IsFile(input);
    pattern_ = single ? SequencePattern::OfFile(input) : SequencePattern::Parse(input);
    if (!pattern_) {
        if (!single) throw ToolError(ExitStatus::CannotOpen, input, "no such file");
        return;
    }
    numbers_ = pattern_->NumbersOnDisk();
    if (numbers_.empty()) throw ToolError(ExitStatus::CannotOpen, input, "no file of this sequence is there");
    first_ = numbers_.front();
    last_ = numbers_.back();
    firstFile_ = pattern_->PathOf(first_);
    if (FrameCount() > std::numeric_limits<int32_t>::max())
        throw ToolError(ExitStatus::Unsupported, input, "the sequence has too many frames");
    const std::string holes = MissingNumbers();
    if (missing_ == MissingFrames::Refuse && !holes.empty())
        throw ToolError(ExitStatus::CannotOpen, name_, "missing frames: " + holes);
}

std::string ImageSequence::MissingNumbers() const {
    std::vector<std::string> holes;
    for (size_t i = 1; i < numbers_.size(); ++i) {
        const int64_t first = numbers_[i - 1] + 1;
        const int64_t last = numbers_[i] - 1;
        if (first == last) holes.push_back(std::to_string(first));
        if (first < last) holes.push_back(std::to_string(first) + "-" + std::to_string(last));
    }
    return Join(holes, ", ");
}

std::string ImageSequence::FileAt(int64_t index) const {
    if (!pattern_) return firstFile_;
    const int64_t number = first_ + index;
    const auto next = std::upper_bound(numbers_.begin(), numbers_.end(), number);
    const int64_t nearest = *(next - 1);
    if (nearest != number && missing_ == MissingFrames::Black) return {};
    return pattern_->PathOf(nearest);
}
