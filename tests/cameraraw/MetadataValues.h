#pragma once

#include "cameraraw/RavenlightRawAPI.h"

#include <cstring>
#include <functional>
#include <string>
#include <vector>

/// Makes a value of an empty one.
using FillVariant = std::function<void(VARIANT& value)>;

inline FillVariant TextValue(const std::u16string& text) {
    return [=](VARIANT& value) {
        value.vt = VT_BSTR;
        value.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    };
}

inline FillVariant NumberValue(int16_t number) {
    return [=](VARIANT& value) { value.vt = VT_I2, value.iVal = number; };
}
inline FillVariant NumberValue(uint16_t number) {
    return [=](VARIANT& value) { value.vt = VT_UI2, value.uiVal = number; };
}
inline FillVariant NumberValue(int32_t number) {
    return [=](VARIANT& value) { value.vt = VT_I4, value.lVal = number; };
}
inline FillVariant NumberValue(uint32_t number) {
    return [=](VARIANT& value) { value.vt = VT_UI4, value.ulVal = number; };
}
inline FillVariant NumberValue(float number) {
    return [=](VARIANT& value) { value.vt = VT_R4, value.fltVal = number; };
}

/// An array of one dimension.
template <typename Element>
FillVariant ArrayValue(VARTYPE type, const std::vector<Element>& elements, LONG first = 0) {
    return [=](VARIANT& value) {
        SAFEARRAYBOUND bounds = {static_cast<ULONG>(elements.size()), first};
        value.vt = VT_SAFEARRAY;
        value.parray = SafeArrayCreate(type, 1, &bounds);
        void* data = nullptr;
        if (SafeArrayAccessData(value.parray, &data) != S_OK) return;
        if (!elements.empty()) std::memcpy(data, elements.data(), elements.size() * sizeof(Element));
        SafeArrayUnaccessData(value.parray);
    };
}
