#pragma once

#include "host/CxString.h"
#include "host/Export.h"

#include <cstdint>

/// Memory, shared libraries, files and events of the operating system, behind the host's names. In paths,
/// here and in the functions at the end of this file, '/' is the one separator; a backslash is a character
/// like any other.
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
/// path keeps its directory. Every other name is taken as it is. A name without a directory is looked for as
/// the system's loader does, in the host's own directory too.
/// @param flags  the host's; 0 here
/// @param error  receives the reason of a failure if not null
/// @return a handle for `UnloadLib`, or null
CORVEX_HOST_API Library* LoadLib(const char* name, int flags, CxStringT<char>* error);
/// Address of a function, or null if the library does not have it.
CORVEX_HOST_API void* GetFuncAddress(Library* library, const char* name);
/// Unloads a library; null is fine.
CORVEX_HOST_API void UnloadLib(Library* library);

/// Whether the path names a file that exists (a directory does not count). The path is taken as it is given:
/// no library name is put into the platform's form and no path map applies.
CORVEX_HOST_API bool FileExists(const char* path);

struct Event;
/// Makes an event. A manual-reset event stays set once it was set; the other kind is reset by the one wait
/// that it ends. `SetEvent` and `WaitEvent` may be called from any thread; a waiter that was woken may delete
/// the event at once.
CORVEX_HOST_API Event* NewEvent(bool manualReset, bool initiallySet);
CORVEX_HOST_API void SetEvent(Event* event);
/// Waits until the event is set.
/// @param milliseconds  time limit; 0 only asks, a negative value (-1) means no limit
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

/// Replaces a path map at the start of `path` (such as "Corvex:/ffmpeg") by its real path, in place and once.
/// Of several maps that fit the longest name applies. The real path and what follows the map's name are
/// joined with exactly one '/'; where either is empty the other stays as it is. Any thread.
/// @return true if a map applied; an unknown map leaves the path as it is
CORVEX_HOST_API bool MapPath(CxStringT<char>& path);
/// Defines, replaces or, with a null path, removes the map `name` ("Corvex:", "Corvex:/ffmpeg"). Names are
/// compared without case. There are none at first. Any thread.
CORVEX_HOST_API void SetPathMap(const char* name, const char* path);
/// Directory part of a path, with its last separator; empty if the path has none.
CORVEX_HOST_API CxStringT<char> GetPathFromFileName(const char* path);
