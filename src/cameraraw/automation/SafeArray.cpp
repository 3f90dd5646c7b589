#include "cameraraw/automation/SafeArray.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

constexpr ULONG mostLocks = 65535;

/// Stands before the record of every array.
struct alignas(std::max_align_t) Prefix {
    VARTYPE type;
};

Prefix* PrefixOf(SAFEARRAY* array) { return reinterpret_cast<Prefix*>(array) - 1; }

/// The bound of a dimension, which counts from 1.
SAFEARRAYBOUND& BoundOf(SAFEARRAY* array, UINT dimension) {
    return array->rgsabound[array->cDims - dimension];
}

bool IndicesFit(const SAFEARRAYBOUND& bound) {
    return int64_t{bound.lLbound} + bound.cElements - 1 <= std::numeric_limits<LONG>::max();
}

HRESULT Allocate(VARTYPE type, UINT dimensions, SAFEARRAY** array) {
    if (array == nullptr) return E_INVALIDARG;
    *array = nullptr;
    if (dimensions == 0 || dimensions > std::numeric_limits<USHORT>::max()) return E_INVALIDARG;
    const size_t further = (dimensions - 1) * sizeof(SAFEARRAYBOUND);
    auto* const prefix = static_cast<Prefix*>(std::calloc(1, sizeof(Prefix) + sizeof(SAFEARRAY) + further));
    if (prefix == nullptr) return E_OUTOFMEMORY;
    prefix->type = type;
    *array = reinterpret_cast<SAFEARRAY*>(prefix + 1);
    (*array)->cDims = static_cast<USHORT>(dimensions);
    (*array)->cbElements = SizeOfElement(type);
    return S_OK;
}

/// Sets the bounds of a new array and allocates its elements.
bool AllocateElements(SAFEARRAY* array, const SAFEARRAYBOUND* bounds) {
    size_t bytes = array->cbElements;
    for (UINT i = 0; i < array->cDims; ++i) {
        if (!IndicesFit(bounds[i])) return false;
        if (bounds[i].cElements != 0 && bytes > SIZE_MAX / bounds[i].cElements) return false;
        bytes *= bounds[i].cElements;
        BoundOf(array, i + 1) = bounds[i];
    }
    // An array of no elements has an address too, as the null one means an array that was never filled.
    array->pvData = std::calloc(1, bytes != 0 ? bytes : 1);
    return array->pvData != nullptr;
}

/// Where an element stands.
HRESULT Locate(SAFEARRAY* array, const LONG* indices, uint8_t*& element) {
    if (array == nullptr || indices == nullptr || array->pvData == nullptr) return E_INVALIDARG;
    size_t position = 0;
    for (UINT dimension = array->cDims; dimension > 0; --dimension) {
        const SAFEARRAYBOUND& bound = BoundOf(array, dimension);
        const int64_t index = int64_t{indices[dimension - 1]} - bound.lLbound;
        if (index < 0 || index >= int64_t{bound.cElements}) return DISP_E_BADINDEX;
        position = position * bound.cElements + static_cast<size_t>(index);
    }
    element = static_cast<uint8_t*>(array->pvData) + position * array->cbElements;
    return S_OK;
}

} // namespace

ULONG SizeOfElement(VARTYPE type) {
    switch (type) {
    case VT_I1:
    case VT_UI1: return 1;
    case VT_I2:
    case VT_UI2: return 2;
    case VT_I4:
    case VT_UI4:
    case VT_R4: return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8: return 8;
    default: return 0;
    }
}

SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds) {
    SAFEARRAY* array = nullptr;
    if (bounds == nullptr || SafeArrayAllocDescriptorEx(type, dimensions, &array) != S_OK) return nullptr;
    if (AllocateElements(array, bounds)) return array;
    SafeArrayDestroy(array);
    return nullptr;
}

HRESULT SafeArrayAllocDescriptor(UINT dimensions, SAFEARRAY** array) {
    return Allocate(VT_EMPTY, dimensions, array);
}

HRESULT SafeArrayAllocDescriptorEx(VARTYPE type, UINT dimensions, SAFEARRAY** array) {
    if (SizeOfElement(type) != 0) return Allocate(type, dimensions, array);
    if (array != nullptr) *array = nullptr;
    return E_INVALIDARG;
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
    if (array == nullptr) return S_OK;
    if (array->cLocks != 0) return DISP_E_ARRAYISLOCKED;
    std::free(array->pvData);
    std::free(PrefixOf(array));
    return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY* array) { return array == nullptr ? 0 : array->cDims; }

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) {
    if (array == nullptr || type == nullptr || PrefixOf(array)->type == VT_EMPTY) return E_INVALIDARG;
    *type = PrefixOf(array)->type;
    return S_OK;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    if (array == nullptr || bound == nullptr) return E_INVALIDARG;
    if (dimension == 0 || dimension > array->cDims) return DISP_E_BADINDEX;
    *bound = BoundOf(array, dimension).lLbound;
    return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    const HRESULT result = SafeArrayGetLBound(array, dimension, bound);
    // Unsigned, as an empty dimension may begin at the lowest index.
    if (result == S_OK)
        *bound = static_cast<LONG>(static_cast<ULONG>(*bound) + BoundOf(array, dimension).cElements - 1);
    return result;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
    if (array == nullptr || data == nullptr) return E_INVALIDARG;
    if (array->cLocks >= mostLocks) return E_UNEXPECTED;
    ++array->cLocks;
    *data = array->pvData;
    return S_OK;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) {
    if (array == nullptr) return E_INVALIDARG;
    if (array->cLocks == 0) return E_UNEXPECTED;
    --array->cLocks;
    return S_OK;
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* value) {
    uint8_t* element = nullptr;
    if (value == nullptr) return E_INVALIDARG;
    const HRESULT result = Locate(array, indices, element);
    if (result == S_OK) std::memcpy(value, element, array->cbElements);
    return result;
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* value) {
    uint8_t* element = nullptr;
    if (value == nullptr) return E_INVALIDARG;
    const HRESULT result = Locate(array, indices, element);
    if (result == S_OK) std::memcpy(element, value, array->cbElements);
    return result;
}
