#pragma once

// The automation types: reference-counted interfaces, counted strings, values that tell their type, and
// arrays with bounds. Windows has them; elsewhere they are those of this folder, with the same names, members
// and functions as far as the camera raw format and its SDK use them. Where the two differ is told at the
// function.

#ifdef _WIN32
#include <windows.h>

#include <oleauto.h>
#include <unknwn.h>
#else
#include "cameraraw/automation/Bstr.h"
#include "cameraraw/automation/ComTypes.h"
#include "cameraraw/automation/SafeArray.h"
#include "cameraraw/automation/Utf8.h"
#include "cameraraw/automation/Variant.h"
#endif
