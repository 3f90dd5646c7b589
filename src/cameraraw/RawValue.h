#pragma once

#include "cameraraw/automation/BstrText.h"

#include <cstdint>
#include <string>
#include <string_view>

/// A value that is cleared when its owner ends.
class RawValue {
public:
    RawValue() { VariantInit(&value_); }
    /// A string.
    explicit RawValue(std::string_view text) : RawValue() {
        value_.bstrVal = BstrOfText(text);
        value_.vt = VT_BSTR;
    }
    RawValue(const RawValue&) = delete;
    RawValue& operator=(const RawValue&) = delete;
    ~RawValue() { VariantClear(&value_); }

    VARIANT* Get() { return &value_; }
    /// Clears the value, and gives the place for another one.
    VARIANT* Receive() {
        VariantClear(&value_);
        VariantInit(&value_);
        return &value_;
    }

    /// Store the value in `out` if it is of the type that goes with that, and leave it alone otherwise.
    void StoreIn(uint32_t& out) const { StoreAs(VT_UI4, value_.ulVal, out); }
    void StoreIn(uint16_t& out) const { StoreAs(VT_UI2, value_.uiVal, out); }
    void StoreIn(int16_t& out) const { StoreAs(VT_I2, value_.iVal, out); }
    void StoreIn(float& out) const { StoreAs(VT_R4, value_.fltVal, out); }
    void StoreIn(std::string& out) const {
        if (value_.vt == VT_BSTR) out = TextOfBstr(value_.bstrVal);
    }

private:
    template <typename Value, typename Number>
    void StoreAs(VARTYPE type, Value value, Number& out) const {
        if (value_.vt == type) out = static_cast<Number>(value);
    }

    VARIANT value_;
};
