#include "FFmpegDiagnosis.h"

#include "QuietStream.h"
#include "ffmpeg/FFmpegBinding.h"

std::string WhyFFmpegIsMissing() {
    const QuietStream quietOutput(stdout);
    const QuietStream quietError(stderr);
    std::string reason;
    FFmpegBinding().BindFFmpegFunctions(FindFFmpegDirectory(), &reason);
    return reason;
}
