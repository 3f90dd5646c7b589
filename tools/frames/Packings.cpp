#include "frames/Packings.h"

#include "Encoders.h"

#include <algorithm>

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

} // namespace

bool PackingHasAlpha(uint32_t fourCC) { return Find(fourCC).alpha; }

bool PackingIsRgb(uint32_t fourCC) { return Find(fourCC).rgb; }

bool CarriesAlpha(uint32_t fourCC) {
    const std::vector<CxEncoderInfo> rows = RegistryEncoders();
    return PackingHasAlpha(fourCC) || std::any_of(rows.begin(), rows.end(), [&](const CxEncoderInfo& row) {
               return row.fourCC == fourCC && OffersAlpha(row);
           });
}
