#include "ffmpeg/FFmpegBinding.h"

#include <cstdint>
#include <cstdio>

namespace {

constexpr int lowestMajor = 58;

/// Back-ends ask for FFmpeg while the module loads, before objects that need a constructor would be there.
constinit FFmpegBinding processBinding;

/// Tests the version of libavcodec, and says it.
bool AcceptVersion(unsigned version, std::string* failure) {
    const auto number = static_cast<int32_t>(version);
    const int major = number >> 16;
    const int minor = (number >> 8) & 0xff;
    const int micro = number & 0xff;
    if (major < lowestMajor) {
        std::fprintf(stderr, "Ignoring unsupported FFmpeg AVCodec Ver: %d.%d.%d\n", major, minor, micro);
        if (failure != nullptr)
            *failure = "libavcodec " + std::to_string(major) + " is too old: " + std::to_string(lowestMajor) +
                       " and higher are bound";
        return false;
    }
    std::printf("FFmpeg AVCodec Ver: %d.%d.%d\n", major, minor, micro);
    return true;
}

/// Stores a function under its pointer's own type; false if there is none.
template <typename Function>
bool Store(void* address, Function*& pointer) {
    pointer = reinterpret_cast<Function*>(address);
    return pointer != nullptr;
}

/// Tells of a function that is missing, unless there is a reason for that already.
bool Lacks(FFmpegLibrary library, const char* name, std::string* failure) {
    if (failure != nullptr && failure->empty())
        *failure = std::string(FFmpegFileName(library)) + " has no function " + name;
    return false;
}

} // namespace

bool FFmpegBinding::FindFunctions(std::string* failure) {
#define AND_STORED(library, name, first, last)                                                               \
    CORVEX_FFMPEG_IN(first, last,                                                                            \
                     &&(Store(libraries.Find(FFmpegLibrary::library, #name), functions.name) ||              \
                        Lacks(FFmpegLibrary::library, #name, failure)))
    return true CORVEX_FFMPEG_FUNCTIONS(AND_STORED);
#undef AND_STORED
}

bool FFmpegBinding::BindFFmpegFunctions(const std::string& directory, std::string* failure) {
    if (!libraries.Load(directory, failure)) return false;
    if (!FindFunctions(failure) || !AcceptVersion(functions.avcodec_version(), failure)) {
        libraries.Unload();
        return false;
    }
#if LIBAVCODEC_VERSION_MAJOR < 59
    functions.av_register_all();
    functions.avcodec_register_all();
#endif
    return true;
}

bool LoadFFmpeg() {
    // The language's own guard: one caller works while the others wait, and an exception leaves it untried.
    static const bool bound = processBinding.BindFFmpegFunctions(FindFFmpegDirectory());
    return bound;
}

const FFmpegFunctions& FFmpeg() { return processBinding.Functions(); }
