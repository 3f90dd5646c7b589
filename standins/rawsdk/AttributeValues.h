#pragma once

#include "rawsdk/Calls.h"
#include "rawsdk/clip/Settings.h"

#include "cameraraw/automation/BstrText.h"

#include <algorithm>
#include <type_traits>

namespace rawsdk {

// Values of attributes as they cross the SDK. `ToVariant` gives one for the caller to clear.

VARIANT ToVariant(float value);
VARIANT ToVariant(int16_t value);
VARIANT ToVariant(uint16_t value);
VARIANT ToVariant(uint32_t value);
/// @throw Failure  without memory
VARIANT ToVariant(std::string_view text);

/// @throw Failure  `E_INVALIDARG` for a value of another type
void FromVariant(const VARIANT& variant, float& value);
void FromVariant(const VARIANT& variant, int16_t& value);
void FromVariant(const VARIANT& variant, uint16_t& value);
void FromVariant(const VARIANT& variant, uint32_t& value);
void FromVariant(const VARIANT& variant, std::string& text);

/// @throw Failure  `E_INVALIDARG` for a code that no attribute has
template <typename Owner>
const Attribute<Owner>& RequireAttribute(std::span<const Attribute<Owner>> attributes, uint32_t code) {
    const Attribute<Owner>* const attribute = FindAttribute(attributes, code);
    RequireArgument(attribute != nullptr);
    return *attribute;
}

template <typename Owner>
VARIANT ValueOf(const Attribute<Owner>& attribute, const Owner& owner) {
    return std::visit([&](auto member) { return ToVariant(owner.*member); }, attribute.member);
}

/// A limit of an attribute, as a value of its type.
template <typename Owner>
VARIANT LimitOf(const Attribute<Owner>& attribute, double limit) {
    const auto convert = [&]<typename Value>(Value Owner::*) -> VARIANT {
        if constexpr (std::is_arithmetic_v<Value>) return ToVariant(static_cast<Value>(limit));
        throw Failure{E_INVALIDARG};
    };
    return std::visit(convert, attribute.member);
}

inline bool Allows(const Limits& limits, std::span<const char* const>, double value) {
    return !limits.Any() || (value >= limits.lowest && value <= limits.highest);
}
inline bool Allows(const Limits&, std::span<const char* const> choices, const std::string& text) {
    return std::ranges::find(choices, text) != choices.end();
}

/// @throw Failure  `E_INVALIDARG` for a value that the attribute does not take; it keeps its own then
template <typename Owner>
void SetValue(const Attribute<Owner>& attribute, Owner& owner, const VARIANT& variant) {
    const auto assign = [&]<typename Value>(Value Owner::*member) {
        Value value{};
        FromVariant(variant, value);
        RequireArgument(Allows(attribute.limits, attribute.choices, value));
        owner.*member = value;
    };
    std::visit(assign, attribute.member);
}

} // namespace rawsdk
