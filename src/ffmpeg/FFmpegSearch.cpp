#include "ffmpeg/FFmpegSearch.h"

#include "host/Platform.h"

#include <libavcodec/version.h>
#include <libavformat/version.h>
#include <libavutil/version.h>
#include <libswresample/version.h>
#include <libswscale/version.h>

#define TEXT_OF(value) #value
#ifdef _WIN32
#define SEPARATOR "\\"
#define LIBRARY_FILE(name, major) name "-" TEXT_OF(major) ".dll"
#else
#define SEPARATOR "/"
#define LIBRARY_FILE(name, major) "lib" name ".so." TEXT_OF(major)
#endif

namespace {

/// Places in a root that may hold the libraries, the first first.
constexpr std::array subfolders = {"bin" SEPARATOR, "lib" SEPARATOR, ""};

std::string Limited(const std::string& path) { return path.substr(0, longestFFmpegPath); }

/// An empty path gets a separator too, and is the root of the file system then.
CxString WithSeparator(CxString path) {
    if (path.Right(1) != SEPARATOR) path += SEPARATOR;
    return path;
}

/// The libavcodec of a root, or an empty string.
std::string FindInRoot(const char* directory) {
    CxString root(directory);
    MapPath(root);
    const std::string base = WithSeparator(root).c_str();
    for (const char* const subfolder : subfolders) {
        const std::string file = base + subfolder + FFmpegFileName(FFmpegLibrary::avcodec);
        if (Platform::FileExists(file.c_str())) return file;
    }
    return {};
}

/// Directory of the first libavcodec in the search directories, or an empty string.
std::string FindInSearchDirectories() {
    for (const char* const directory : FFmpegSearchDirectories) {
        const std::string file = FindInRoot(directory);
        if (!file.empty()) return GetPathFromFileName(file.c_str()).c_str();
    }
    return {};
}

} // namespace

const char* FFmpegFileName(FFmpegLibrary library) {
    switch (library) {
    case FFmpegLibrary::avutil: return LIBRARY_FILE("avutil", LIBAVUTIL_VERSION_MAJOR);
    case FFmpegLibrary::swscale: return LIBRARY_FILE("swscale", LIBSWSCALE_VERSION_MAJOR);
    case FFmpegLibrary::swresample: return LIBRARY_FILE("swresample", LIBSWRESAMPLE_VERSION_MAJOR);
    case FFmpegLibrary::avcodec: return LIBRARY_FILE("avcodec", LIBAVCODEC_VERSION_MAJOR);
    case FFmpegLibrary::avformat: return LIBRARY_FILE("avformat", LIBAVFORMAT_VERSION_MAJOR);
    }
    return "";
}

std::string FindFFmpegDirectory() {
    const EnvString variable("CORVEX_FFMPEG_DIR", nullptr, true);
    std::string directory = Limited(CxString(variable).c_str());
    if (directory.empty()) directory = Limited(FindInSearchDirectories());
    // The separator has its place within the limit.
    if (directory.size() == longestFFmpegPath && directory.back() != SEPARATOR[0]) directory.pop_back();
    return directory.empty() ? directory : std::string(WithSeparator(directory.c_str()));
}

std::string FFmpegLibraryPath(const std::string& directory, FFmpegLibrary library) {
    return Limited(directory + FFmpegFileName(library));
}
