#include "prores/PrxWriters16BitVector.h"

#include <algorithm>
#include <array>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "prores/PrxWriters16BitVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "prores/PrxBlockRows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prx_writers_16bit {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors there is nothing to gain on the scalar form.
PrxMacroblockWriter PickWriter(uint32_t, int32_t, bool) { return nullptr; }

#else

namespace hn = hwy::HWY_NAMESPACE;
namespace rows = prx_block_rows::HWY_NAMESPACE;

using DSample = hn::Repartition<int16_t, rows::DRows>;
using DWord = hn::RebindToUnsigned<DSample>;
using DPair = hn::Repartition<uint32_t, rows::DRows>;
using VSample = hn::Vec<DSample>;
using VWord = hn::Vec<DWord>;

/// Rows of a vector.
constexpr int32_t rowCount = static_cast<int32_t>(rows::rowCount);

// ---------------------------------------------------------------------------------------------------------
// Samples and words

/// Samples of block `block`, rows from `y` on.
HWY_INLINE VSample LoadSamples(const int16_t* samples, int32_t block, int32_t y) {
    return hn::LoadU(DSample(), samples + 64 * block + 8 * y);
}

/// Samples limited to `Lowest`..`Highest`, at the top of 16 bits, with 0 in the middle.
template <int16_t Lowest, int16_t Highest, int Shift>
HWY_INLINE VWord ToWords(VSample samples) {
    const DSample d;
    const VSample limited = hn::Min(hn::Max(samples, hn::Set(d, Lowest)), hn::Set(d, Highest));
    return hn::Xor(hn::BitCast(DWord(), hn::ShiftLeft<Shift>(limited)), hn::Set(DWord(), 0x8000));
}

struct From13Bits {
    HWY_INLINE VWord operator()(VSample samples) const { return ToWords<-4096, 4095, 3>(samples); }
};
struct From10Bits {
    HWY_INLINE VWord operator()(VSample samples) const { return ToWords<-508, 507, 6>(samples); }
};

template <bool Streams>
HWY_INLINE void StoreWords(VWord v0, VWord v1, VWord v2, VWord v3, uint8_t* out, ptrdiff_t stride) {
    const rows::DRows d;
    rows::StoreRows<Streams>(d, hn::BitCast(d, v0), hn::BitCast(d, v1), hn::BitCast(d, v2),
                             hn::BitCast(d, v3), out, stride);
}

/// Where the rows of a vector stand among a macroblock's blocks.
struct Place {
    explicit Place(int32_t row) : lower(row >> 3), y(row & 7) {}

    int32_t Luma(int32_t column) const { return 2 * lower + column; }
    int32_t Cb(int32_t column) const { return 4 + 2 * (2 * column + lower); }
    int32_t Cr(int32_t column) const { return Cb(column) + 1; }

    int32_t lower; ///< 1 in the lower half of the macroblock
    int32_t y;     ///< row in the blocks
};

// ---------------------------------------------------------------------------------------------------------
// Cb Y0 Cr Y1

template <int32_t ChromaFormat, typename Convert>
struct Rows422 {
    static constexpr int32_t rowBytes = 64;

    /// Stores `rowCount` rows from `row` on.
    template <bool Streams>
    static HWY_INLINE void Write(const PrxMacroblock& macroblock, int32_t row, uint8_t* out,
                                 ptrdiff_t stride) {
        const Place place(row);
        const VWord leftLuma = Convert()(LoadSamples(macroblock.samples, place.Luma(0), place.y));
        const VWord rightLuma = Convert()(LoadSamples(macroblock.samples, place.Luma(1), place.y));
        const VWord leftChroma = Convert()(ChromaPairs(macroblock.samples, place, 0));
        const VWord rightChroma = Convert()(ChromaPairs(macroblock.samples, place, 1));
        StoreWords<Streams>(hn::InterleaveLower(DWord(), leftChroma, leftLuma),
                            hn::InterleaveUpper(DWord(), leftChroma, leftLuma),
                            hn::InterleaveLower(DWord(), rightChroma, rightLuma),
                            hn::InterleaveUpper(DWord(), rightChroma, rightLuma), out, stride);
    }

private:
    /// Cb Cr of each pair of pixels in a column of luma blocks. Odd pixels of a 4:4:4 stream are dropped.
    static HWY_INLINE VSample ChromaPairs(const int16_t* samples, const Place& place, int32_t column) {
        const int32_t chromaColumn = ChromaFormat == prxChroma444 ? column : 0;
        const VSample cb = LoadSamples(samples, place.Cb(chromaColumn), place.y);
        const VSample cr = LoadSamples(samples, place.Cr(chromaColumn), place.y);
        if constexpr (ChromaFormat == prxChroma444) {
            const auto evenCrUp = hn::ShiftLeft<16>(hn::BitCast(DPair(), cr));
            return hn::OddEven(hn::BitCast(DSample(), evenCrUp), cb);
        } else {
            return column == 0 ? hn::InterleaveLower(DSample(), cb, cr)
                               : hn::InterleaveUpper(DSample(), cb, cr);
        }
    }
};

// ---------------------------------------------------------------------------------------------------------
// A Y Cb Cr

/// The words of the even pixels on the right of the odd pixels of a macroblock. The last has none in the
/// macroblock, and gets its own left neighbour.
HWY_INLINE VWord NextWords(VWord words) {
    alignas(16) static constexpr std::array<uint8_t, 16> next = {2,  3,  4,  5,  6,  7,  8,  9,
                                                                 10, 11, 12, 13, 14, 15, 14, 15};
    const rows::DRows d;
    return hn::BitCast(DWord(), hn::TableLookupBytes(hn::BitCast(d, words), hn::LoadDup128(d, next.data())));
}

/// Words of one chroma component for the left and the right eight pixels.
struct ChromaWords {
    VWord left;
    VWord right;
};

template <int32_t ChromaFormat>
HWY_INLINE ChromaWords ChromaOfPixels(const int16_t* samples, int32_t leftBlock, int32_t rightBlock,
                                      int32_t y) {
    const VWord left = From13Bits()(LoadSamples(samples, leftBlock, y));
    if constexpr (ChromaFormat == prxChroma444) {
        return {left, From13Bits()(LoadSamples(samples, rightBlock, y))};
    } else {
        const VWord odd = hn::AverageRound(left, NextWords(left));
        return {hn::InterleaveLower(DWord(), left, odd), hn::InterleaveUpper(DWord(), left, odd)};
    }
}

template <int32_t ChromaFormat, bool HasAlpha>
struct RowsY416 {
    static constexpr int32_t rowBytes = 128;

    /// Stores `rowCount` rows from `row` on.
    template <bool Streams>
    static HWY_INLINE void Write(const PrxMacroblock& macroblock, int32_t row, uint8_t* out,
                                 ptrdiff_t stride) {
        const Place place(row);
        const int16_t* samples = macroblock.samples;
        const ChromaWords cb = ChromaOfPixels<ChromaFormat>(samples, place.Cb(0), place.Cb(1), place.y);
        const ChromaWords cr = ChromaOfPixels<ChromaFormat>(samples, place.Cr(0), place.Cr(1), place.y);
        const VWord leftLuma = From13Bits()(LoadSamples(samples, place.Luma(0), place.y));
        const VWord rightLuma = From13Bits()(LoadSamples(samples, place.Luma(1), place.y));
        StorePixels<Streams>(Alpha(macroblock, row, 0), leftLuma, cb.left, cr.left, out, stride);
        StorePixels<Streams>(Alpha(macroblock, row, 16), rightLuma, cb.right, cr.right, out + 64, stride);
    }

private:
    static HWY_INLINE VWord Alpha(const PrxMacroblock& macroblock, int32_t row, int32_t byte) {
        if constexpr (HasAlpha) {
            const uint8_t* first = macroblock.alpha + row * macroblock.alphaStride + byte;
            return hn::BitCast(
                DWord(), rows::LoadRows(rows::DRows(), first, macroblock.alphaStride, macroblock.rows - row));
        } else {
            return hn::Set(DWord(), 0xFFFF);
        }
    }

    template <bool Streams>
    static HWY_INLINE void StorePixels(VWord a, VWord y, VWord cb, VWord cr, uint8_t* out, ptrdiff_t stride) {
        const DWord d;
        const DPair pairs;
        const auto lowerAy = hn::BitCast(pairs, hn::InterleaveLower(d, a, y));
        const auto upperAy = hn::BitCast(pairs, hn::InterleaveUpper(d, a, y));
        const auto lowerChroma = hn::BitCast(pairs, hn::InterleaveLower(d, cb, cr));
        const auto upperChroma = hn::BitCast(pairs, hn::InterleaveUpper(d, cb, cr));
        StoreWords<Streams>(hn::BitCast(d, hn::InterleaveLower(pairs, lowerAy, lowerChroma)),
                            hn::BitCast(d, hn::InterleaveUpper(pairs, lowerAy, lowerChroma)),
                            hn::BitCast(d, hn::InterleaveLower(pairs, upperAy, upperChroma)),
                            hn::BitCast(d, hn::InterleaveUpper(pairs, upperAy, upperChroma)), out, stride);
    }
};

// ---------------------------------------------------------------------------------------------------------
// Macroblocks

/// Stores the last rows, fewer than a vector holds, by way of a copy.
template <class Rows>
HWY_NOINLINE void WriteLastRows(const PrxMacroblock& macroblock, int32_t row) {
    alignas(64) std::array<uint8_t, rowCount * Rows::rowBytes> copy;
    Rows::template Write<false>(macroblock, row, copy.data(), Rows::rowBytes);
    for (const uint8_t* in = copy.data(); row < macroblock.rows; ++row, in += Rows::rowBytes)
        std::memcpy(macroblock.dst + row * macroblock.dstStride, in, Rows::rowBytes);
}

template <class Rows, bool Streams>
HWY_INLINE void WriteRows(const PrxMacroblock& macroblock) {
    int32_t row = 0;
    for (; row + rowCount <= macroblock.rows; row += rowCount)
        Rows::template Write<Streams>(macroblock, row, macroblock.dst + row * macroblock.dstStride,
                                      macroblock.dstStride);
    if (row < macroblock.rows) WriteLastRows<Rows>(macroblock, row);
}

template <class Rows>
void WriteMacroblock(const PrxMacroblock& macroblock, const PrxWriterSetup& setup) {
    const auto place = reinterpret_cast<uintptr_t>(macroblock.dst);
    const bool inLines = (place | static_cast<uintptr_t>(macroblock.dstStride)) % rows::lineBytes == 0;
    if (setup.streams && inLines) {
        WriteRows<Rows, true>(macroblock);
    } else {
        WriteRows<Rows, false>(macroblock);
    }
}

template <int32_t ChromaFormat>
PrxMacroblockWriter WriterOf(uint32_t pixelFormat, bool hasAlpha) {
    switch (pixelFormat) {
    case prxFormatV216: return WriteMacroblock<Rows422<ChromaFormat, From13Bits>>;
    case prxFormatW216: return WriteMacroblock<Rows422<ChromaFormat, From10Bits>>;
    case prxFormatY416:
        return hasAlpha ? WriteMacroblock<RowsY416<ChromaFormat, true>>
                        : WriteMacroblock<RowsY416<ChromaFormat, false>>;
    default: return nullptr;
    }
}

PrxMacroblockWriter PickWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha) {
    if (chromaFormat == prxChroma422) return WriterOf<prxChroma422>(pixelFormat, hasAlpha);
    if (chromaFormat == prxChroma444) return WriterOf<prxChroma444>(pixelFormat, hasAlpha);
    return nullptr;
}

#endif

} // namespace HWY_NAMESPACE
} // namespace prx_writers_16bit
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prx_writers_16bit {
namespace {
HWY_EXPORT(PickWriter);
} // namespace
} // namespace prx_writers_16bit

PrxMacroblockWriter PrxSelectVector16BitWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha) {
    using namespace prx_writers_16bit;
    return HWY_DYNAMIC_DISPATCH(PickWriter)(pixelFormat, chromaFormat, hasAlpha);
}
#endif
