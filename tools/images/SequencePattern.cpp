#include "images/SequencePattern.h"

#include "Numbers.h"

#include <algorithm>
#include <filesystem>

namespace {

constexpr size_t kMaxDigits = 18; ///< what 64 bits hold

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool AllDigits(std::string_view text) { return std::all_of(text.begin(), text.end(), IsDigit); }

/// A number field in a file name.
struct Field {
    size_t position;
    size_t length;
    size_t digits;
};

/// `%d` or `%0Nd` at `position`.
std::optional<Field> PercentField(std::string_view name, size_t position) {
    size_t end = position + 1;
    while (end < name.size() && IsDigit(name[end]))
        ++end;
    if (end == name.size() || name[end] != 'd') return std::nullopt;
    const std::string_view width = name.substr(position + 1, end - position - 1);
    const size_t digits = width.empty() ? 1 : static_cast<size_t>(ParseNumber(width).value_or(0));
    if (digits < 1 || digits > kMaxDigits) return std::nullopt;
    return Field{position, end + 1 - position, digits};
}

/// A run of one mark, `#` or `@`, at `position`.
std::optional<Field> MarkField(std::string_view name, size_t position) {
    const size_t end = std::min(name.find_first_not_of(name[position], position), name.size());
    const size_t length = end - position;
    if (length > kMaxDigits) return std::nullopt;
    return Field{position, length, length};
}

std::optional<Field> FieldAt(std::string_view name, size_t position) {
    if (name[position] == '%') return PercentField(name, position);
    if (name[position] == '#' || name[position] == '@') return MarkField(name, position);
    return std::nullopt;
}

std::vector<Field> FindFields(std::string_view name) {
    std::vector<Field> fields;
    for (size_t position = 0; position < name.size(); ++position) {
        const std::optional<Field> field = FieldAt(name, position);
        if (!field) continue;
        fields.push_back(*field);
        position += field->length - 1;
    }
    return fields;
}

/// The last run of digits of a name, its extension aside.
std::optional<Field> LastDigits(std::string_view name) {
    const size_t dot = name.find_last_of('.');
    size_t end = dot == std::string_view::npos || dot == 0 ? name.size() : dot;
    while (end > 0 && !IsDigit(name[end - 1]))
        --end;
    size_t begin = end;
    while (begin > 0 && IsDigit(name[begin - 1]))
        --begin;
    if (begin == end || end - begin > kMaxDigits) return std::nullopt;
    return Field{begin, end - begin, end - begin};
}

size_t FileNameOffset(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? 0 : slash + 1;
}

std::vector<std::string> FileNames(const std::string& directory) {
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(directory.empty() ? "." : directory, error), end;
         !error && entry != end; entry.increment(error))
        names.push_back(entry->path().filename().string());
    return names;
}

} // namespace

std::optional<SequencePattern> SequencePattern::Parse(const std::string& path) {
    const size_t offset = FileNameOffset(path);
    const std::vector<Field> fields = FindFields(std::string_view(path).substr(offset));
    if (fields.size() != 1) return std::nullopt;
    SequencePattern pattern;
    pattern.text_ = path;
    pattern.directory_ = path.substr(0, offset);
    pattern.before_ = path.substr(offset, fields[0].position);
    pattern.after_ = path.substr(offset + fields[0].position + fields[0].length);
    pattern.digits_ = fields[0].digits;
    return pattern;
}

std::optional<SequencePattern> SequencePattern::OfFile(const std::string& path) {
    const size_t offset = FileNameOffset(path);
    const std::string name = path.substr(offset);
    const std::optional<Field> field = LastDigits(name);
    if (!field) return std::nullopt;
    SequencePattern pattern;
    pattern.text_ = path;
    pattern.directory_ = path.substr(0, offset);
    pattern.before_ = name.substr(0, field->position);
    pattern.after_ = name.substr(field->position + field->length);
    pattern.digits_ = field->digits;
    if (name[field->position] == '0') return pattern;
    // `name.1000.exr` is of a padded sequence only if a neighbour such as `name.0999.exr` says so.
    const std::vector<int64_t> numbers = pattern.NumbersOnDisk();
    const int64_t own = *ParseNumber(name.substr(field->position, field->length));
    const bool padded = !numbers.empty() && numbers.front() < own &&
                        pattern.PathOf(numbers.front())[offset + field->position] == '0';
    if (!padded) pattern.digits_ = 1;
    return pattern;
}

std::string SequencePattern::PathOf(int64_t number) const {
    std::string digits = std::to_string(number);
    if (digits.size() < digits_) digits.insert(0, digits_ - digits.size(), '0');
    return directory_ + before_ + digits + after_;
}

std::optional<int64_t> SequencePattern::NumberIn(std::string_view fileName) const {
    if (fileName.size() < before_.size() + digits_ + after_.size()) return std::nullopt;
    if (!fileName.starts_with(before_) || !fileName.ends_with(after_)) return std::nullopt;
    const std::string_view digits =
        fileName.substr(before_.size(), fileName.size() - before_.size() - after_.size());
    const bool paddedTooFar = digits.size() > digits_ && digits.front() == '0';
    if (!AllDigits(digits) || digits.size() > kMaxDigits || paddedTooFar) return std::nullopt;
    return ParseNumber(digits);
}

std::vector<int64_t> SequencePattern::NumbersOnDisk() const {
    std::vector<int64_t> numbers;
    for (const std::string& name : FileNames(directory_)) {
        if (const std::optional<int64_t> number = NumberIn(name)) numbers.push_back(*number);
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}
