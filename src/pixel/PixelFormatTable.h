#pragma once

#include "framework/CxAVTypes.h"
#include "host/ColorConvert.h"
#include "pixel/RowPacking.h"

#include <algorithm>
#include <array>
#include <cstdint>

/// Bytes of a row as whole groups of pixels; no bytes means that there is no such rule.
struct PixelRowSize {
    uint32_t bytes = 0;  ///< of one group
    uint32_t pixels = 1; ///< of one group

    constexpr uint64_t Bytes(uint32_t width) const {
        return (uint64_t{width} / pixels + (width % pixels != 0)) * bytes;
    }
};

/// Who moves the pixels in one direction.
struct PixelRoute {
    enum class Kind : uint8_t { None, Host, Rows } kind = Kind::None;
    ColorLayout layout = {}; ///< `Kind::Host`: the layout's number in the host's colour conversion
    RowPacking packing = {}; ///< `Kind::Rows`: the packing of the row converters
    bool inPairs = false; ///< `Kind::Host`: two pixels share chroma, and are read together if a row has both
};

/// One FourCC with all that is known of it.
struct PixelFormat {
    uint32_t fourCC;
    PixelRowSize row;   ///< what `PixelConvert::CalcRowBytes` answers, padding included
    PixelRowSize least; ///< bytes that the pixels of a row take; for planes, in the first of them
    PixelRoute read;    ///< blob to image
    PixelRoute write;   ///< image to blob
};

namespace pixel_formats {

inline constexpr PixelRowSize noRow;
inline constexpr PixelRoute none;
constexpr PixelRoute Host(ColorLayout layout) { return {PixelRoute::Kind::Host, layout, {}}; }
constexpr PixelRoute HostPairs(ColorLayout layout) { return {PixelRoute::Kind::Host, layout, {}, true}; }
constexpr PixelRoute Rows(RowPacking packing) { return {PixelRoute::Kind::Rows, {}, packing}; }

// The directions and row sizes that are missing are so on purpose, and kept: codes without a row size are
// used by callers who know theirs, `nv12` and `rp16` are only read, `y416` is only written, and three codes
// have a size but no road: callers change `raw `, `rgb ` and `2Vuy` to 32, 24 and `2vuy` first.
inline constexpr std::array<PixelFormat, 31> all = {{
    {24, {3}, {3}, Rows(RowPacking::Rgb24), Rows(RowPacking::Rgb24)},
    {32, {4}, {4}, Rows(RowPacking::Argb32), Rows(RowPacking::Argb32)},
    {FourCC("24BG"), noRow, {3}, Rows(RowPacking::Bgr24), Rows(RowPacking::Bgr24)},
    {FourCC("2vuy"), {2}, {2}, HostPairs(ColorLayout_2vuy), HostPairs(ColorLayout_2vuy)},
    {FourCC("2Vuy"), {2}, {2}, none, none},
    {FourCC("ABGR"), noRow, {4}, Rows(RowPacking::Abgr32), Rows(RowPacking::Abgr32)},
    {FourCC("BGRA"), {4}, {4}, Rows(RowPacking::Bgra32), Rows(RowPacking::Bgra32)},
    {FourCC("RGBA"), noRow, {4}, Rows(RowPacking::Rgba32), Rows(RowPacking::Rgba32)},
    {FourCC("a48r"), {8}, {8}, Rows(RowPacking::A48r), Rows(RowPacking::A48r)},
    {FourCC("abgr"), noRow, {4}, Rows(RowPacking::Abgr32), Rows(RowPacking::Abgr32)},
    {FourCC("b48r"), {6}, {6}, Rows(RowPacking::B48r), Rows(RowPacking::B48r)},
    {FourCC("b64a"), {8}, {8}, Rows(RowPacking::B64a), Rows(RowPacking::B64a)},
    {FourCC("l48r"), {6}, {6}, Rows(RowPacking::L48r), Rows(RowPacking::L48r)},
    {FourCC("l64r"), {8}, {8}, Rows(RowPacking::L64r), Rows(RowPacking::L64r)},
    {FourCC("nv12"), noRow, {2, 2}, HostPairs(ColorLayout_nv12), none},
    {FourCC("r210"), {256, 64}, {4}, Rows(RowPacking::R210), Rows(RowPacking::R210)},
    {FourCC("r214"), noRow, {6}, Rows(RowPacking::R214), Rows(RowPacking::R214)},
    {FourCC("r408"), {4}, {4}, Host(ColorLayout_r408), Host(ColorLayout_r408)},
    {FourCC("r4fl"), noRow, {16}, Host(ColorLayout_r4fl), Host(ColorLayout_r4fl)},
    {FourCC("raw "), {3}, {3}, none, none},
    {FourCC("rgb "), {3}, {3}, none, none},
    {FourCC("rgba"), noRow, {4}, Rows(RowPacking::Rgba32), Rows(RowPacking::Rgba32)},
    {FourCC("rp16"), {2}, {2}, Rows(RowPacking::Rp16), none},
    {FourCC("uyvy"), {2}, {2}, HostPairs(ColorLayout_uyvy), HostPairs(ColorLayout_uyvy)},
    {FourCC("v210"), {128, 48}, {16, 6}, HostPairs(ColorLayout_v210), HostPairs(ColorLayout_v210)},
    {FourCC("v216"), {4}, {4}, HostPairs(ColorLayout_v216), HostPairs(ColorLayout_v216)},
    {FourCC("v408"), {4}, {4}, Host(ColorLayout_v408), Host(ColorLayout_v408)},
    {FourCC("v410"), noRow, {4}, Host(ColorLayout_v410), Host(ColorLayout_v410)},
    {FourCC("y416"), {8}, {8}, none, Host(ColorLayout_y416)},
    {FourCC("yv16"), {6}, {6}, HostPairs(ColorLayout_yv16), HostPairs(ColorLayout_yv16)},
    {FourCC("yv8u"), {3}, {3}, HostPairs(ColorLayout_yv8u), HostPairs(ColorLayout_yv8u)},
}};

constexpr bool CodesAreUnique() {
    for (size_t i = 0; i < all.size(); ++i)
        for (size_t j = 0; j < i; ++j)
            if (all[i].fourCC == all[j].fourCC) return false;
    return true;
}

/// Number of different packings that the formats use in one direction.
constexpr size_t CountPackings(PixelRoute PixelFormat::*direction) {
    std::array<bool, rowPackingCount> used = {};
    for (const PixelFormat& format : all) {
        const PixelRoute& route = format.*direction;
        if (route.kind == PixelRoute::Kind::Rows) used[static_cast<size_t>(route.packing)] = true;
    }
    return static_cast<size_t>(std::count(used.begin(), used.end(), true));
}

constexpr bool RowsFitTheirPackings() {
    for (const PixelFormat& format : all) {
        if (format.row.bytes != 0 && format.row.Bytes(1) < format.least.Bytes(1)) return false;
        if (format.read.kind != PixelRoute::Kind::Rows) continue;
        if (format.least.Bytes(1) != LayoutOf(format.read.packing).BytesPerPixel()) return false;
    }
    return true;
}

constexpr bool WrittenPackingsAreWritable() {
    for (const PixelFormat& format : all)
        if (format.write.kind == PixelRoute::Kind::Rows && !IsWritable(format.write.packing)) return false;
    return true;
}

static_assert(CodesAreUnique());
static_assert(CountPackings(&PixelFormat::write) == 13, "one row writer for each packing that is written");
static_assert(CountPackings(&PixelFormat::read) == 14, "one row reader for each packing that is read");
static_assert(RowsFitTheirPackings());
static_assert(WrittenPackingsAreWritable());

} // namespace pixel_formats

/// The format of a code, or null if the code is unknown.
constexpr const PixelFormat* FindPixelFormat(uint32_t fourCC) {
    for (const PixelFormat& format : pixel_formats::all)
        if (format.fourCC == fourCC) return &format;
    return nullptr;
}

/// Bytes from the start of a blob to the last one that `PixelConvert::BlobToImage` reads for an image of this
/// size: whole rows, and of the last row only its pixels. 0 for an image without pixels.
/// @param rowBytes  bytes from one row to the next, 0 or more
constexpr uint64_t BytesRead(const PixelFormat& format, int32_t width, int32_t height, int32_t rowBytes) {
    if (width <= 0 || height <= 0) return 0;
    const auto pixels = static_cast<uint32_t>(width);
    const auto step = static_cast<uint64_t>(rowBytes);
    const PixelRoute& route = format.read;

    auto rows = static_cast<uint64_t>(height);
    if (route.kind == PixelRoute::Kind::Rows && LayoutOf(route.packing).word == RowWord::Plane16)
        rows *= LayoutOf(route.packing).channels;
    // Rows of chroma follow those of luma, half as many.
    if (route.kind == PixelRoute::Kind::Host && route.layout == ColorLayout_nv12) rows += (rows + 1) / 2;

    const uint64_t pairs = format.least.Bytes(pixels + pixels % 2);
    const bool endsInPair = route.inPairs && pairs <= step;
    return (rows - 1) * step + (endsInPair ? pairs : format.least.Bytes(pixels));
}
