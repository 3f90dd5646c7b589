#pragma once

#include "cameraraw/automation/Bstr.h"

/// The one code page that the conversions know.
inline constexpr UINT CP_UTF8 = 65001;
/// Text that is not valid is refused, instead of each damaged piece becoming U+FFFD.
inline constexpr DWORD MB_ERR_INVALID_CHARS = 0x8;
inline constexpr DWORD WC_ERR_INVALID_CHARS = 0x80;

/// Converts UTF-8 to UTF-16. Overlong forms, surrogates and code points beyond U+10FFFF are not valid.
/// @param codePage    `CP_UTF8`
/// @param flags       0 or `MB_ERR_INVALID_CHARS`
/// @param length      bytes of `text`, or -1 if it ends with a zero, which is converted too
/// @param wide        receives the units; may be null if `wideLength` is 0
/// @param wideLength  units that fit; 0 asks how many are needed
/// @return units written or needed; 0 if an argument is not valid, the units do not fit, or the text is
///         refused. Nothing beyond `wideLength` units is ever written. Throws std::bad_alloc.
int MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int length, OLECHAR* wide,
                        int wideLength);

/// Converts UTF-16 to UTF-8, by the rules of `MultiByteToWideChar`. Surrogates without their other half are
/// not valid.
/// @param flags             0 or `WC_ERR_INVALID_CHARS`
/// @param defaultCharacter  null, as UTF-8 has all characters
/// @param usedDefault       null
int WideCharToMultiByte(UINT codePage, DWORD flags, const OLECHAR* wide, int wideLength, char* text,
                        int length, const char* defaultCharacter, BOOL* usedDefault);
