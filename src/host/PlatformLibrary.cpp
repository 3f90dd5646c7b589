#include "host/Platform.h"

#include <dlfcn.h>
#include <string>
#include <strings.h>

namespace Platform {

namespace {

/// "dir/NAME.dll" as "dir/libNAME.so"; every other name as it is.
std::string PlatformLibraryName(const std::string& name) {
    constexpr size_t suffixLength = 4;
    if (name.size() <= suffixLength) return name;
    const size_t stemEnd = name.size() - suffixLength;
    if (strcasecmp(name.c_str() + stemEnd, ".dll") != 0) return name;
    const size_t stemStart = name.rfind('/') + 1; // 0 without a directory
    return name.substr(0, stemStart) + "lib" + name.substr(stemStart, stemEnd - stemStart) + ".so";
}

} // namespace

Library* LoadLib(const char* name, int, CxStringT<char>* error) {
    // An empty name would be the running program itself.
    if (name == nullptr || *name == '\0') {
        if (error != nullptr) *error = "no library name";
        return nullptr;
    }
    void* const handle = dlopen(PlatformLibraryName(name).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr && error != nullptr) *error = dlerror();
    return static_cast<Library*>(handle);
}

void* GetFuncAddress(Library* library, const char* name) {
    return library != nullptr && name != nullptr ? dlsym(library, name) : nullptr;
}

void UnloadLib(Library* library) {
    if (library != nullptr) dlclose(library);
}

} // namespace Platform
