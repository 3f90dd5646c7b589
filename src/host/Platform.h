#pragma once

#include "host/CxString.h"
#include "host/Export.h"

#include <cstddef>
#include <cstdint>

/// Memory, shared libraries, files and events of the operating system, behind the host's names.
namespace Platform {

/// Allocates `size` bytes at an alignment that is a power of two.
/// @return the block, for `FreeMemAligned`, or null for a negative size, a bad alignment or lack of memory;
///         size 0 gives a valid block of no bytes
CORVEX_HOST_API void* AllocMemAligned(int64_t size, int alignment);
/// Frees a block of `AllocMemAligned`; null is not passed.
CORVEX_HOST_API void FreeMemAligned(void* block);
/// The page size in bytes.
CORVEX_HOST_API int GetMemoryPageSize();

struct Library;
/// Loads a shared library. A plain name "NAME.dll" becomes the platform's own form ("libNAME.so" on Linux); a
/// path keeps its directory.
/// @param flags  the host's; 0 here
/// @param error  receives the reason of a failure if not null
/// @return a handle for `UnloadLib`, or null
CORVEX_HOST_API Library* LoadLib(const char* name, int flags, CxStringT<char>* error);
/// Address of a function, or null if the library does not have it.
CORVEX_HOST_API void* GetFuncAddress(Library* library, const char* name);
/// Unloads a library; null is fine.
CORVEX_HOST_API void UnloadLib(Library* library);

/// Whether the path names a file that exists (a directory does not count).
CORVEX_HOST_API bool FileExists(const char* path);

struct Event;
/// Makes an event. A manual-reset event stays set until the host resets it; the other kind is reset by the
/// one wait that it ends.
CORVEX_HOST_API Event* NewEvent(bool manualReset, bool initiallySet);
CORVEX_HOST_API void SetEvent(Event* event);
/// Waits until the event is set.
/// @param milliseconds  time limit; -1 means none
/// @return true if the event was set, false if the time ran out
CORVEX_HOST_API bool WaitEvent(Event* event, int milliseconds);
CORVEX_HOST_API void DeleteEvent(Event* event);

} // namespace Platform

/// Value of an environment variable, read when the object is made.
class EnvString {
public:
    /// @param defaultValue  value if the variable is not set; may be null
    /// @param flag          the host's; always true here
    CORVEX_HOST_API EnvString(const char* name, const char* defaultValue, bool flag);
    /// The value, or null if the variable is not set and there is no default.
    operator const char*() const { return present_ ? value_.c_str() : nullptr; }

private:
    CxStringT<char> value_;
    bool present_;
};

/// Replaces a path map at the start of `path` (such as "Corvex:/ffmpeg") by its real path, in place.
/// @return true if a map applied; an unknown map leaves the path as it is
CORVEX_HOST_API bool MapPath(CxStringT<char>& path);
/// Defines or, with a null path, removes the map `name` ("Corvex:"). Names are compared without case.
CORVEX_HOST_API void SetPathMap(const char* name, const char* path);
/// Directory part of a path, with its last separator; empty if the path has none.
CORVEX_HOST_API CxStringT<char> GetPathFromFileName(const char* path);
