// Takes the place of one FFmpeg library: it has all functions that the binding's table gives that library.
// None is called but `avcodec_version`, so each of them answers what that one is to answer: the number in the
// environment variable CORVEX_STANDIN_VERSION, or the version of the headers.

#include "ffmpeg/FFmpegFunctionTable.h"

#include <libavutil/version.h>

#include <cstdlib>

#ifndef FUNCTIONS_OF_avutil
#define FUNCTIONS_OF_avutil(code)
#endif
#ifndef FUNCTIONS_OF_swscale
#define FUNCTIONS_OF_swscale(code)
#endif
#ifndef FUNCTIONS_OF_swresample
#define FUNCTIONS_OF_swresample(code)
#endif
#ifndef FUNCTIONS_OF_avcodec
#define FUNCTIONS_OF_avcodec(code)
#endif
#ifndef FUNCTIONS_OF_avformat
#define FUNCTIONS_OF_avformat(code)
#endif

namespace {

unsigned Version() {
    const char* const told = std::getenv("CORVEX_STANDIN_VERSION");
    return told != nullptr ? static_cast<unsigned>(std::strtoul(told, nullptr, 0)) : LIBAVCODEC_VERSION_INT;
}

} // namespace

#define DEFINE_FUNCTION(library, name, first, last)                                                          \
    FUNCTIONS_OF_##library(CORVEX_FFMPEG_IN(first, last, DEFINE_NAMED(name)))
#define DEFINE_NAMED(name)                                                                                   \
    __attribute__((visibility("default"))) unsigned name() { return Version(); }

extern "C" {
CORVEX_FFMPEG_FUNCTIONS(DEFINE_FUNCTION)
}
