#pragma once

#include "codecs/MediaFoundation.h"

#include <string>

namespace CxWMF {

/// The functions of Media Foundation and, from the fourth on, of COM that are found at run time; null before
/// they are bound. Each is documented in codecs/MediaFoundation.h.
struct MediaFoundationFunctions {
    decltype(&::MFTEnumEx) MFTEnumEx = nullptr;
    decltype(&::MFCreateMemoryBuffer) MFCreateMemoryBuffer = nullptr;
    decltype(&::MFCreateSample) MFCreateSample = nullptr;
    decltype(&::CoInitializeEx) CoInitializeEx = nullptr;
    decltype(&::CoUninitialize) CoUninitialize = nullptr;
    decltype(&::CoTaskMemFree) CoTaskMemFree = nullptr;
};

/// Loads the libraries and finds their functions. If one is missing none may be called, and the libraries are
/// unloaded again. Throws std::bad_alloc, with the libraries unloaded.
/// @param failure  receives in words what is missing if not null; unchanged after a success
bool BindMediaFoundation(MediaFoundationFunctions& functions, std::string* failure = nullptr);

/// Binds on the first call, and gives the outcome of that from then on; nothing unloads the libraries once
/// they are bound. Says nothing. Any thread; throws std::bad_alloc, and then the next call is the first.
bool LoadMediaFoundation();

/// The functions of the process, to be called once `LoadMediaFoundation` has returned true. The table lives
/// until the process has ended: it has no destructor.
const MediaFoundationFunctions& MediaFoundation();

} // namespace CxWMF
