#include "codecs/WMFLibrary.h"

#include "host/Platform.h"

#include <memory>

namespace CxWMF {

namespace {

/// The back-end asks for it while the module loads, and codecs until they are gone.
constinit MediaFoundationFunctions processFunctions;

struct LibraryUnloader {
    void operator()(Platform::Library* library) const { Platform::UnloadLib(library); }
};
using LibraryPointer = std::unique_ptr<Platform::Library, LibraryUnloader>;

/// A library that is being bound.
class BoundLibrary {
public:
    BoundLibrary(const char* libraryName, std::string* reason) : name(libraryName), failure(reason) {
        CxString error;
        library.reset(Platform::LoadLib(name, 0, &error));
        if (!library && failure != nullptr) *failure = error.c_str();
    }
    explicit operator bool() const { return library != nullptr; }

    /// Finds one function, and stores it under its pointer's own type.
    template <typename Function>
    bool Find(const char* function, Function*& pointer) const {
        pointer = reinterpret_cast<Function*>(Platform::GetFuncAddress(library.get(), function));
        if (pointer == nullptr && failure != nullptr)
            *failure = std::string(name) + " has no function " + function;
        return pointer != nullptr;
    }
    /// Leaves it loaded.
    void Keep() { static_cast<void>(library.release()); }

private:
    const char* name;
    std::string* failure; ///< may be null
    LibraryPointer library;
};

} // namespace

bool BindMediaFoundation(MediaFoundationFunctions& functions, std::string* failure) {
    BoundLibrary media(mediaFoundationLibraryName, failure);
    if (!media) return false;
    if (!media.Find("MFTEnumEx", functions.MFTEnumEx) ||
        !media.Find("MFCreateMemoryBuffer", functions.MFCreateMemoryBuffer) ||
        !media.Find("MFCreateSample", functions.MFCreateSample))
        return false;
    BoundLibrary com(comLibraryName, failure);
    if (!com) return false;
    if (!com.Find("CoInitializeEx", functions.CoInitializeEx) ||
        !com.Find("CoUninitialize", functions.CoUninitialize) ||
        !com.Find("CoTaskMemFree", functions.CoTaskMemFree))
        return false;
    media.Keep();
    com.Keep();
    return true;
}

bool LoadMediaFoundation() {
    static const bool bound = BindMediaFoundation(processFunctions);
    return bound;
}

const MediaFoundationFunctions& MediaFoundation() { return processFunctions; }

} // namespace CxWMF
