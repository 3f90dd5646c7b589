#include "frames/Packings.h"

#include "Encoders.h"

#include <algorithm>
#include <string>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace {

struct Packing {
    uint32_t fourCC;
    bool rgb;
    bool alpha;
};

/// The packings that the pixel conversion knows; `raw ` is read as 32.
constexpr Packing kPackings[] = {
    {24, true, false},
    {32, true, true},
    {FourCC("24BG"), true, false},
    {FourCC("ABGR"), true, true},
    {FourCC("BGRA"), true, true},
    {FourCC("RGBA"), true, true},
    {FourCC("a48r"), true, true},
    {FourCC("abgr"), true, true},
    {FourCC("b48r"), true, false},
    {FourCC("b64a"), true, true},
    {FourCC("l48r"), true, false},
    {FourCC("l64r"), true, true},
    {FourCC("r210"), true, false},
    {FourCC("r214"), true, false},
    {FourCC("raw "), true, true},
    {FourCC("rgb "), true, false},
    {FourCC("rgba"), true, true},
    {FourCC("rp16"), true, false},
    {FourCC("r408"), false, true},
    {FourCC("r4fl"), false, true},
    {FourCC("v408"), false, true},
    {FourCC("y416"), false, true},
};

Packing Find(uint32_t fourCC) {
    const auto* found = std::find_if(std::begin(kPackings), std::end(kPackings),
                                     [&](const Packing& packing) { return packing.fourCC == fourCC; });
    return found != std::end(kPackings) ? *found : Packing{fourCC, false, false};
}

bool IsEncodedWithAlpha(uint32_t fourCC) {
    return std::ranges::any_of(RegistryEncoders(), [=](const CxEncoderInfo& row) {
        return row.fourCC == fourCC && OffersAlpha(row);
    });
}

/// @param name  FFmpeg's, of a pixel format
bool PixelsHaveAlpha(const std::string& name) {
    const AVPixFmtDescriptor* const format = av_pix_fmt_desc_get(av_get_pix_fmt(name.c_str()));
    return format != nullptr && (format->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
}

} // namespace

bool PackingHasAlpha(uint32_t fourCC) { return Find(fourCC).alpha; }

bool PackingIsRgb(uint32_t fourCC) { return Find(fourCC).rgb; }

bool CarriesAlpha(const MovieTrackInfo& track) {
    return PackingHasAlpha(track.fourCC) || IsEncodedWithAlpha(track.fourCC) ||
           PixelsHaveAlpha(track.pixelFormat);
}
