#include "rawsdk/AttributeValues.h"

namespace rawsdk {

namespace {

template <typename Value>
VARIANT Make(VARTYPE type, Value VARIANT::*member, Value value) {
    VARIANT variant = {};
    variant.vt = type;
    variant.*member = value;
    return variant;
}

template <typename Value>
Value Get(const VARIANT& variant, VARTYPE type, Value VARIANT::*member) {
    RequireArgument(variant.vt == type);
    return variant.*member;
}

} // namespace

VARIANT ToVariant(float value) { return Make(VT_R4, &VARIANT::fltVal, value); }
VARIANT ToVariant(int16_t value) { return Make(VT_I2, &VARIANT::iVal, value); }
VARIANT ToVariant(uint16_t value) { return Make(VT_UI2, &VARIANT::uiVal, value); }
VARIANT ToVariant(uint32_t value) { return Make(VT_UI4, &VARIANT::ulVal, value); }
VARIANT ToVariant(std::string_view text) {
    const BSTR string = BstrOfText(text);
    if (string == nullptr) throw Failure{E_OUTOFMEMORY};
    return Make(VT_BSTR, &VARIANT::bstrVal, string);
}

void FromVariant(const VARIANT& variant, float& value) { value = Get(variant, VT_R4, &VARIANT::fltVal); }
void FromVariant(const VARIANT& variant, int16_t& value) { value = Get(variant, VT_I2, &VARIANT::iVal); }
void FromVariant(const VARIANT& variant, uint16_t& value) { value = Get(variant, VT_UI2, &VARIANT::uiVal); }
void FromVariant(const VARIANT& variant, uint32_t& value) { value = Get(variant, VT_UI4, &VARIANT::ulVal); }
void FromVariant(const VARIANT& variant, std::string& text) {
    text = TextOfBstr(Get(variant, VT_BSTR, &VARIANT::bstrVal));
}

} // namespace rawsdk
