#pragma once

#include "ffmpeg/FFmpegSearch.h"
#include "host/Platform.h"

/// Handles of the five libraries. They stay loaded when the object ends: only `Unload` gives them back.
class FFmpegLibraries {
public:
    /// Loads each library that is not loaded, whatever became of the others, from `directory`, which is one
    /// of `FindFFmpegDirectory`. Throws std::bad_alloc, and keeps what it loaded for the next call then.
    /// @param failure  receives why a library is missing, of libavcodec if that one is, and is empty if all
    ///                 are there; may be null
    /// @return whether there are avformat, avcodec, avutil and swscale. A missing swresample shows when a
    ///         function of it is looked for
    bool Load(const std::string& directory, std::string* failure = nullptr);
    /// A function of a library; null if either is not there.
    void* Find(FFmpegLibrary library, const char* name) const;
    /// Unloads every library that is loaded.
    void Unload();

private:
    void LoadOne(const std::string& directory, FFmpegLibrary library, std::string* failure);
    Platform::Library*& Handle(FFmpegLibrary library) { return handles[static_cast<size_t>(library)]; }

    std::array<Platform::Library*, allFFmpegLibraries.size()> handles = {}; ///< null: not loaded
};
