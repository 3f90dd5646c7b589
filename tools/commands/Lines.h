#pragma once

#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

/// Lines of a name and what is known under it, for people.
class Lines {
public:
    /// A value of no characters makes no line.
    void Add(const std::string& name, const std::string& value) {
        if (value.empty()) return;
        text_ << std::left << std::setw(kNameWidth) << name << value << "\n";
    }
    std::string Text() const { return text_.str(); }

private:
    static constexpr int kNameWidth = 16;
    std::ostringstream text_;
};

/// A value as it stands in a line: text without quotes.
inline std::string TextOf(const nlohmann::ordered_json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}
