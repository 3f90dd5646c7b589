#include "cameraraw/RawLibrary.h"

#include "cameraraw/RawResult.h"
#include "host/Platform.h"

RawFactoryFunction* FindRawFactoryFunction(std::string* failure) {
    CxString error;
    Platform::Library* const library =
        Platform::LoadLib(rawLibraryName, 0, failure != nullptr ? &error : nullptr);
    if (library == nullptr) {
        if (failure != nullptr) *failure = error.c_str();
        return nullptr;
    }
    auto* const function =
        reinterpret_cast<RawFactoryFunction*>(Platform::GetFuncAddress(library, rawFactoryFunctionName));
    if (function == nullptr && failure != nullptr)
        *failure = std::string(rawLibraryName) + " has no function " + rawFactoryFunctionName;
    return function;
}

RawFactoryFunction* LoadRawFactoryFunction() {
    static RawFactoryFunction* const function = FindRawFactoryFunction();
    return function;
}

RawPointer<RawFactory> CreateRawFactory() {
    RawFactoryFunction* const function = LoadRawFactoryFunction();
    RawPointer<RawFactory> factory(function != nullptr ? function() : nullptr);
    IsRawThere(factory);
    return factory;
}
