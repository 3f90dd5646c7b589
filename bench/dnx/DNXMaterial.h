#pragma once

#include "framework/CxAVTypes.h"
#include "host/Image.h"

#include <cstdint>
#include <memory>
#include <vector>

/// A compression whose speed is measured, at 1920x1080.
struct BenchCompression {
    const char* name;    ///< of the benchmark
    const char* encoder; ///< display name of the registry's encoder
    uint32_t id;
    uint32_t fourCC;  ///< of tracks
    uint32_t packing; ///< in which the library of DNx takes and gives pictures
};

/// One for each packing, depth and colour that frames have.
inline constexpr BenchCompression benchCompressions[] = {
    {"hq_8", "DNxHD HQ 1080p 8bit", 1238, FourCC("AVdn"), FourCC("2vuy")},
    {"hq_8_fields", "DNxHD HQ 1080i 8bit", 1243, FourCC("AVdn"), FourCC("2vuy")},
    {"hqx_10", "DNxHD HQX 1080p 10bit", 1235, FourCC("AVdn"), FourCC("a48r")},
    {"hr_hq_8", "DNxHR HQ 8bit", 1272, FourCC("AVdh"), FourCC("v216")},
    {"hr_hqx_10", "DNxHR HQX 12bit", 1271, FourCC("AVdh"), FourCC("v216")},
    {"hr_444_10", "DNxHR 444 12bit", 1270, FourCC("AVdh"), FourCC("a48r")},
};

struct ReleaseImage {
    void operator()(Image* image) const { Image::Free(image); }
};
using BenchImage = std::unique_ptr<Image, ReleaseImage>;

/// An image with a camera-like picture of 1920x1080.
BenchImage MakeBenchImage(ImageDataKind kind);

/// The frame that a compression makes of that picture; made once. Ends the process if it can't.
const std::vector<uint8_t>& FrameOf(const BenchCompression& compression);
