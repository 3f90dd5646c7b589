#pragma once

#include <string>
#include <vector>

/// A movie of 1920x1080 with camera-like pictures, as the ffmpeg program writes it.
struct BenchMovie {
    const char* name;
    const char* file;      ///< name of the file, whose extension is that of the container
    const char* arguments; ///< of the ffmpeg program: encoder and options
};

inline constexpr BenchMovie benchMovies[] = {
    {"h264", "h264.mp4", "-c:v libx264 -preset fast -crf 18 -bf 3 -pix_fmt yuv420p"},
    {"hevc", "hevc.mp4",
     "-c:v libx265 -preset fast -crf 20 -tag:v hvc1 -x265-params log-level=error -pix_fmt yuv420p"},
    {"prores", "prores.mov", "-c:v prores_ks -profile:v 3 -pix_fmt yuv422p10le"},
    {"dnxhr", "dnxhr.mov", "-c:v dnxhd -profile:v dnxhr_hq -pix_fmt yuv422p"},
    {"mpeg2", "mpeg2.mov", "-c:v mpeg2video -b:v 50M -bf 2 -g 15 -pix_fmt yuv420p"},
};

/// Frames of each movie.
inline constexpr int benchMovieFrames = 48;

/// Path of the file, which is made with all others on the first call and kept in the system's directory for
/// temporary files. Ends the process if ffmpeg fails.
std::string PathOf(const BenchMovie& movie);
