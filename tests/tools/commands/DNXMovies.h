#pragma once

#include "ToolRun.h"

#include <string>
#include <vector>

/// One compression of DNx as the command and ffmpeg know it.
struct DNXRow {
    const char* name;    ///< of the test
    const char* codec;   ///< display name of the registry's encoder
    const char* tag;     ///< of tracks
    const char* profile; ///< as ffprobe writes it
    const char* size;    ///< of the test's pictures
    const char* options; ///< with which ffmpeg's encoder makes it
    const char* planes;  ///< ffmpeg's pixel format of its frames
    bool isInterlaced;
};

inline void PrintTo(const DNXRow& row, std::ostream* out) { *out << row.name; }

inline bool IsRgb(const std::string& planes) { return planes.starts_with("gbrp"); }

// ffmpeg knows a compression of DNxHD by its bit rate, and one of DNxHR by its profile.
inline constexpr DNXRow dnxRows[] = {
    {"Sq720p", "DNxHD SQ 720p 8bit", "AVdn", "DNXHD", "1280x720", "-b:v 60M", "yuv422p", false},
    {"Hq720p", "DNxHD HQ 720p 8bit", "AVdn", "DNXHD", "1280x720", "-b:v 90M", "yuv422p", false},
    {"Hqx720p", "DNxHD HQX 720p 10bit", "AVdn", "DNXHD", "1280x720", "-b:v 90M", "yuv422p10le", false},
    {"Lb1080p", "DNxHD LB 1080p 8bit", "AVdn", "DNXHD", "1920x1080", "-b:v 36M", "yuv422p", false},
    {"Sq1080p", "DNxHD SQ 1080p 8bit", "AVdn", "DNXHD", "1920x1080", "-b:v 115M", "yuv422p", false},
    {"Hq1080p", "DNxHD HQ 1080p 8bit", "AVdn", "DNXHD", "1920x1080", "-b:v 175M", "yuv422p", false},
    {"Hqx1080p", "DNxHD HQX 1080p 10bit", "AVdn", "DNXHD", "1920x1080", "-b:v 175M", "yuv422p10le", false},
    {"Sq1080i", "DNxHD SQ 1080i 8bit", "AVdn", "DNXHD", "1920x1080", "-b:v 120M -flags +ildct", "yuv422p",
     true},
    {"Hq1080i", "DNxHD HQ 1080i 8bit", "AVdn", "DNXHD", "1920x1080", "-b:v 185M -flags +ildct", "yuv422p",
     true},
    {"Hqx1080i", "DNxHD HQX 1080i 10bit", "AVdn", "DNXHD", "1920x1080", "-b:v 185M -flags +ildct",
     "yuv422p10le", true},
    {"HrLb", "DNxHR LB 8bit", "AVdh", "DNXHR LB", "322x182", "-profile:v dnxhr_lb", "yuv422p", false},
    {"HrSq", "DNxHR SQ 8bit", "AVdh", "DNXHR SQ", "322x182", "-profile:v dnxhr_sq", "yuv422p", false},
    {"HrHq", "DNxHR HQ 8bit", "AVdh", "DNXHR HQ", "322x182", "-profile:v dnxhr_hq", "yuv422p", false},
    {"HrHqx", "DNxHR HQX 12bit", "AVdh", "DNXHR HQX", "322x182", "-profile:v dnxhr_hqx", "yuv422p10le",
     false},
    {"Hr444", "DNxHR 444 12bit", "AVdh", "DNXHR 444", "322x182", "-profile:v dnxhr_444", "gbrp10le", false},
};

/// The part of an ffmpeg line that makes pictures: smooth colours with a little noise, RGB of 16 bits.
std::string DNXPictures(const DNXRow& row);

/// Colours of pictures, R, G and B of each pixel: 0 is black and 1 is white.
using Colors = std::vector<float>;

/// The pictures of a file as ffmpeg reads RGB. `input` may have options before the file.
Colors ReadColors(const Workspace& workspace, const std::string& input);

/// The pictures of a movie as ffmpeg decodes it to `planes`, and a model in double precision converts these
/// by BT.709 in video range. A chroma sample stands on the left of its two pixels; the right one has the mean
/// of its neighbours.
Colors PeerColors(const Workspace& workspace, const DNXRow& row, const std::string& planes,
                  const std::string& movie);

/// The pictures of a movie as the command decodes it by the back-end of the registry.
Colors OwnColors(const Workspace& workspace, const std::string& movie);

/// Peak signal to noise ratio in dB; 0 for pictures of different sizes.
double PsnrOf(const Colors& a, const Colors& b);
