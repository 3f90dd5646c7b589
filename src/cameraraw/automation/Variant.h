#pragma once

#include "cameraraw/automation/Bstr.h"
#include "cameraraw/automation/SafeArray.h"

/// What a `VARIANT_BOOL` is: -1 for true, 0 for false.
using VARIANT_BOOL = int16_t;
inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

/// A value of a type that it tells.
struct VARIANT {
    VARTYPE vt; ///< `VT_...`; says which member of the union holds
    uint16_t wReserved1;
    uint16_t wReserved2;
    uint16_t wReserved3;
    union {
        int8_t cVal;          ///< `VT_I1`
        uint8_t bVal;         ///< `VT_UI1`
        int16_t iVal;         ///< `VT_I2`
        uint16_t uiVal;       ///< `VT_UI2`
        int32_t lVal;         ///< `VT_I4`
        uint32_t ulVal;       ///< `VT_UI4`
        int64_t llVal;        ///< `VT_I8`
        uint64_t ullVal;      ///< `VT_UI8`
        float fltVal;         ///< `VT_R4`
        double dblVal;        ///< `VT_R8`
        VARIANT_BOOL boolVal; ///< `VT_BOOL`
        BSTR bstrVal;         ///< `VT_BSTR`; the value owns it
        SAFEARRAY* parray;    ///< `VT_SAFEARRAY`; the value owns it
    };
};

/// Makes a value empty without looking at what it was. Null does nothing.
void VariantInit(VARIANT* value);

/// Frees what a value owns and makes it empty. An array is freed even where an access to it was not ended:
/// the platform's function fails there and keeps the array, which nothing could free any more.
/// @return `E_INVALIDARG` for null, `DISP_E_BADVARTYPE` for a type that `VARIANT` does not list, which is
/// left
HRESULT VariantClear(VARIANT* value);
