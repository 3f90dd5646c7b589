#pragma once

#include <array>
#include <string>

/// The five libraries, in the order in which they are loaded: each needs only those before it.
enum class FFmpegLibrary { avutil, swscale, swresample, avcodec, avformat };

inline constexpr std::array allFFmpegLibraries = {FFmpegLibrary::avutil, FFmpegLibrary::swscale,
                                                  FFmpegLibrary::swresample, FFmpegLibrary::avcodec,
                                                  FFmpegLibrary::avformat};

/// Where FFmpeg may lie, the first place first. Path maps of the host apply to all of them.
#ifdef _WIN32
inline constexpr std::array FFmpegSearchDirectories = {"FFmpeg:", "Corvex:/ffmpeg", "CorvexLibs:/ffmpeg",
                                                       "C:\\ffmpeg", "C:\\Program Files\\ffmpeg"};
#else
inline constexpr std::array FFmpegSearchDirectories = {"FFmpeg:", "Corvex:/ffmpeg", "CorvexLibs:/ffmpeg",
                                                       "/opt/ffmpeg", "/usr/local/ffmpeg"};
#endif

/// Longest path in bytes; what is longer is cut there. Kept from the buffers of 1040 bytes that such paths go
/// through elsewhere in the host.
inline constexpr size_t longestFFmpegPath = 1039;

/// Name of the file that has the library of exactly the major whose headers the module was built with
/// ("libavcodec.so.59"): the layout of FFmpeg's records belongs to a major.
const char* FFmpegFileName(FFmpegLibrary library);

/// The directory to load FFmpeg from, ending in a separator, or an empty string if there is none.
///
/// The value of the environment variable CORVEX_FFMPEG_DIR is taken as it stands, whatever lies there.
/// Without one (or with an empty one) it is the place of the first libavcodec in a root of
/// `FFmpegSearchDirectories`: in its "bin", then in its "lib", then in the root itself. The other libraries
/// are expected beside it. Any thread; throws std::bad_alloc.
std::string FindFFmpegDirectory();

/// Path of a library in a directory of `FindFFmpegDirectory`; the bare file name, which the system's loader
/// looks for in places of its own, if that is empty.
std::string FFmpegLibraryPath(const std::string& directory, FFmpegLibrary library);
