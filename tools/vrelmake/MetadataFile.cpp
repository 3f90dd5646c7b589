#include "vrelmake/MetadataFile.h"

#include "media/ToolError.h"

#include "cameraraw/automation/BstrText.h"

#include <algorithm>
#include <concepts>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace {

using Json = nlohmann::ordered_json;
using rawsdk::Metadata;
using rawsdk::MetadataValue;

std::u16string WideText(const std::string& text) {
    const BstrHolder wide(text);
    return {wide.Get(), SysStringLen(wide.Get())};
}

template <typename Number>
Number NumberOf(const Json& json) {
    if constexpr (std::floating_point<Number>) {
        return json.get<Number>();
    } else {
        if (!json.is_number_integer()) throw std::invalid_argument(json.dump() + " is no whole number");
        const bool fits = json.is_number_unsigned() ? std::in_range<Number>(json.get<uint64_t>())
                                                    : std::in_range<Number>(json.get<int64_t>());
        if (!fits) throw std::invalid_argument(json.dump() + " is too large or too small for its type");
        return json.get<Number>();
    }
}

/// A number, or an array of numbers.
template <typename Number>
MetadataValue ValueOf(const Json& json) {
    if (!json.is_array()) return rawsdk::NumberValue(NumberOf<Number>(json));
    std::vector<Number> numbers;
    for (const Json& element : json)
        numbers.push_back(NumberOf<Number>(element));
    return rawsdk::ArrayValue(numbers);
}

struct NumberType {
    const char* name;
    MetadataValue (*value)(const Json&);
};
constexpr NumberType numberTypes[] = {
    {"i1", ValueOf<int8_t>},    {"ui1", ValueOf<uint8_t>},  {"i2", ValueOf<int16_t>},
    {"ui2", ValueOf<uint16_t>}, {"i4", ValueOf<int32_t>},   {"ui4", ValueOf<uint32_t>},
    {"i8", ValueOf<int64_t>},   {"ui8", ValueOf<uint64_t>}, {"r4", ValueOf<float>},
    {"r8", ValueOf<double>},
};

MetadataValue TypedValue(const Json& json) {
    const auto name = json.at("type").get<std::string>();
    const auto type = std::ranges::find(numberTypes, name, &NumberType::name);
    if (type == std::end(numberTypes)) throw std::invalid_argument("there is no type " + name);
    return type->value(json.at("value"));
}

MetadataValue WholeNumber(const Json& json) {
    const auto number = NumberOf<int64_t>(json);
    if (std::in_range<int32_t>(number)) return ValueOf<int32_t>(json);
    return std::in_range<uint32_t>(number) ? ValueOf<uint32_t>(json) : ValueOf<int64_t>(json);
}

MetadataValue AnyValue(const Json& json) {
    if (json.is_string()) return rawsdk::TextValue(WideText(json.get<std::string>()));
    if (json.is_object()) return TypedValue(json);
    if (json.is_number_integer()) return WholeNumber(json);
    if (json.is_array() && std::ranges::all_of(json, [](const Json& j) { return j.is_number_integer(); }))
        return ValueOf<int32_t>(json);
    if (!json.is_boolean()) return ValueOf<float>(json);
    const uint8_t half = json.get<bool>() ? 0xFF : 0;
    return {VT_BOOL, {}, {half, half}};
}

Metadata EntriesOf(const Json& json) {
    if (!json.is_object()) throw std::invalid_argument("entries are no object: " + json.dump());
    Metadata metadata;
    for (const auto& [key, value] : json.items())
        metadata.push_back({WideText(key), AnyValue(value)});
    return metadata;
}

} // namespace

MetadataFile::MetadataFile(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw ToolError(ExitStatus::CannotOpen, path, "cannot be opened");
    try {
        const Json json = Json::parse(file);
        clip_ = EntriesOf(json.value("clip", Json::object()));
        everyFrame_ = EntriesOf(json.value("everyFrame", Json::object()));
        for (const Json& frame : json.value("frames", Json::array()))
            frames_.push_back(EntriesOf(frame));
    } catch (const Json::exception& error) {
        throw ToolError(ExitStatus::Damaged, path, error.what());
    } catch (const std::invalid_argument& error) {
        throw ToolError(ExitStatus::Damaged, path, error.what());
    }
}

Metadata MetadataFile::Frame(int64_t index) const {
    Metadata metadata = everyFrame_;
    if (static_cast<uint64_t>(index) >= frames_.size()) return metadata;
    const Metadata& own = frames_[static_cast<size_t>(index)];
    metadata.insert(metadata.end(), own.begin(), own.end());
    return metadata;
}
