#include "MediaFoundationDiagnosis.h"

#include "codecs/WMFLibrary.h"

std::string WhyMediaFoundationIsMissing() {
    CxWMF::MediaFoundationFunctions functions;
    std::string reason;
    if (CxWMF::BindMediaFoundation(functions, &reason))
        return std::string(mediaFoundationLibraryName) + " does not start";
    return reason;
}
