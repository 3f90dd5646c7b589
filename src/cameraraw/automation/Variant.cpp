#include "cameraraw/automation/Variant.h"

namespace {

bool IsPlain(VARTYPE type) { return type == VT_EMPTY || type == VT_BOOL || SizeOfElement(type) != 0; }

} // namespace

void VariantInit(VARIANT* value) {
    if (value != nullptr) *value = {};
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
    *value = {};
    return S_OK;
}
