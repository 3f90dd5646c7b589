#include "host/ScriptVal.h"

#include <deque>
#include <utility>
#include <variant>

struct ScriptVal::Content {
    /// In order of insertion; a deque keeps references to entries valid while others are appended.
    using Table = std::deque<std::pair<std::string, ScriptVal>>;

    /// In the order of `ScriptValType`, from 1 on.
    std::variant<bool, double, std::string, Table> value;
};

ScriptVal::ScriptVal() = default;
ScriptVal::~ScriptVal() = default;

ScriptVal::ScriptVal(const ScriptVal& other)
    : content_(other.content_ ? std::make_unique<Content>(*other.content_) : nullptr) {}

ScriptVal& ScriptVal::operator=(const ScriptVal& other) {
    // The copy is made first: `other` may be an entry of this value's table.
    ScriptVal copy(other);
    content_.swap(copy.content_);
    return *this;
}

ScriptVal::ScriptVal(ScriptVal&& other) noexcept = default;
ScriptVal& ScriptVal::operator=(ScriptVal&& other) noexcept = default;

ScriptVal& ScriptVal::operator=(const char* text) {
    Set(text != nullptr ? ScriptVal_String : ScriptVal_Nil, text);
    return *this;
}

ScriptVal& ScriptVal::operator=(const CxID& id) { return *this = static_cast<const char*>(id); }

void ScriptVal::Set(ScriptValType type, const void* value) {
    // The old content lives until the new one is made from `value`, which may point into it.
    std::unique_ptr<Content> content;
    switch (type) {
    case ScriptVal_Nil: break;
    case ScriptVal_Boolean:
        content.reset(new Content{value != nullptr && *static_cast<const bool*>(value)});
        break;
    case ScriptVal_Number:
        content.reset(new Content{value != nullptr ? *static_cast<const double*>(value) : 0.0});
        break;
    case ScriptVal_String:
        content.reset(new Content{std::string(value != nullptr ? static_cast<const char*>(value) : "")});
        break;
    case ScriptVal_Table:
        content.reset(new Content{Content::Table()});
        if (value != nullptr && static_cast<const ScriptVal*>(value)->IsTable()) {
            *content = *static_cast<const ScriptVal*>(value)->content_;
        }
        break;
    }
    content_ = std::move(content);
}

ScriptValType ScriptVal::Type() const {
    return content_ ? static_cast<ScriptValType>(content_->value.index() + 1) : ScriptVal_Nil;
}

bool ScriptVal::IsTable() const { return Type() == ScriptVal_Table; }

ScriptVal& ScriptVal::FindKey(const char* key) {
    if (!IsTable()) Set(ScriptVal_Table, nullptr);
    auto& table = std::get<Content::Table>(content_->value);
    for (auto& [name, value] : table) {
        if (name == key) return value;
    }
    return table.emplace_back(key, ScriptVal()).second;
}

const ScriptVal& ScriptVal::FindKeyConst(const char* key) const {
    static const ScriptVal nil;
    if (!IsTable()) return nil;
    for (const auto& [name, value] : std::get<Content::Table>(content_->value)) {
        if (name == key) return value;
    }
    return nil;
}

std::vector<std::string> ScriptVal::Keys() const {
    std::vector<std::string> keys;
    if (!IsTable()) return keys;
    for (const auto& entry : std::get<Content::Table>(content_->value))
        keys.push_back(entry.first);
    return keys;
}

const char* ScriptVal::ToString(const char* defaultText) const {
    return Type() == ScriptVal_String ? std::get<std::string>(content_->value).c_str() : defaultText;
}

double ScriptVal::ToNumber(double defaultNumber) const {
    return Type() == ScriptVal_Number ? std::get<double>(content_->value) : defaultNumber;
}

bool ScriptVal::ToBoolean(bool defaultBoolean) const {
    return Type() == ScriptVal_Boolean ? std::get<bool>(content_->value) : defaultBoolean;
}
