// Shared libraries on Windows, in place of the file of the same name one folder up.

#include "host/Platform.h"

#include <string>
#include <windows.h>

namespace Platform {

// The loader looks beside the program, in the system's directories and on the path.
Library* LoadLib(const char* name, int, CxStringT<char>* error) {
    // An empty name would be the running program itself.
    const bool isNamed = name != nullptr && *name != '\0';
    const HMODULE module = isNamed ? LoadLibraryA(name) : nullptr;
    if (module == nullptr && error != nullptr) {
        const std::string reason =
            isNamed ? std::string(name) + ": error " + std::to_string(GetLastError()) : "no library name";
        *error = reason.c_str();
    }
    return reinterpret_cast<Library*>(module);
}

void* GetFuncAddress(Library* library, const char* name) {
    if (library == nullptr || name == nullptr) return nullptr;
    return reinterpret_cast<void*>(GetProcAddress(reinterpret_cast<HMODULE>(library), name));
}

void UnloadLib(Library* library) {
    if (library != nullptr) FreeLibrary(reinterpret_cast<HMODULE>(library));
}

} // namespace Platform
