#include "ffmpeg/FFmpegLibraries.h"

bool FFmpegLibraries::Load(const std::string& directory) {
    for (const FFmpegLibrary library : allFFmpegLibraries) {
        const std::string path = FFmpegLibraryPath(directory, library);
        if (Handle(library) == nullptr) Handle(library) = Platform::LoadLib(path.c_str(), 0, nullptr);
    }
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
