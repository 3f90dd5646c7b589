#include "host/ColorLayout.h"

namespace {

// The outermost codes of 8 and 10 bits are timing codes on a serial interface (SMPTE ST 125, ST 274) and
// stand in no picture. Words of 16 bits are a memory format and take every code.

/// Video range (Recommendation ITU-R BT.709-6, 3.5) at a depth of 8, 10 or 16 bits.
constexpr ColorRange VideoRange(int bits) {
    const double scale = 1 << (bits - 8);
    const float most = static_cast<float>((1 << bits) - 1);
    const float reserved = bits == 8 ? 1.0f : bits == 10 ? 4.0f : 0.0f;
    const ColorLimits limits = {reserved, most - reserved};
    return {16 * scale, 219 * scale, 128 * scale, 224 * scale, most, limits, limits};
}

/// Every code is used, for luma from black to white.
constexpr ColorRange FullRange(int bits) {
    const float most = static_cast<float>((1 << bits) - 1);
    return {0, most, static_cast<double>(1 << (bits - 1)), most, most, {0, most}, {0, most}};
}

constexpr ColorRange video8 = VideoRange(8);
constexpr ColorRange video10 = VideoRange(10);
constexpr ColorRange video16 = VideoRange(16);
constexpr ColorRange full8 = FullRange(8);
constexpr ColorRange full10 = FullRange(10);

/// Video range with luma counted from black.
constexpr ColorRange zeroBased8 = {0, 219, 128, 224, 255, {0, 238}, {1, 254}};

/// The same as fractions of 255. Grey is the float that stands in buffers, so that grey pixels stay grey.
constexpr ColorRange zeroBasedFloat = {0, 219.0 / 255, 128.0f / 255, 224.0 / 255, 1, {}, {}};

constexpr std::array<ColorLayoutInfo, 18> layouts = {{
    {ColorLayout_2vuy, ColorPacking::Pairs8, video8, 2, 1, 1, 2, 1},
    {ColorLayout_uyvy, ColorPacking::Pairs8, video8, 2, 1, 1, 2, 1},
    {ColorLayout_v210, ColorPacking::PairsTens, video10, 2, 1, 6, 16, 1},
    {ColorLayout_v410, ColorPacking::CbYCrTens, video10, 1, 1, 1, 4, 1},
    {ColorLayout_v408, ColorPacking::CbYCrA8, video8, 1, 1, 1, 4, 1},
    {ColorLayout_r408, ColorPacking::AYCbCr8, zeroBased8, 1, 1, 1, 4, 1},
    {ColorLayout_r4fl, ColorPacking::AYCbCrFloat, zeroBasedFloat, 1, 1, 1, 16, 1},
    {ColorLayout_yuv422p10, ColorPacking::Planar16, video10, 2, 1, 1, 2, 3},
    {ColorLayout_yuv422p, ColorPacking::Planar8, video8, 2, 1, 1, 1, 3},
    {ColorLayout_yuv420p, ColorPacking::Planar8, video8, 2, 2, 1, 1, 3},
    {ColorLayout_nv12, ColorPacking::SemiPlanar8, video8, 2, 2, 1, 1, 2},
    {ColorLayout_v216, ColorPacking::Pairs16, video16, 2, 1, 1, 4, 1},
    {ColorLayout_yuvj422p, ColorPacking::Planar8, full8, 2, 1, 1, 1, 3},
    {ColorLayout_yuvj420p, ColorPacking::Planar8, full8, 2, 2, 1, 1, 3},
    {ColorLayout_yv16, ColorPacking::PairsAlpha16, video16, 2, 1, 1, 6, 1},
    {ColorLayout_yv8u, ColorPacking::PairsAlpha8, video8, 2, 1, 1, 3, 1},
    {ColorLayout_yuvj422p10, ColorPacking::Planar16, full10, 2, 1, 1, 2, 3},
    {ColorLayout_y416, ColorPacking::AYCbCr16, video16, 1, 1, 1, 8, 1},
}};

constexpr bool CodesAreUnique() {
    for (size_t i = 0; i < layouts.size(); ++i) {
        for (size_t j = 0; j < i; ++j) {
            if (layouts[i].code == layouts[j].code) return false;
        }
    }
    return true;
}
static_assert(CodesAreUnique());

} // namespace

const ColorLayoutInfo* FindColorLayout(int64_t code) {
    for (const ColorLayoutInfo& layout : layouts) {
        if (layout.code == code) return &layout;
    }
    return nullptr;
}
