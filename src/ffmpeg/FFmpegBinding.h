#pragma once

#include "ffmpeg/FFmpegFunctions.h"
#include "ffmpeg/FFmpegLibraries.h"

/// Finds FFmpeg and binds its functions on the first call, and gives the outcome of that from then on: a
/// failure is final for the process, and nothing unloads FFmpeg once it is bound. Accepted is libavcodec of
/// major 58 or higher. Says the version on standard output, or on standard error if it is refused; libraries
/// or functions that are missing pass without a word.
///
/// Any thread; callers that come while the first is at work wait for its outcome. Throws std::bad_alloc if
/// memory is short, and then the next call is the first again.
bool LoadFFmpeg();

/// FFmpeg's functions, to be called once `LoadFFmpeg` has returned true, from any thread:
///
///     AVFrame* frame = FFmpeg().av_frame_alloc();
///
/// Types and constants come from FFmpeg's own headers, which this header brings along. A function that the
/// table of FFmpegFunctionTable.h lacks is a row to add there.
const FFmpegFunctions& FFmpeg();

/// One attempt to bind FFmpeg. The process has one of these, behind `LoadFFmpeg`.
class FFmpegBinding {
public:
    /// Loads the libraries of a directory of `FindFFmpegDirectory`, finds every function of the table and
    /// tests the version. If it fails, no function may be called; the libraries are unloaded then, unless one
    /// other than swresample is missing: those that were found stay loaded in that case. Throws
    /// std::bad_alloc, and may be run again then.
    /// @param failure  receives the library or function that is missing, or the version that is too low, in
    ///                 words and empty after a success, if not null
    bool BindFFmpegFunctions(const std::string& directory, std::string* failure = nullptr);
    const FFmpegFunctions& Functions() const { return functions; }

private:
    /// Finds the functions in the order of the table, until one is missing, which is told unless `failure`
    /// has a reason already.
    bool FindFunctions(std::string* failure);

    FFmpegLibraries libraries;
    FFmpegFunctions functions;
};
