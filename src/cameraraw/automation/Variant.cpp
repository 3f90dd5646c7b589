#include "cameraraw/automation/Variant.h"

#include <cstring>

namespace {

bool IsPlain(VARTYPE type) { return type == VT_EMPTY || type == VT_BOOL || SizeOfElement(type) != 0; }

/// All bytes 0: an assignment clears no more of the union than its first member.
void MakeEmpty(VARIANT& value) { std::memset(&value, 0, sizeof value); }

} // namespace

void VariantInit(VARIANT* value) {
    if (value != nullptr) MakeEmpty(*value);
}

HRESULT VariantClear(VARIANT* value) {
    if (value == nullptr) return E_INVALIDARG;
    if (value->vt == VT_BSTR) {
        SysFreeString(value->bstrVal);
    } else if (value->vt == VT_SAFEARRAY) {
        if (value->parray != nullptr) value->parray->cLocks = 0;
        SafeArrayDestroy(value->parray);
    } else if (!IsPlain(value->vt)) {
        return DISP_E_BADVARTYPE;
    }
    MakeEmpty(*value);
    return S_OK;
}
