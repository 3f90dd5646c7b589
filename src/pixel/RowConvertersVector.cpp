#include "pixel/RowConvertersVector.h"

#include "pixel/RowConverters.h"

#include <algorithm>
#include <bit>
#include <type_traits>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pixel/RowConvertersVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "pixel/RowVectorImage-inl.h"
#include "pixel/RowVectorWords-inl.h"

HWY_BEFORE_NAMESPACE();
namespace row_vector {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors there is nothing to gain on the scalar form.
Image::RowFunction PickConverter(RowDirection, RowPacking, ImageDataKind) { return nullptr; }

#else

namespace hn = hwy::HWY_NAMESPACE;

// ---------------------------------------------------------------------------------------------------------
// Packings of four channels. A vector holds whole pixels in memory order, and a shuffle of bytes within each
// 16 bytes, two pixels of words, takes one order of channels and bytes to the other.

using Shuffle = std::array<uint8_t, 16>;

/// For each byte of two pixels of a blob, the byte of two pixels of an image.
constexpr Shuffle ToBlobOrder(const RowLayout& layout) {
    Shuffle shuffle = {};
    const size_t swapped = layout.word == RowWord::BigEndian16 ? 1 : 0;
    for (size_t word = 0; word < 8; ++word) {
        const size_t source = word / 4 * 4 + static_cast<size_t>(layout.order[word % 4]);
        shuffle[2 * word + swapped] = static_cast<uint8_t>(2 * source);
        shuffle[2 * word + 1 - swapped] = static_cast<uint8_t>(2 * source + 1);
    }
    return shuffle;
}

constexpr Shuffle Inverse(const Shuffle& shuffle) {
    Shuffle inverse = {};
    for (size_t i = 0; i < shuffle.size(); ++i)
        inverse[shuffle[i]] = static_cast<uint8_t>(i);
    return inverse;
}

template <RowPacking Packing>
alignas(16) constexpr Shuffle toBlobOrder = ToBlobOrder(LayoutOf(Packing));
template <RowPacking Packing>
alignas(16) constexpr Shuffle toImageOrder = Inverse(toBlobOrder<Packing>);

HWY_INLINE V16 ShuffleBytes(V16 v, const Shuffle& shuffle) {
    const hn::Repartition<uint8_t, D16> bytes;
    return hn::BitCast(D16(),
                       hn::TableLookupBytes(hn::BitCast(bytes, v), hn::LoadDup128(bytes, shuffle.data())));
}

/// The words of `scaled`, except for alpha, which is of `v`, in the order of an image.
HWY_INLINE V16 KeepAlpha(V16 scaled, V16 v) {
    const hn::Repartition<uint64_t, D16> pixels;
    const V16 alpha = hn::BitCast(D16(), hn::Set(pixels, 0xFFFF000000000000u));
    return hn::Or(hn::And(alpha, v), hn::AndNot(alpha, scaled));
}

template <RowPacking Packing>
constexpr bool hasBytes = LayoutOf(Packing).word == RowWord::Byte;

template <RowPacking Packing>
HWY_INLINE void StoreToBlob(V16 v, uint8_t* out) {
    if constexpr (hasBytes<Packing>) {
        hn::StoreU(HighBytes(v), D8(), out);
    } else {
        hn::StoreU(v, D16(), reinterpret_cast<uint16_t*>(out));
    }
}

template <RowPacking Packing>
HWY_INLINE V16 LoadFromBlob(const uint8_t* in) {
    return LoadWords<std::conditional_t<hasBytes<Packing>, uint8_t, uint16_t>>(in);
}

template <RowPacking Packing, typename T>
HWY_INLINE void WriteFour(const uint8_t* pixels, uint8_t* out) {
    V16 v = LoadChannels<T>(pixels);
    if constexpr (LayoutOf(Packing).scale == RowScale::VideoRange) v = KeepAlpha(ToVideoRange(v), v);
    StoreToBlob<Packing>(ShuffleBytes(v, toBlobOrder<Packing>), out);
}

template <RowPacking Packing, typename T>
HWY_INLINE void ReadFour(const uint8_t* in, uint8_t* pixels) {
    V16 v = ShuffleBytes(LoadFromBlob<Packing>(in), toImageOrder<Packing>);
    if constexpr (LayoutOf(Packing).scale == RowScale::VideoRange) v = KeepAlpha(FromVideoRange(v), v);
    StoreChannels<T>(v, pixels);
}

// ---------------------------------------------------------------------------------------------------------
// Packings of three channels. Each channel has a vector of its own.

template <RowPacking Packing>
HWY_INLINE V16 ToWord(V16 v) {
    constexpr RowLayout layout = LayoutOf(Packing);
    if constexpr (layout.scale == RowScale::FourteenBits) v = hn::ShiftRight<2>(v);
    return layout.word == RowWord::BigEndian16 ? SwapBytes(v) : v;
}

/// The sign of signed words needs no care here: an image keeps the low 16 bits.
template <RowPacking Packing>
HWY_INLINE V16 FromWord(V16 v) {
    constexpr RowLayout layout = LayoutOf(Packing);
    if constexpr (layout.word == RowWord::BigEndian16) v = SwapBytes(v);
    if constexpr (layout.scale == RowScale::FourteenBits) v = hn::ShiftLeft<2>(v);
    return v;
}

template <RowPacking Packing>
HWY_INLINE void StoreThree(V16 w0, V16 w1, V16 w2, uint8_t* out) {
    if constexpr (hasBytes<Packing>) {
        hn::StoreInterleaved3(HighBytes(w0), HighBytes(w1), HighBytes(w2), D8(), out);
    } else {
        hn::StoreInterleaved3(ToWord<Packing>(w0), ToWord<Packing>(w1), ToWord<Packing>(w2), D16(),
                              reinterpret_cast<uint16_t*>(out));
    }
}

template <RowPacking Packing>
HWY_INLINE void LoadThree(const uint8_t* in, V16& w0, V16& w1, V16& w2) {
    if constexpr (hasBytes<Packing>) {
        V8 v0, v1, v2;
        hn::LoadInterleaved3(D8(), in, v0, v1, v2);
        w0 = Widen(v0);
        w1 = Widen(v1);
        w2 = Widen(v2);
    } else {
        hn::LoadInterleaved3(D16(), reinterpret_cast<const uint16_t*>(in), w0, w1, w2);
        w0 = FromWord<Packing>(w0);
        w1 = FromWord<Packing>(w1);
        w2 = FromWord<Packing>(w2);
    }
}

// ---------------------------------------------------------------------------------------------------------
// r210. Its 32-bit word is handled as two of 16 bits: 2 zero bits, R, 4 bits of G; 6 bits of G, B.

HWY_INLINE void StoreTenBits(V16 r, V16 g, V16 b, uint8_t* out) {
    const V16 upper = hn::Or(hn::ShiftLeft<4>(r), hn::ShiftRight<6>(g));
    const V16 lower = hn::Or(hn::ShiftLeft<10>(g), b);
    hn::StoreInterleaved2(SwapBytes(upper), SwapBytes(lower), D16(), reinterpret_cast<uint16_t*>(out));
}

HWY_INLINE void LoadTenBits(const uint8_t* in, V16& r, V16& g, V16& b) {
    V16 upper, lower;
    hn::LoadInterleaved2(D16(), reinterpret_cast<const uint16_t*>(in), upper, lower);
    upper = SwapBytes(upper);
    lower = SwapBytes(lower);
    const V16 tenBits = hn::Set(D16(), 0x3FF);
    r = hn::And(hn::ShiftRight<4>(upper), tenBits);
    g = hn::And(hn::Or(hn::ShiftLeft<6>(upper), hn::ShiftRight<10>(lower)), tenBits);
    b = hn::And(lower, tenBits);
}

// ---------------------------------------------------------------------------------------------------------
// Blocks of any packing

/// Pixels of a block.
template <RowPacking Packing>
HWY_INLINE int64_t BlockWidth() {
    const auto words = static_cast<int64_t>(hn::Lanes(D16()));
    return LayoutOf(Packing).channels == 4 ? words / 4 : words;
}

template <RowPacking Packing, typename T>
HWY_INLINE void WriteBlock(const uint8_t* pixels, uint8_t* out) {
    constexpr RowLayout layout = LayoutOf(Packing);
    if constexpr (layout.channels == 4) return WriteFour<Packing, T>(pixels, out);
    V16 r, g, b;
    if constexpr (layout.word == RowWord::TenBits) {
        LoadTenBitPixels<T>(pixels, r, g, b);
        return StoreTenBits(r, g, b, out);
    }
    LoadPixels<T>(pixels, r, g, b);
    const bool redFirst = layout.order[0] == RowChannel::R;
    StoreThree<Packing>(redFirst ? r : b, g, redFirst ? b : r, out);
}

/// @param planeBytes  from one plane to the next, for packings of planes
template <RowPacking Packing, typename T>
HWY_INLINE void ReadBlock(const uint8_t* in, int64_t planeBytes, uint8_t* pixels) {
    constexpr RowLayout layout = LayoutOf(Packing);
    if constexpr (layout.channels == 4) return ReadFour<Packing, T>(in, pixels);
    V16 r, g, b;
    if constexpr (layout.word == RowWord::TenBits) {
        LoadTenBits(in, r, g, b);
        return StoreOpaqueTenBitPixels<T>(r, g, b, pixels);
    } else if constexpr (layout.word == RowWord::Plane16) {
        r = LoadFromBlob<Packing>(in);
        g = LoadFromBlob<Packing>(in + planeBytes);
        b = LoadFromBlob<Packing>(in + 2 * planeBytes);
    } else if constexpr (layout.order[0] == RowChannel::R) {
        LoadThree<Packing>(in, r, g, b);
    } else {
        LoadThree<Packing>(in, b, g, r);
    }
    StoreOpaquePixels<T>(r, g, b, pixels);
}

// ---------------------------------------------------------------------------------------------------------
// Rows. A row shorter than a block goes the scalar way.

template <RowDirection Direction, RowPacking Packing, typename T>
void ConvertRow(Image* image, void* opaque, int row) {
    constexpr bool isWrite = Direction == RowDirection::ToBlob;
    const int64_t block = BlockWidth<Packing>();
    const int64_t width = image->Width;
    if (width < block) return (isWrite ? ScalarRowWriter : ScalarRowReader)(Packing)(image, opaque, row);
    const RowContext& context = *static_cast<const RowContext*>(opaque);
    uint8_t* pixels = image->RowAddress(ImageRowOf(*image, row));
    uint8_t* packed = context.Row(row);
    for (int64_t next = 0; next < width; next += block) {
        const int64_t x = std::min(next, width - block);
        uint8_t* pixel = pixels + x * static_cast<int64_t>(4 * sizeof(T));
        uint8_t* word = packed + x * LayoutOf(Packing).BytesPerPixel();
        if constexpr (isWrite) {
            WriteBlock<Packing, T>(pixel, word);
        } else {
            ReadBlock<Packing, T>(word, int64_t{context.rowBytes} * image->Height, pixel);
        }
    }
}

// ---------------------------------------------------------------------------------------------------------
// One converter for each direction and packing

using RowFunctions = std::array<Image::RowFunction, rowPackingCount>;

template <RowDirection Direction, RowPacking Packing, typename T>
constexpr Image::RowFunction ConverterOf() {
    if constexpr (Direction == RowDirection::ToImage || IsWritable(Packing)) {
        return &ConvertRow<Direction, Packing, T>;
    } else {
        return nullptr;
    }
}

template <RowDirection Direction, typename T, size_t... I>
constexpr RowFunctions ConvertersOf(std::index_sequence<I...>) {
    return {ConverterOf<Direction, static_cast<RowPacking>(I), T>()...};
}

template <typename T>
Image::RowFunction ConverterFor(RowDirection direction, RowPacking packing) {
    if constexpr (std::is_same_v<T, hwy::float16_t> && !hasHalves) {
        return nullptr;
    } else {
        using All = std::make_index_sequence<rowPackingCount>;
        static constexpr RowFunctions writers = ConvertersOf<RowDirection::ToBlob, T>(All());
        static constexpr RowFunctions readers = ConvertersOf<RowDirection::ToImage, T>(All());
        return (direction == RowDirection::ToBlob ? writers : readers)[static_cast<size_t>(packing)];
    }
}

Image::RowFunction PickConverter(RowDirection direction, RowPacking packing, ImageDataKind kind) {
    switch (kind) {
    case ImageData_RGBA8: return ConverterFor<uint8_t>(direction, packing);
    case ImageData_RGBA16: return ConverterFor<uint16_t>(direction, packing);
    case ImageData_RGBAHalf: return ConverterFor<hwy::float16_t>(direction, packing);
    case ImageData_RGBAFloat: return ConverterFor<float>(direction, packing);
    }
    return nullptr;
}

#endif

} // namespace HWY_NAMESPACE
} // namespace row_vector
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace row_vector {
namespace {

static_assert(std::endian::native == std::endian::little, "words are moved as they stand in memory");

HWY_EXPORT(PickConverter);

Image::RowFunction ConverterFor(RowDirection direction, RowPacking packing, const Image& image) {
    if (!image.HasPlainPixels()) return nullptr;
    const auto kind = static_cast<ImageDataKind>(image.DataFormat->Kind);
    return HWY_DYNAMIC_DISPATCH(PickConverter)(direction, packing, kind);
}

} // namespace
} // namespace row_vector

Image::RowFunction VectorRowWriter(RowPacking packing, const Image& image) {
    return row_vector::ConverterFor(RowDirection::ToBlob, packing, image);
}

Image::RowFunction VectorRowReader(RowPacking packing, const Image& image) {
    return row_vector::ConverterFor(RowDirection::ToImage, packing, image);
}
#endif
