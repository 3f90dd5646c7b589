#pragma once

#include "cameraraw/automation/ComTypes.h"

/// The type of a value or of an array's elements.
using VARTYPE = uint16_t;
inline constexpr VARTYPE VT_EMPTY = 0;
inline constexpr VARTYPE VT_I2 = 2;
inline constexpr VARTYPE VT_I4 = 3;
inline constexpr VARTYPE VT_R4 = 4;
inline constexpr VARTYPE VT_R8 = 5;
inline constexpr VARTYPE VT_BSTR = 8;
inline constexpr VARTYPE VT_BOOL = 11;
inline constexpr VARTYPE VT_I1 = 16;
inline constexpr VARTYPE VT_UI1 = 17;
inline constexpr VARTYPE VT_UI2 = 18;
inline constexpr VARTYPE VT_UI4 = 19;
inline constexpr VARTYPE VT_I8 = 20;
inline constexpr VARTYPE VT_UI8 = 21;
inline constexpr VARTYPE VT_SAFEARRAY = 27;

/// One dimension of an array.
struct SAFEARRAYBOUND {
    ULONG cElements;
    LONG lLbound; ///< index of the first element
};

/// An array of numbers, with one bound or more. It is made by the functions below, which also keep its
/// element type, outside of this record; its memory is that of malloc, so that any library frees it.
struct SAFEARRAY {
    USHORT cDims;
    USHORT fFeatures;
    ULONG cbElements;            ///< bytes of one element; 0 without an element type
    ULONG cLocks;                ///< accesses that were begun and not ended
    void* pvData;                ///< the elements, or null; the first dimension runs fastest
    SAFEARRAYBOUND rgsabound[1]; ///< `cDims` bounds, that of the last dimension first
};

/// Bytes of an array's element, or 0 for a type that arrays do not hold: the numbers alone are held.
ULONG SizeOfElement(VARTYPE type);

/// Makes an array whose elements are 0.
/// @param bounds  one for each dimension, the first dimension first
/// @return null for an element type that arrays do not hold, no dimension or no bounds, dimensions whose
/// indices
///         do not fit a LONG, or too little memory
SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds);
/// Makes an array without elements or element type, whose bounds are 0.
/// @return `E_INVALIDARG` for no dimension or more than 65535 and for a null `array`, `E_OUTOFMEMORY`
HRESULT SafeArrayAllocDescriptor(UINT dimensions, SAFEARRAY** array);
/// The same with an element type.
/// @return also `E_INVALIDARG` for a type that arrays do not hold
HRESULT SafeArrayAllocDescriptorEx(VARTYPE type, UINT dimensions, SAFEARRAY** array);
/// Frees an array; null is fine.
/// @return `DISP_E_ARRAYISLOCKED` while an access lasts; the array stays
HRESULT SafeArrayDestroy(SAFEARRAY* array);

/// Dimensions of an array; 0 for null.
UINT SafeArrayGetDim(SAFEARRAY* array);
/// The type of the elements.
/// @return `E_INVALIDARG` for a null argument or an array that has no type
HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);
/// First and last index of a dimension; the last one is below the first where there is no element.
/// @param dimension  1 for the first
/// @return `E_INVALIDARG` for a null argument, `DISP_E_BADINDEX` for a dimension that the array doesn't have
HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound);
HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound);

/// Begins an access to the elements, of which there are as many as the bounds tell.
/// @param data  out: the first element, null where the array has none
/// @return `E_INVALIDARG` for a null argument, `E_UNEXPECTED` if 65535 accesses last already
HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
/// Ends one access.
/// @return `E_INVALIDARG` for null, `E_UNEXPECTED` if none lasts
HRESULT SafeArrayUnaccessData(SAFEARRAY* array);

/// Copy one element out of or into an array.
/// @param indices  one for each dimension, the first dimension first
/// @param value    an element, as it is in memory
/// @return `E_INVALIDARG` for a null argument or an array without elements, `DISP_E_BADINDEX` for an index
///         outside its bounds; nothing is copied then
HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* value);
HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* value);
