#pragma once

#include "cameraraw/automation/ComTypes.h"

/// A code unit of UTF-16.
using OLECHAR = char16_t;

/// A string that knows its length and ends with a zero; null counts as an empty string. Whoever receives one
/// frees it, by `SysFreeString`, also where another library has made it: the memory is that of malloc.
using BSTR = OLECHAR*;

/// Makes a string of `length` units, zeros among them too. With a null text its units are zeros.
/// @return null without memory
BSTR SysAllocStringLen(const OLECHAR* text, UINT length);
/// Makes a string of the text up to its zero.
/// @return null for a null text or without memory
BSTR SysAllocString(const OLECHAR* text);
/// Units of a string, without the zero at its end; 0 for null.
UINT SysStringLen(BSTR string);
/// Frees a string; null is fine.
void SysFreeString(BSTR string);
