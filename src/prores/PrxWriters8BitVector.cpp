#include "prores/PrxWriters8BitVector.h"

#include <algorithm>
#include <bit>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "prores/PrxWriters8BitVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace prx_writers_8bit {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128 || HWY_HAVE_SCALABLE

// Without vectors, or with such whose size isn't known beforehand, the scalar form serves.
PrxMacroblockWriter PickWriter(uint32_t, int32_t, int32_t, bool) { return nullptr; }

#else

namespace hn = hwy::HWY_NAMESPACE;

static_assert(std::endian::native == std::endian::little, "words are stored as they stand in memory");

// Samples stay in words of 16 bits: a word of output is one byte and another shifted left by 8, so nothing is
// ever packed. Sixteen bytes of a vector are one row of a block eight samples wide, or two rows of one four
// wide. Most steps stay within sixteen bytes, so a machine with vectors of 32 bytes does two rows of eight
// samples at once.
using DWide = hn::CappedTag<int16_t, 16>;
using DNarrow = hn::FixedTag<int16_t, 8>;
using DAlphaRow = hn::FixedTag<uint8_t, 16>;
template <int32_t HShift>
using Words = std::conditional_t<HShift == 0, DWide, DNarrow>;

/// At full size the left and the right half of a row, or of two rows in vectors of 32 bytes. Of a picture
/// reduced by 2 across, a row and the next.
template <class V>
struct Pixels {
    V first;
    V second;
};

/// Rows of the macroblock in one `Pixels`.
template <int32_t HShift>
HWY_INLINE int32_t RowsAtOnce() {
    return HShift == 0 ? static_cast<int32_t>(hn::Lanes(DWide()) / 8) : 2;
}

// ---------------------------------------------------------------------------------------------------------
// Samples to bytes

/// A sample becomes the byte `offset` + sample clamped to `low`..`high`.
struct ByteRange {
    int16_t low;
    int16_t high;
    int16_t offset;
};

constexpr ByteRange fullRange = {-128, 127, 128};
constexpr ByteRange withoutEnds = {-127, 126, 128};
constexpr ByteRange fromBlack = {-112, 127, 112};
constexpr ByteRange finished = {0, 255, 0};

template <class V>
HWY_INLINE V Clamp(V v, ByteRange range) {
    const hn::DFromV<V> d;
    return hn::Min(hn::Max(v, hn::Set(d, range.low)), hn::Set(d, range.high));
}

template <class V>
HWY_INLINE Pixels<V> Clamp(Pixels<V> v, ByteRange range) {
    return {Clamp(v.first, range), Clamp(v.second, range)};
}

/// Bytes of `low` and of `high`, both clamped, in turn.
template <class V>
HWY_INLINE V BytePairs(V low, V high, ByteRange lowRange, ByteRange highRange) {
    const auto offset = static_cast<int16_t>(lowRange.offset + highRange.offset * 256);
    return hn::Add(hn::Add(low, hn::ShiftLeft<8>(high)), hn::Set(hn::DFromV<V>(), offset));
}

template <class V>
HWY_INLINE Pixels<V> BytePairs(Pixels<V> low, Pixels<V> high, ByteRange lowRange, ByteRange highRange) {
    return {BytePairs(low.first, high.first, lowRange, highRange),
            BytePairs(low.second, high.second, lowRange, highRange)};
}

// ---------------------------------------------------------------------------------------------------------
// The pixels of a macroblock

template <class V>
HWY_INLINE Pixels<V> Interleave(V a, V b) {
    return {hn::InterleaveLower(a, b), hn::InterleaveUpper(hn::DFromV<V>(), a, b)};
}

/// Cb and Cr of the even pixels, in turn.
template <class V>
HWY_INLINE V EvenPairs(V cb, V cr) {
    const hn::DFromV<V> d;
    const hn::Repartition<int32_t, decltype(d)> pairs;
    return hn::OddEven(hn::BitCast(d, hn::ShiftLeft<16>(hn::BitCast(pairs, cr))), cb);
}

/// Two blocks that stand side by side.
template <int32_t HShift, class V>
HWY_INLINE Pixels<V> Join(V left, V right) {
    if constexpr (HShift == 0) {
        return {left, right};
    } else {
        const hn::DFromV<V> d;
        const hn::Repartition<uint64_t, decltype(d)> rows;
        const auto joined = Interleave(hn::BitCast(rows, left), hn::BitCast(rows, right));
        return {hn::BitCast(d, joined.first), hn::BitCast(d, joined.second)};
    }
}

/// The samples of the pixels from one row of a macroblock on.
template <int32_t ChromaFormat, int32_t HShift>
class PixelReader {
public:
    using V = hn::Vec<Words<HShift>>;
    static constexpr int32_t hShift = HShift;

    /// Row `y` begins as far behind the first luma block as behind the first of Cb: after the rows above it
    /// in its own block and, in the lower half, two whole blocks.
    PixelReader(const int16_t* samples, int32_t vShift, int32_t y) : blockSize_(64 >> (HShift + vShift)) {
        const int32_t inBlock = y & ((8 >> vShift) - 1);
        row_ = samples + ((2 * y - inBlock) << (3 - HShift));
    }

    HWY_INLINE Pixels<V> Luma(ByteRange range) const { return Clamp(Join<HShift>(Load(0), Load(1)), range); }

    /// Chroma of the even pixels: Cb and Cr in turn.
    HWY_INLINE Pixels<V> ChromaPairs(ByteRange range) const {
        const V cb = Load(4);
        const V cr = Load(5);
        if constexpr (ChromaFormat == prxChroma422) {
            return Interleave(Clamp(cb, range), Clamp(cr, range));
        } else {
            return Clamp(Join<HShift>(EvenPairs(cb, cr), EvenPairs(Load(8), Load(9))), range);
        }
    }

    HWY_INLINE Pixels<V> Cb(ByteRange range) const { return Chroma(4, range); }
    HWY_INLINE Pixels<V> Cr(ByteRange range) const { return Chroma(5, range); }

private:
    /// Chroma of each pixel. In 4:2:2 two pixels get the same.
    HWY_INLINE Pixels<V> Chroma(int32_t block, ByteRange range) const {
        const V left = Clamp(Load(block), range);
        if constexpr (ChromaFormat == prxChroma422) {
            return Interleave(left, left);
        } else {
            return Join<HShift>(left, Clamp(Load(block + 4), range));
        }
    }

    HWY_INLINE V Load(ptrdiff_t block) const { return hn::LoadU(Words<HShift>(), row_ + block * blockSize_); }

    const int16_t* row_;
    ptrdiff_t blockSize_;
};

/// Sixteen bytes of one row, or of two where a vector takes both.
template <class D>
HWY_INLINE hn::Vec<D> JoinRows(D d, hn::Vec<DAlphaRow> upper, [[maybe_unused]] hn::Vec<DAlphaRow> lower) {
    if constexpr (hn::MaxLanes(d) == 32) {
        return hn::Combine(d, lower, upper);
    } else {
        return upper;
    }
}

/// Alpha of the pixels from row `y` on, one byte to a word. A reduced picture takes single samples: every
/// second one of each 2^vShift-th line.
template <int32_t HShift>
HWY_INLINE Pixels<hn::Vec<Words<HShift>>> LoadAlpha(const PrxMacroblock& macroblock, int32_t vShift,
                                                    int32_t y) {
    const Words<HShift> d;
    const int32_t last = std::min(y + RowsAtOnce<HShift>(), macroblock.rows) - 1;
    const auto upper = hn::LoadU(DAlphaRow(), macroblock.alpha + (y << vShift) * macroblock.alphaStride);
    const auto lower = hn::LoadU(DAlphaRow(), macroblock.alpha + (last << vShift) * macroblock.alphaStride);
    if constexpr (HShift == 0) {
        const hn::Repartition<uint8_t, decltype(d)> bytes;
        const auto widened = Interleave(JoinRows(bytes, upper, lower), hn::Zero(bytes));
        return {hn::BitCast(d, widened.first), hn::BitCast(d, widened.second)};
    } else {
        const auto even = hn::Set(d, 0xFF);
        return {hn::And(hn::BitCast(d, upper), even), hn::And(hn::BitCast(d, lower), even)};
    }
}

// ---------------------------------------------------------------------------------------------------------
// Stores

template <class V>
HWY_INLINE void StoreVector(V v, uint8_t* out) {
    const hn::Repartition<uint8_t, hn::DFromV<V>> bytes;
    hn::StoreU(hn::BitCast(bytes, v), bytes, out);
}

/// Where the next rows go.
struct Target {
    uint8_t* dst;
    ptrdiff_t stride;
    int32_t rows; ///< left to store, at least 1
};

/// Stores sixteen bytes of `left` and sixteen of `right` to each row.
template <class V>
HWY_INLINE void StoreHalves(V left, V right, const Target& target, ptrdiff_t offset) {
    const hn::DFromV<V> d;
    uint8_t* out = target.dst + offset;
    if constexpr (hn::MaxLanes(d) == 16) {
        StoreVector(hn::ConcatLowerLower(d, right, left), out);
        if (target.rows == 1) return;
        StoreVector(hn::ConcatUpperUpper(d, right, left), out + target.stride);
    } else {
        StoreVector(left, out);
        StoreVector(right, out + 16);
    }
}

template <int32_t HShift, class V>
HWY_INLINE void StoreTwoBytePixels(Pixels<V> pixels, const Target& target) {
    if constexpr (HShift == 0) {
        StoreHalves(pixels.first, pixels.second, target, 0);
    } else {
        StoreVector(pixels.first, target.dst);
        if (target.rows == 1) return;
        StoreVector(pixels.second, target.dst + target.stride);
    }
}

/// Stores pixels whose first two bytes are in `front` and whose others are in `back`.
template <int32_t HShift, class V>
HWY_INLINE void StoreFourBytePixels(Pixels<V> front, Pixels<V> back, const Target& target) {
    const Pixels<V> left = Interleave(front.first, back.first);
    const Pixels<V> right = Interleave(front.second, back.second);
    if constexpr (HShift == 0) {
        StoreHalves(left.first, left.second, target, 0);
        StoreHalves(right.first, right.second, target, 32);
    } else {
        StoreHalves(left.first, left.second, target, 0);
        if (target.rows == 1) return;
        StoreHalves(right.first, right.second, target, target.stride);
    }
}

// ---------------------------------------------------------------------------------------------------------
// Formats

template <uint32_t Format>
constexpr ByteRange chromaRange =
    Format == prxFormat2vuy || Format == prxFormatV408 ? withoutEnds : fullRange;
template <uint32_t Format>
constexpr ByteRange lumaRange = Format == prxFormatR408 ? fromBlack : chromaRange<Format>;
template <uint32_t Format>
constexpr int16_t opaqueAlpha = Format == prxFormatV408 ? 235 : 255;

template <class Reader>
HWY_INLINE void Write2vuyPixels(const Reader& reader, const Target& target) {
    constexpr ByteRange range = withoutEnds;
    StoreTwoBytePixels<Reader::hShift>(BytePairs(reader.ChromaPairs(range), reader.Luma(range), range, range),
                                       target);
}

template <uint32_t Format, class Reader>
HWY_INLINE void WriteAlphaPixels(const Reader& reader, Pixels<typename Reader::V> alpha,
                                 const Target& target) {
    constexpr ByteRange lumas = lumaRange<Format>;
    constexpr ByteRange chromas = chromaRange<Format>;
    const auto luma = reader.Luma(lumas);
    const auto cb = reader.Cb(chromas);
    const auto cr = reader.Cr(chromas);
    if constexpr (Format == prxFormatV408) {
        StoreFourBytePixels<Reader::hShift>(BytePairs(cb, luma, chromas, lumas),
                                            BytePairs(cr, alpha, chromas, finished), target);
    } else {
        StoreFourBytePixels<Reader::hShift>(BytePairs(alpha, luma, finished, lumas),
                                            BytePairs(cb, cr, chromas, chromas), target);
    }
}

template <uint32_t Format, int32_t ChromaFormat, int32_t HShift, bool HasAlpha>
void WriteMacroblock(const PrxMacroblock& macroblock, const PrxWriterSetup& setup) {
    // `v408` is stored at full size whatever the setup's shifts are. Kept.
    const int32_t vShift = Format == prxFormatV408 ? 0 : setup.vShift;
    const auto opaque = hn::Set(Words<HShift>(), opaqueAlpha<Format>);
    Target target = {macroblock.dst, macroblock.dstStride, macroblock.rows};
    for (int32_t y = 0; y < macroblock.rows; y += RowsAtOnce<HShift>()) {
        const PixelReader<ChromaFormat, HShift> reader(macroblock.samples, vShift, y);
        if constexpr (Format == prxFormat2vuy) {
            Write2vuyPixels(reader, target);
        } else if constexpr (HasAlpha) {
            WriteAlphaPixels<Format>(reader, LoadAlpha<HShift>(macroblock, vShift, y), target);
        } else {
            WriteAlphaPixels<Format>(reader, {opaque, opaque}, target);
        }
        target.dst += RowsAtOnce<HShift>() * target.stride;
        target.rows -= RowsAtOnce<HShift>();
    }
}

template <uint32_t Format, int32_t HShift>
PrxMacroblockWriter WriterOf(int32_t chromaFormat, bool hasAlpha) {
    constexpr bool takesAlpha = Format != prxFormat2vuy;
    if (chromaFormat == prxChroma422)
        return hasAlpha ? &WriteMacroblock<Format, prxChroma422, HShift, takesAlpha>
                        : &WriteMacroblock<Format, prxChroma422, HShift, false>;
    return hasAlpha ? &WriteMacroblock<Format, prxChroma444, HShift, takesAlpha>
                    : &WriteMacroblock<Format, prxChroma444, HShift, false>;
}

template <uint32_t Format>
PrxMacroblockWriter ReducibleWriter(int32_t chromaFormat, int32_t hShift, bool hasAlpha) {
    if (hShift > 1) return nullptr;
    return hShift == 0 ? WriterOf<Format, 0>(chromaFormat, hasAlpha)
                       : WriterOf<Format, 1>(chromaFormat, hasAlpha);
}

PrxMacroblockWriter PickWriter(uint32_t pixelFormat, int32_t chromaFormat, int32_t hShift, bool hasAlpha) {
    switch (pixelFormat) {
    case prxFormat2vuy: return ReducibleWriter<prxFormat2vuy>(chromaFormat, hShift, hasAlpha);
    case prxFormatR408: return ReducibleWriter<prxFormatR408>(chromaFormat, hShift, hasAlpha);
    case prxFormatY408: return ReducibleWriter<prxFormatY408>(chromaFormat, hShift, hasAlpha);
    case prxFormatV408: return WriterOf<prxFormatV408, 0>(chromaFormat, hasAlpha);
    default: return nullptr;
    }
}

#endif

} // namespace HWY_NAMESPACE
} // namespace prx_writers_8bit
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prx_writers_8bit {
namespace {
HWY_EXPORT(PickWriter);
} // namespace
} // namespace prx_writers_8bit

PrxMacroblockWriter PrxSelectVector8BitWriter(uint32_t pixelFormat, int32_t chromaFormat, int32_t hShift,
                                              bool hasAlpha) {
    if (chromaFormat != prxChroma422 && chromaFormat != prxChroma444) return nullptr;
    return HWY_DYNAMIC_DISPATCH(prx_writers_8bit::PickWriter)(pixelFormat, chromaFormat, hShift, hasAlpha);
}
#endif
