#include "DNXDiagnosis.h"

#include "codecs/DNXLibrary.h"

std::string WhyDNXIsMissing() {
    DNXFunctions functions;
    std::string reason;
    if (BindDNXFunctions(functions, &reason)) return std::string(dnxLibraryName) + " does not start";
    return reason;
}
