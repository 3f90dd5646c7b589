#pragma once

#include "ffmpeg/FFmpegSearch.h"
#include "support/LibraryFile.h"
#include "tools/Workspace.h"

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <optional>
#include <string>

/// Sets or, with null, removes an environment variable until the end of its life.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const char* value) : name_(name) {
        if (const char* const before = std::getenv(name)) before_ = before;
        Set(value);
    }
    ~EnvironmentVariable() { Set(before_ ? before_->c_str() : nullptr); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    void Set(const char* value) const { value != nullptr ? setenv(name_, value, 1) : unsetenv(name_); }

    const char* name_;
    std::optional<std::string> before_;
};

/// Makes the libavcodec of every stand-in report a version until the end of its life.
class ReportedVersion {
public:
    explicit ReportedVersion(unsigned version)
        : variable_("CORVEX_STANDIN_VERSION", std::to_string(version).c_str()) {}
    ReportedVersion(unsigned major, unsigned minor, unsigned micro)
        : ReportedVersion(major << 16 | minor << 8 | micro) {}

private:
    EnvironmentVariable variable_;
};

/// A directory of its own with five libraries that take FFmpeg's place, under FFmpeg's names.
class StandIns {
public:
    StandIns() {
        for (const FFmpegLibrary library : allFFmpegLibraries)
            std::filesystem::copy_file(Original(library), Path(library));
    }

    /// Ends in a separator.
    std::string Directory() const { return workspace_.Path(""); }
    std::string Path(FFmpegLibrary library) const { return workspace_.Path(FFmpegFileName(library)); }
    void Remove(FFmpegLibrary library) const { std::filesystem::remove(Path(library)); }

    /// Takes a function from a library. False if it has none.
    bool RemoveFunction(FFmpegLibrary library, const std::string& function) const {
        std::string file = workspace_.Read(FFmpegFileName(library));
        const bool removed = RemoveFunctionName(file, function);
        workspace_.Write(FFmpegFileName(library), file);
        return removed;
    }

    /// Whether the process has the library loaded.
    bool IsLoaded(FFmpegLibrary library) const {
        void* const handle = dlopen(Path(library).c_str(), RTLD_LAZY | RTLD_NOLOAD);
        if (handle != nullptr) dlclose(handle);
        return handle != nullptr;
    }
    int LoadedCount() const {
        int count = 0;
        for (const FFmpegLibrary library : allFFmpegLibraries)
            count += IsLoaded(library);
        return count;
    }

private:
    /// The stand-in is named after the library: "libffmpeg_standin_avutil.so".
    static std::string Original(FFmpegLibrary library) {
        const std::string file = FFmpegFileName(library);
        const std::string name = file.substr(3, file.find(".so") - 3);
        return CORVEX_STANDIN_DIR "/libffmpeg_standin_" + name + ".so";
    }

    Workspace workspace_;
};
