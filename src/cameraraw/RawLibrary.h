#pragma once

#include "cameraraw/RavenlightRawAPI.h"
#include "cameraraw/RawPointer.h"

#include <string>

/// Name under which the host is asked for the SDK's library.
inline constexpr const char* rawLibraryName = "RavenlightRawAPI.dll";
/// The library's one export.
inline constexpr const char* rawFactoryFunctionName = "CreateRavenlightRawFactoryInstance";

using RawFactoryFunction = decltype(CreateRavenlightRawFactoryInstance);

/// Loads the library, which stays loaded from then on, and finds its export. Throws std::bad_alloc.
/// @param failure  receives in words what is missing if not null; unchanged after a success
/// @return null if the library or its export is missing
RawFactoryFunction* FindRawFactoryFunction(std::string* failure = nullptr);

/// Finds the export on the first call, and gives the outcome of that from then on. Says nothing. Any thread.
/// Throws std::bad_alloc, and then the next call is the first again.
RawFactoryFunction* LoadRawFactoryFunction();

/// A new factory. A missing library, export or factory is reported.
/// @return null if there is none. Throws std::bad_alloc.
RawPointer<RawFactory> CreateRawFactory();
