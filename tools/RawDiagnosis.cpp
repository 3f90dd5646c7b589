#include "RawDiagnosis.h"

#include "cameraraw/RawLibrary.h"

std::string WhyRawSdkIsMissing() {
    std::string reason;
    RawFactoryFunction* const function = FindRawFactoryFunction(&reason);
    if (function == nullptr) return reason;
    const RawPointer<RawFactory> factory(function());
    return factory ? "" : std::string(rawLibraryName) + " does not start";
}
