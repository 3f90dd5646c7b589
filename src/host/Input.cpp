#include "host/Input.h"

#include <typeinfo>

namespace {

/// The value that a control with these tags holds at first, or null if they name no type that is known.
std::unique_ptr<Parameter> DefaultValue(const TagList& tags) {
    const CxID dataType(tags.GetString(InputTag_DataType, ""), true);
    if (dataType == CLSID_DataType_Number) {
        return std::make_unique<NumberParameter>(tags.GetDouble(InputTag_Default, 0.0));
    }
    if (dataType == CLSID_DataType_CxID) {
        return std::make_unique<IDParameter>(CxID(tags.GetString(InputTag_DefaultEntry, ""), true));
    }
    if (dataType == CLSID_DataType_Text) return std::make_unique<TextParameter>("");
    return nullptr;
}

} // namespace

Input::Input(const char* label, const char* id, const TagList& tags, const ControlNest* nest)
    : label_(label), id_(id, true), tags_(tags), nest_(nest), value_(DefaultValue(tags)) {}

Input::~Input() = default;

size_t Input::ObjectSize() const { return sizeof(Input); }

bool Input::SetAttrsTagList(const TagList& tags) {
    tags_.SetTags(&tags, false);
    return !tags.Items().empty();
}

bool Input::CopyAttr(Tag key, void* out) {
    if (!tags_.FindQuery(key)) return RefObject::CopyAttr(key, out);
    switch (KindOf(key)) {
    case TagKind_Integer:
        *static_cast<int32_t*>(out) = static_cast<int32_t>(tags_.GetLong(key, 0));
        return true;
    case TagKind_Double: *static_cast<double*>(out) = tags_.GetDouble(key, 0.0); return true;
    default: return false;
    }
}

bool Input::SetSource(const Parameter& value, double, int32_t, int32_t) {
    const Parameter* const held = value_.get();
    if (held == nullptr || typeid(*held) != typeid(value)) return false;
    value_ = value.Clone();
    return true;
}

Parameter* Input::GetValue(double) const { return value_.get(); }

CxID Input::GetID(double time) const {
    const auto* const held = dynamic_cast<const IDParameter*>(GetValue(time));
    return held != nullptr ? held->ID() : CxID();
}
