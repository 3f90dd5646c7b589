#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

/// The RGB packings that are converted row by row. A FourCC chooses one of them; some share one.
enum class RowPacking : uint8_t {
    Rgb24,
    Bgr24,
    Argb32,
    Abgr32,
    Bgra32,
    Rgba32,
    B48r,
    L48r,
    B64a,
    L64r,
    A48r,
    R214,
    R210,
    Rp16,
};
inline constexpr size_t rowPackingCount = 14;

/// Which way pixels go.
enum class RowDirection : uint8_t { ToBlob, ToImage };

/// A channel, numbered by its place in a pixel record.
enum class RowChannel : uint8_t { R, G, B, A };

/// What a packing is made of.
enum class RowWord : uint8_t {
    Byte,           ///< 8 bits, the upper half of the channel
    BigEndian16,    ///< 16 bits, high byte first
    LittleEndian16, ///< 16 bits, low byte first
    TenBits,        ///< one big-endian 32-bit word for a pixel: two zero bits, then R, G, B of 10 bits each
    Plane16,        ///< 16 bits in the machine's byte order, each channel in a plane of its own
};

/// What the values of a packing's words mean.
enum class RowScale : uint8_t {
    Full,         ///< 0 is black, all ones is white
    VideoRange,   ///< R, G, B from black to white are 64..940 of 10 bits or 4096..60160 of 16; A is full
    FourteenBits, ///< full range in the low 14 bits
};

/// All that tells one packing from another.
struct RowLayout {
    RowPacking packing;
    RowWord word;
    RowScale scale;
    bool isSigned;                   ///< whether words reach the image sign-extended
    uint8_t channels;                ///< 3 or 4; without A, reading sets A to opaque
    std::array<RowChannel, 4> order; ///< channels as they follow each other in memory; the first `channels`

    /// Bytes of one pixel; of its word in one plane for `RowWord::Plane16`.
    constexpr uint32_t BytesPerPixel() const {
        switch (word) {
        case RowWord::Byte: return channels;
        case RowWord::BigEndian16:
        case RowWord::LittleEndian16: return channels * 2u;
        case RowWord::TenBits: return 4;
        case RowWord::Plane16: return 2;
        }
        return 0;
    }
};

namespace row_layouts {

using enum RowChannel;
inline constexpr std::array<RowChannel, 4> rgb = {R, G, B, A};
inline constexpr std::array<RowChannel, 4> bgr = {B, G, R, A};
inline constexpr std::array<RowChannel, 4> argb = {A, R, G, B};
inline constexpr std::array<RowChannel, 4> abgr = {A, B, G, R};

// The three packings with signed words reach an image's accessor as negative integers from 0x8000 on; the
// other packings of words do not. An accessor that stores 16 bits gets the word back. Kept.
inline constexpr std::array<RowLayout, rowPackingCount> all = {{
    {RowPacking::Rgb24, RowWord::Byte, RowScale::Full, false, 3, rgb},
    {RowPacking::Bgr24, RowWord::Byte, RowScale::Full, false, 3, bgr},
    {RowPacking::Argb32, RowWord::Byte, RowScale::Full, false, 4, argb},
    {RowPacking::Abgr32, RowWord::Byte, RowScale::Full, false, 4, abgr},
    {RowPacking::Bgra32, RowWord::Byte, RowScale::Full, false, 4, bgr},
    {RowPacking::Rgba32, RowWord::Byte, RowScale::Full, false, 4, rgb},
    {RowPacking::B48r, RowWord::BigEndian16, RowScale::Full, false, 3, rgb},
    {RowPacking::L48r, RowWord::LittleEndian16, RowScale::Full, true, 3, rgb},
    {RowPacking::B64a, RowWord::BigEndian16, RowScale::Full, false, 4, argb},
    {RowPacking::L64r, RowWord::LittleEndian16, RowScale::Full, false, 4, argb},
    {RowPacking::A48r, RowWord::LittleEndian16, RowScale::VideoRange, false, 4, argb},
    {RowPacking::R214, RowWord::LittleEndian16, RowScale::FourteenBits, true, 3, rgb},
    {RowPacking::R210, RowWord::TenBits, RowScale::VideoRange, false, 3, rgb},
    {RowPacking::Rp16, RowWord::Plane16, RowScale::Full, true, 3, rgb},
}};

constexpr bool StandInOrder() {
    for (size_t i = 0; i < all.size(); ++i)
        if (all[i].packing != static_cast<RowPacking>(i)) return false;
    return true;
}
static_assert(StandInOrder(), "a layout is found by the number of its packing");

} // namespace row_layouts

constexpr const RowLayout& LayoutOf(RowPacking packing) {
    return row_layouts::all[static_cast<size_t>(packing)];
}

/// Whether the packing can be written; all can be read. `rp16` cannot: it comes from decoders only.
constexpr bool IsWritable(RowPacking packing) { return packing != RowPacking::Rp16; }

/// Video range of 16-bit words and the factors to and from it: 56064 / 65535, the nearest single-precision
/// number, and its inverse. Products and sums are rounded one by one.
namespace video_range16 {
inline constexpr int32_t black = 4096;
inline constexpr int32_t white = 60160;
inline constexpr float fromFull = 0.8554818f;
inline constexpr float toFull = 1.168932f;
static_assert(std::bit_cast<uint32_t>(fromFull) == 0x3F5B00DB);
static_assert(std::bit_cast<uint32_t>(toFull) == 0x3F959F90);
} // namespace video_range16

/// Video range of 10-bit values.
namespace video_range10 {
inline constexpr int32_t black = 64;
inline constexpr int32_t range = 876;
inline constexpr int32_t highest = 1023;
} // namespace video_range10
