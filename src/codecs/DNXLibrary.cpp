#include "codecs/DNXLibrary.h"

#include "host/Platform.h"

#include <memory>

namespace {

/// The back-end asks for it while the module loads and again after the module's objects are gone.
constinit DNXFunctions processFunctions;

struct LibraryUnloader {
    void operator()(Platform::Library* library) const { Platform::UnloadLib(library); }
};
using LibraryPointer = std::unique_ptr<Platform::Library, LibraryUnloader>;

/// Finds one function, and stores it under its pointer's own type.
template <typename Function>
bool Find(Platform::Library* library, const char* name, Function*& pointer, std::string* failure) {
    pointer = reinterpret_cast<Function*>(Platform::GetFuncAddress(library, name));
    if (pointer == nullptr && failure != nullptr)
        *failure = std::string(dnxLibraryName) + " has no function " + name;
    return pointer != nullptr;
}

/// Finds the functions in their order, until one is missing.
bool FindAll(Platform::Library* library, DNXFunctions& functions, std::string* failure) {
#define AND_FOUND(name) &&Find(library, "DNX_" #name, functions.name, failure)
    return true CORVEX_DNX_FUNCTIONS(AND_FOUND);
#undef AND_FOUND
}

} // namespace

bool BindDNXFunctions(DNXFunctions& functions, std::string* failure) {
    CxString error;
    LibraryPointer library(Platform::LoadLib(dnxLibraryName, 0, &error));
    if (!library) {
        if (failure != nullptr) *failure = error.c_str();
        return false;
    }
    if (!FindAll(library.get(), functions, failure)) return false;
    // It stays loaded from here on.
    static_cast<void>(library.release());
    return true;
}

bool LoadDNX() {
    static const bool bound = BindDNXFunctions(processFunctions);
    return bound;
}

const DNXFunctions& DNX() { return processFunctions; }
