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

/// Where this library lies, with a '/' at the end; empty if that can't be told.
std::string OwnDirectory() {
    Dl_info info = {};
    if (dladdr(reinterpret_cast<const void*>(&LoadLib), &info) == 0 || info.dli_fname == nullptr) return {};
    const std::string path = info.dli_fname;
    return path.substr(0, path.rfind('/') + 1);
}

void* Load(const std::string& name) { return dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL); }

} // namespace

Library* LoadLib(const char* name, int, CxStringT<char>* error) {
    // An empty name would be the running program itself.
    if (name == nullptr || *name == '\0') {
        if (error != nullptr) *error = "no library name";
        return nullptr;
    }
    const std::string file = PlatformLibraryName(name);
    void* handle = Load(file);
    if (handle == nullptr) {
        const std::string reason = dlerror();
        // The system's loader looks here by itself, unless a tool stands between it and this library. A file
        // that it found and that is no library stays a failure.
        const bool isNowhere = reason.find("No such file") != std::string::npos;
        if (isNowhere && file.find('/') == std::string::npos) handle = Load(OwnDirectory() + file);
        if (handle == nullptr && error != nullptr) *error = reason.c_str();
    }
    return static_cast<Library*>(handle);
}

void* GetFuncAddress(Library* library, const char* name) {
    return library != nullptr && name != nullptr ? dlsym(library, name) : nullptr;
}

void UnloadLib(Library* library) {
    if (library != nullptr) dlclose(library);
}

} // namespace Platform
