#include "ffmpeg/FFmpegLibraries.h"

namespace {

/// Why a library is missing: it isn't there, or the system's loader has a reason of its own.
std::string Reason(const std::string& directory, FFmpegLibrary library, const CxString& loaderError) {
    const std::string path = FFmpegLibraryPath(directory, library);
    if (directory.empty() || Platform::FileExists(path.c_str())) return loaderError.c_str();
    return std::string(FFmpegFileName(library)) + " not found in " + directory;
}

} // namespace

void FFmpegLibraries::LoadOne(const std::string& directory, FFmpegLibrary library, std::string* failure) {
    if (Handle(library) != nullptr) return;
    const std::string path = FFmpegLibraryPath(directory, library);
    CxString error;
    Handle(library) = Platform::LoadLib(path.c_str(), 0, failure != nullptr ? &error : nullptr);
    const bool missing = Handle(library) == nullptr && failure != nullptr;
    // Without libavcodec, by which the directory was chosen, nothing else matters.
    if (missing && (failure->empty() || library == FFmpegLibrary::avcodec))
        *failure = Reason(directory, library, error);
}

bool FFmpegLibraries::Load(const std::string& directory, std::string* failure) {
    if (failure != nullptr) failure->clear();
    for (const FFmpegLibrary library : allFFmpegLibraries)
        LoadOne(directory, library, failure);
    return Handle(FFmpegLibrary::avformat) != nullptr && Handle(FFmpegLibrary::avcodec) != nullptr &&
           Handle(FFmpegLibrary::avutil) != nullptr && Handle(FFmpegLibrary::swscale) != nullptr;
}

void* FFmpegLibraries::Find(FFmpegLibrary library, const char* name) const {
    return Platform::GetFuncAddress(handles[static_cast<size_t>(library)], name);
}

void FFmpegLibraries::Unload() {
    for (const FFmpegLibrary library : allFFmpegLibraries) {
        Platform::UnloadLib(Handle(library));
        Handle(library) = nullptr;
    }
}
