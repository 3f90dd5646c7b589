#include "prores/encoder/PrxInputYuvVector.h"

#include "prores/PrxFormats.h"
#include "prores/PrxRoundToNearest.h"
#include "prores/encoder/PrxInputEdges.h"
#include "prores/encoder/PrxInputYuv.h"

#include <array>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "prores/encoder/PrxInputYuvVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "prores/encoder/PrxInputRows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prx_input_yuv {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors there is nothing to gain on the scalar form.
PrxConvertMacroblock PickConverter(uint32_t, int32_t) { return nullptr; }

#else

namespace hn = hwy::HWY_NAMESPACE;
using namespace prx_input_rows::HWY_NAMESPACE;

/// From words of Cb and Cr in turn to four of Cb and then four of Cr.
HWY_INLINE VWord GatherChroma(VWord pairs) {
    alignas(16) static constexpr Shuffle gather = WordShuffle({0, 2, 4, 6, 1, 3, 5, 7});
    return ShuffleWords(pairs, gather);
}

// ---------------------------------------------------------------------------------------------------------
// Words of a pixel format, and the samples that they become

/// Codes of 16 bits, rounded to 12 and at most the largest.
struct FromCodes {
    HWY_INLINE VSample operator()(VWord words) const {
        const DSample d;
        const VSample centred = hn::BitCast(d, hn::Xor(words, hn::Set(DWord(), 0x8000)));
        const VSample rounded = hn::MulFixedPoint15(centred, hn::Set(d, 1 << 11)); // (centred + 8) >> 4
        return hn::Min(rounded, hn::Set(d, 2047));
    }
};

/// Codes of 8 bits in the upper half of a word.
struct FromHighBytes {
    HWY_INLINE VSample operator()(VWord words) const {
        return hn::ShiftRight<4>(hn::BitCast(DSample(), hn::Xor(words, hn::Set(DWord(), 0x8000))));
    }
};

struct FromSamples {
    HWY_INLINE VSample operator()(VWord words) const { return hn::BitCast(DSample(), words); }
};

// ---------------------------------------------------------------------------------------------------------
// Packed 4:2:2

/// Words of eight pixels of each row.
struct PackedWords {
    VWord luma;
    VWord chroma; ///< four of Cb and then four of Cr
};

/// Cb Y Cr Y of 16 bits.
struct V216Pixels {
    static constexpr ptrdiff_t bytes = 4;
    using ToSamples = FromCodes;

    static HWY_INLINE PackedWords LoadEight(const uint8_t* source, ptrdiff_t rowBytes) {
        alignas(16) static constexpr Shuffle gather = WordShuffle({0, 4, 2, 6, 1, 3, 5, 7});
        const VByte first = ShuffleBytes(Load(source, rowBytes), gather);
        const VByte second = ShuffleBytes(Load(source + 16, rowBytes), gather);
        return {UpperHalves(first, second), LowerPairs(first, second)};
    }
};

/// Cb Y Cr Y of 8 bits, or Y Cb Y Cr.
template <bool LumaFirst>
struct BytePackedPixels {
    static constexpr ptrdiff_t bytes = 2;
    using ToSamples = FromHighBytes;

    static HWY_INLINE PackedWords LoadEight(const uint8_t* source, ptrdiff_t rowBytes) {
        const VWord words = hn::BitCast(DWord(), Load(source, rowBytes));
        const VWord first = hn::ShiftLeft<8>(words);
        const VWord second = hn::And(words, hn::Set(DWord(), 0xFF00));
        return LumaFirst ? PackedWords{first, GatherChroma(second)}
                         : PackedWords{second, GatherChroma(first)};
    }
};

template <class Pixels>
HWY_INLINE void Store422(const PackedWords& left, const PackedWords& right, int16_t* rowsOfHalf) {
    const typename Pixels::ToSamples toSamples;
    Store(toSamples(left.luma), leftLuma, rowsOfHalf);
    Store(toSamples(right.luma), rightLuma, rowsOfHalf);
    Store(toSamples(LowerHalves(left.chroma, right.chroma)), leftCb, rowsOfHalf);
    Store(toSamples(UpperHalves(left.chroma, right.chroma)), leftCr, rowsOfHalf);
}

template <class Pixels>
struct PackedRows {
    static HWY_INLINE void Convert(const uint8_t* source, ptrdiff_t rowBytes, int16_t* rowsOfHalf) {
        Store422<Pixels>(Pixels::LoadEight(source, rowBytes),
                         Pixels::LoadEight(source + 8 * Pixels::bytes, rowBytes), rowsOfHalf);
    }
};

// ---------------------------------------------------------------------------------------------------------
// Four channels a pixel

/// Words of eight pixels of each row.
struct FullWords {
    VWord luma;
    VWord cb;
    VWord cr;
};

/// From eight pixels, two of them in each vector: A A Y Y Cb Cb Cr Cr.
HWY_INLINE FullWords SplitChannels(VWord v0, VWord v1, VWord v2, VWord v3) {
    const VWord chroma01 = UpperPairs(v0, v1);
    const VWord chroma23 = UpperPairs(v2, v3);
    return {UpperHalves(LowerPairs(v0, v1), LowerPairs(v2, v3)), LowerHalves(chroma01, chroma23),
            UpperHalves(chroma01, chroma23)};
}

/// A Y Cb Cr of 16 bits.
struct Y416Pixels {
    static constexpr ptrdiff_t bytes = 8;
    using ToSamples = FromCodes;

    static HWY_INLINE FullWords LoadEight(const uint8_t* source, ptrdiff_t rowBytes) {
        return SplitChannels(LoadTwo(source, rowBytes), LoadTwo(source + 16, rowBytes),
                             LoadTwo(source + 32, rowBytes), LoadTwo(source + 48, rowBytes));
    }

private:
    static HWY_INLINE VWord LoadTwo(const uint8_t* source, ptrdiff_t rowBytes) {
        alignas(16) static constexpr Shuffle gather = WordShuffle({0, 4, 1, 5, 2, 6, 3, 7});
        return hn::BitCast(DWord(), ShuffleBytes(Load(source, rowBytes), gather));
    }
};

/// A Y Cb Cr of floats.
struct R4flPixels {
    static constexpr ptrdiff_t bytes = 16;
    using ToSamples = FromSamples;

    static HWY_INLINE FullWords LoadEight(const uint8_t* source, ptrdiff_t rowBytes) {
        return SplitChannels(LoadTwo(source, rowBytes), LoadTwo(source + 32, rowBytes),
                             LoadTwo(source + 64, rowBytes), LoadTwo(source + 96, rowBytes));
    }

private:
    static HWY_INLINE VWord LoadTwo(const uint8_t* source, ptrdiff_t rowBytes) {
        const DPair d;
        const auto first = hn::BitCast(d, LoadOne(source, rowBytes));
        const auto second = hn::BitCast(d, LoadOne(source + 16, rowBytes));
        return hn::BitCast(DWord(), hn::Or(hn::And(first, hn::Set(d, 0xFFFF)), hn::ShiftLeft<16>(second)));
    }

    /// The samples of a pixel; alpha becomes something of no use. What is not a number counts as 0.
    static HWY_INLINE VInt LoadOne(const uint8_t* source, ptrdiff_t rowBytes) {
        using namespace prx_float_input;
        alignas(16) static constexpr std::array<int32_t, 4> offsets = {0, lumaOffset, chromaOffset,
                                                                       chromaOffset};
        const DFloat d;
        const auto offset = hn::LoadDup128(DInt(), offsets.data());
        const auto floatOffset = hn::ConvertTo(d, offset);
        const auto value = hn::BitCast(d, Load(source, rowBytes));
        const auto number = hn::IfThenElseZero(hn::Eq(value, value), value);
        const auto scaled = hn::Mul(number, hn::Set(d, scale));
        const auto least = hn::Add(floatOffset, hn::Set(d, static_cast<float>(lowest)));
        const auto most = hn::Add(floatOffset, hn::Set(d, static_cast<float>(highest)));
        return hn::Sub(hn::NearestInt(hn::Min(hn::Max(scaled, least), most)), offset);
    }
};

/// Four channels of 8 bits.
template <uint32_t PixelFormat>
struct BytePixels {
    static constexpr ptrdiff_t bytes = 4;
    using ToSamples = FromHighBytes;

    static HWY_INLINE FullWords LoadEight(const uint8_t* source, ptrdiff_t rowBytes) {
        const DByte d;
        const VByte zero = hn::Zero(d);
        const VByte first = LoadFour(source, rowBytes);
        const VByte second = LoadFour(source + 16, rowBytes);
        const VByte lumaCb = hn::BitCast(d, LowerPairs(first, second));
        const VByte cr = hn::BitCast(d, UpperPairs(first, second));
        return {hn::BitCast(DWord(), hn::InterleaveLower(d, zero, lumaCb)),
                hn::BitCast(DWord(), hn::InterleaveUpper(d, zero, lumaCb)),
                hn::BitCast(DWord(), hn::InterleaveLower(d, zero, cr))};
    }

private:
    /// Four pixels as Y Y Y Y Cb Cb Cb Cb Cr Cr Cr Cr and what is left.
    static HWY_INLINE VByte LoadFour(const uint8_t* source, ptrdiff_t rowBytes) {
        alignas(16) static constexpr Shuffle fromAyCbCr = {1, 5, 9,  13, 2, 6, 10, 14,
                                                           3, 7, 11, 15, 0, 4, 8,  12};
        alignas(16) static constexpr Shuffle fromCbYCrA = {1, 5, 9,  13, 0, 4, 8,  12,
                                                           2, 6, 10, 14, 3, 7, 11, 15};
        VByte pixels = Load(source, rowBytes);
        // Black is 0; codes that pass 255 here all become 255. Kept.
        if constexpr (PixelFormat == prxFormatR408)
            pixels = hn::SaturatedAdd(pixels, hn::BitCast(DByte(), hn::Set(DPair(), 16 << 8)));
        return ShuffleBytes(pixels, PixelFormat == prxFormatV408 ? fromCbYCrA : fromAyCbCr);
    }
};

/// The chroma of the even pixels.
HWY_INLINE PackedWords ToPacked(const FullWords& words) {
    const VWord evenCrUp = hn::BitCast(DWord(), hn::ShiftLeft<16>(hn::BitCast(DPair(), words.cr)));
    return {words.luma, GatherChroma(hn::OddEven(evenCrUp, words.cb))};
}

template <class Pixels, int32_t ChromaFormat>
struct FullRows {
    static HWY_INLINE void Convert(const uint8_t* source, ptrdiff_t rowBytes, int16_t* rowsOfHalf) {
        const FullWords left = Pixels::LoadEight(source, rowBytes);
        const FullWords right = Pixels::LoadEight(source + 8 * Pixels::bytes, rowBytes);
        if constexpr (ChromaFormat == prxChroma444) {
            const typename Pixels::ToSamples toSamples;
            Store(toSamples(left.luma), leftLuma, rowsOfHalf);
            Store(toSamples(right.luma), rightLuma, rowsOfHalf);
            Store(toSamples(left.cb), leftCb, rowsOfHalf);
            Store(toSamples(left.cr), leftCr, rowsOfHalf);
            Store(toSamples(right.cb), rightCb, rowsOfHalf);
            Store(toSamples(right.cr), rightCr, rowsOfHalf);
        } else {
            Store422<Pixels>(ToPacked(left), ToPacked(right), rowsOfHalf);
        }
    }
};

// ---------------------------------------------------------------------------------------------------------
// Macroblocks

template <class Rows>
void Convert(const uint8_t* source, ptrdiff_t rowBytes, int16_t* blocks, int32_t) {
    ForEachVector(Rows(), source, rowBytes, blocks);
}

/// Floats depend on the mode of rounding.
template <int32_t ChromaFormat>
HWY_NOINLINE void ConvertFloats(const uint8_t* source, ptrdiff_t rowBytes, int16_t* blocks) {
    ForEachVector(FullRows<R4flPixels, ChromaFormat>(), source, rowBytes, blocks);
}
template <int32_t ChromaFormat>
void ConvertFloatsNearest(const uint8_t* source, ptrdiff_t rowBytes, int16_t* blocks, int32_t) {
    PrxRunRoundingToNearest<&ConvertFloats<ChromaFormat>>(source, rowBytes, blocks);
}

template <uint32_t PixelFormat, class Pixels, int32_t ChromaFormat>
constexpr PrxConvertMacroblock fullConverter =
    PrxConvertWithEdges<PixelFormat, Convert<FullRows<Pixels, ChromaFormat>>>;

template <int32_t ChromaFormat>
PrxConvertMacroblock FullConverterOf(uint32_t pixelFormat) {
    switch (pixelFormat) {
    case prxFormatY408: return fullConverter<prxFormatY408, BytePixels<prxFormatY408>, ChromaFormat>;
    case prxFormatV408: return fullConverter<prxFormatV408, BytePixels<prxFormatV408>, ChromaFormat>;
    case prxFormatR408: return fullConverter<prxFormatR408, BytePixels<prxFormatR408>, ChromaFormat>;
    case prxFormatY416: return fullConverter<prxFormatY416, Y416Pixels, ChromaFormat>;
    case prxFormatR4fl: return PrxConvertWithEdges<prxFormatR4fl, ConvertFloatsNearest<ChromaFormat>>;
    default: return nullptr;
    }
}

PrxConvertMacroblock PickConverter(uint32_t pixelFormat, int32_t chromaFormat) {
    if (chromaFormat == prxChroma444) return FullConverterOf<prxChroma444>(pixelFormat);
    if (chromaFormat != prxChroma422) return nullptr;
    switch (pixelFormat) {
    case prxFormat2vuy:
        return PrxConvertWithEdges<prxFormat2vuy, Convert<PackedRows<BytePackedPixels<false>>>>;
    case prxFormatYuvs:
        return PrxConvertWithEdges<prxFormatYuvs, Convert<PackedRows<BytePackedPixels<true>>>>;
    case prxFormatV216: return PrxConvertWithEdges<prxFormatV216, Convert<PackedRows<V216Pixels>>>;
    default: return FullConverterOf<prxChroma422>(pixelFormat);
    }
}

#endif

} // namespace HWY_NAMESPACE
} // namespace prx_input_yuv
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prx_input_yuv {
namespace {
HWY_EXPORT(PickConverter);
} // namespace
} // namespace prx_input_yuv

PrxConvertMacroblock PrxGetVectorYuvConverter(uint32_t pixelFormat, int32_t chromaFormat) {
    return HWY_DYNAMIC_DISPATCH(prx_input_yuv::PickConverter)(pixelFormat, chromaFormat);
}
#endif
