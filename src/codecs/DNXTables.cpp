#include "codecs/DNXTables.h"

#include "codecs/DNXRecords.h"

#include <algorithm>
#include <array>

namespace {

using enum DNXPictureKind;

constexpr uint32_t hd = dnxHDCode;
constexpr uint32_t hr = dnxHRCode;
constexpr uint32_t s422 = dnxSampling422;
constexpr uint32_t s444 = dnxSampling444;
constexpr uint32_t interlaced = 1;   ///< of `CxEncoderInfo::flags`
constexpr uint32_t carriesAlpha = 2; ///< of `CxEncoderInfo::flags`

// The encoders are offered in this order. The HQX and 4:4:4 compressions of DNxHD and the 4:4:4 one of DNxHR
// take RGB pictures, and all others of DNxHR take 16-bit ones, those of 8 bits too. Kept.
constexpr std::array compressions = {
    // clang-format off
    DNXCompression{1252, hd, "DNxHD SQ 720p",   "DNxHD SQ 720p 8bit",    1280,  720, 0,            true,  YCbCr8,  s422, 10},
    DNXCompression{1251, hd, "DNxHD HQ 720p",   "DNxHD HQ 720p 8bit",    1280,  720, 0,            true,  YCbCr8,  s422, 10},
    DNXCompression{1250, hd, "DNxHD HQX 720p",  "DNxHD HQX 720p 10bit",  1280,  720, 0,            true,  Rgb,     s422, 10},
    DNXCompression{1253, hd, "DNxHD LB 1080p",  "DNxHD LB 1080p 8bit",   1920, 1080, 0,            true,  YCbCr8,  s422, 10},
    DNXCompression{1237, hd, "DNxHD SQ 1080p",  "DNxHD SQ 1080p 8bit",   1920, 1080, 0,            true,  YCbCr8,  s422, 10},
    DNXCompression{1238, hd, "DNxHD HQ 1080p",  "DNxHD HQ 1080p 8bit",   1920, 1080, 0,            true,  YCbCr8,  s422, 10},
    DNXCompression{1235, hd, "DNxHD HQX 1080p", "DNxHD HQX 1080p 10bit", 1920, 1080, 0,            true,  Rgb,     s422, 10},
    DNXCompression{1242, hd, "DNxHD SQ 1080i",  "DNxHD SQ 1080i 8bit",   1920, 1080, interlaced,   false, YCbCr8,  s422, 10},
    DNXCompression{1243, hd, "DNxHD HQ 1080i",  "DNxHD HQ 1080i 8bit",   1920, 1080, interlaced,   false, YCbCr8,  s422, 10},
    DNXCompression{1241, hd, "DNxHD HQX 1080i", "DNxHD HQX 1080i 10bit", 1920, 1080, interlaced,   false, Rgb,     s422, 10},
    DNXCompression{1256, hd, "DNxHD 444 1080p", "DNxHD 444 1080p 10bit", 1920, 1080, 0,            true,  Rgb,     s444, 10},
    DNXCompression{1274, hr, "DNxHR LB",        "DNxHR LB 8bit",         0,       0, carriesAlpha, true,  YCbCr16, s422, 10},
    DNXCompression{1273, hr, "DNxHR SQ",        "DNxHR SQ 8bit",         0,       0, carriesAlpha, true,  YCbCr16, s422, 10},
    DNXCompression{1272, hr, "DNxHR HQ",        "DNxHR HQ 8bit",         0,       0, carriesAlpha, true,  YCbCr16, s422, 10},
    DNXCompression{1271, hr, "DNxHR HQX",       "DNxHR HQX 12bit",       0,       0, carriesAlpha, true,  YCbCr16, s422, 12},
    DNXCompression{1270, hr, "DNxHR 444",       "DNxHR 444 12bit",       0,       0, carriesAlpha, true,  Rgb,     s444, 12},
    // Known as progressive, and nothing else.
    DNXCompression{1258, hd, "DNxHD",           nullptr,                 0,       0, 0,            true,  YCbCr8,  s422, 10},
    DNXCompression{1259, hd, "DNxHD",           nullptr,                 0,       0, 0,            true,  YCbCr8,  s422, 10},
    // clang-format on
};

constexpr DNXCompression unknown = {0, hd, "DNxHD", nullptr, 0, 0, 0, false, YCbCr8, s422, 10};

std::vector<CxEncoderInfo> BuildCatalogue() {
    std::vector<CxEncoderInfo> rows;
    for (const DNXCompression& compression : compressions) {
        if (compression.encoder == nullptr) continue;
        CxEncoderInfo& row = rows.emplace_back();
        row.fourCC = compression.fourCC;
        row.codecId = compression.id;
        row.name = compression.encoder;
        row.width = compression.width;
        row.height = compression.height;
        row.flags = compression.flags;
    }
    return rows;
}

} // namespace

const DNXCompression& FindDNXCompression(uint32_t id) {
    const auto found = std::ranges::find(compressions, id, &DNXCompression::id);
    return found != compressions.end() ? *found : unknown;
}

const std::vector<CxEncoderInfo>& DNXCatalogue() {
    static const std::vector<CxEncoderInfo> rows = BuildCatalogue();
    return rows;
}
