// The steps between buffers and lines on vectors. For inclusion once for each
// instruction set, as Highway does it.

#if defined(CORVEX_HOST_COLOR_CONVERT_VECTOR_PACK_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CORVEX_HOST_COLOR_CONVERT_VECTOR_PACK_INL_H
#undef CORVEX_HOST_COLOR_CONVERT_VECTOR_PACK_INL_H
#else
#define CORVEX_HOST_COLOR_CONVERT_VECTOR_PACK_INL_H
#endif

#include "host/ColorConvertScalar.h"

#include <array>
#include <type_traits>

#include <hwy/highway.h>

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace color_vector {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using color_samples::QuadOrder;
using Scalar = color_scalar::Steps;

// All lines are worked on in vectors of floats; samples of buffers are taken as many at a time.
using DF = hn::ScalableTag<float>;
using VF = hn::Vec<DF>;
using D32 = hn::RebindToUnsigned<DF>;
using V32 = hn::Vec<D32>;
using D16 = hn::Rebind<uint16_t, DF>;
using D8 = hn::Rebind<uint8_t, DF>;

HWY_INLINE int64_t BlockSize() { return static_cast<int64_t>(hn::Lanes(DF())); }

// ---------------------------------------------------------------------------------------------------------
// Samples. Memory of words is handed to Highway as such; its unaligned loads and stores take any address.

HWY_INLINE VF ToFloats(V32 codes) {
    return hn::ConvertTo(DF(), hn::BitCast(hn::RebindToSigned<DF>(), codes));
}

template <typename T>
HWY_INLINE VF LoadCodes(const uint8_t* row, int64_t index) {
    const hn::Rebind<T, DF> d;
    return ToFloats(hn::PromoteTo(D32(), hn::LoadU(d, reinterpret_cast<const T*>(row) + index)));
}

HWY_INLINE V32 LoadWords(const uint8_t* row, int64_t index) {
    return hn::LoadU(D32(), reinterpret_cast<const uint32_t*>(row) + index);
}

HWY_INLINE void StoreWords(V32 words, uint8_t* row, int64_t index) {
    hn::StoreU(words, D32(), reinterpret_cast<uint32_t*>(row) + index);
}

/// The lower `Bits` bits of codes, from bit `Shift` on.
template <int Bits, int Shift>
HWY_INLINE VF Field(V32 words) {
    return ToFloats(hn::And(hn::ShiftRight<Shift>(words), hn::Set(D32(), (1u << Bits) - 1)));
}

HWY_INLINE VF Load(const float* line, int64_t x) { return hn::LoadU(DF(), line + x); }
HWY_INLINE void Store(VF v, float* line, int64_t x) { hn::StoreU(v, DF(), line + x); }

HWY_INLINE V32 Quantize(VF v, ColorLimits limits) {
    const VF limited = hn::Min(hn::Max(v, hn::Set(DF(), limits.least)), hn::Set(DF(), limits.most));
    const VF rounded = hn::Add(limited, hn::Set(DF(), 0.5f));
    return hn::BitCast(D32(), hn::ConvertTo(hn::RebindToSigned<DF>(), rounded));
}

HWY_INLINE V32 LoadQuantized(const float* line, int64_t x, ColorLimits limits) {
    return Quantize(Load(line, x), limits);
}

template <typename T>
HWY_INLINE hn::Vec<hn::Rebind<T, DF>> Narrow(V32 codes) {
    return hn::DemoteTo(hn::Rebind<T, DF>(), hn::BitCast(hn::RebindToSigned<DF>(), codes));
}

template <typename T>
HWY_INLINE void StoreCodes(V32 codes, uint8_t* row, int64_t index) {
    hn::StoreU(Narrow<T>(codes), hn::Rebind<T, DF>(), reinterpret_cast<T*>(row) + index);
}

/// Two codes to each lane, four to a pixel.
template <typename T>
HWY_INLINE void StoreQuads(V32 low, V32 high, uint8_t* row, int64_t index) {
    if constexpr (std::is_same_v<T, uint8_t>) {
        StoreWords(hn::Or(low, hn::ShiftLeft<16>(high)), row, index);
    } else {
        hn::StoreInterleaved2(low, high, D32(), reinterpret_cast<uint32_t*>(row) + 2 * index);
    }
}

/// What is not a number as 0, the rest limited, as the scalar form has it.
template <class D>
HWY_INLINE hn::Vec<D> Sane(D d, hn::Vec<D> v) {
    const auto number = hn::IfThenElseZero(hn::Eq(v, v), v);
    return hn::Min(hn::Max(number, hn::Set(d, -colorFloatLimit)), hn::Set(d, colorFloatLimit));
}

// ---------------------------------------------------------------------------------------------------------

/// Each step takes as many whole blocks as there are between `begin` and `end`, and leaves the rest of the
/// row to the scalar form.
struct PackSteps {
    // Strings of C Y and C Y A

    template <typename T, bool HasAlpha>
    static void UnpackPairs(const uint8_t* row, const ColorLines& lines, int64_t begin, int64_t end) {
        int64_t x = begin;
        for (; x + BlockSize() <= end; x += BlockSize()) {
            VF chroma, luma;
            if constexpr (HasAlpha) {
                const hn::Rebind<T, DF> d;
                hn::Vec<decltype(d)> c, y, a;
                hn::LoadInterleaved3(d, reinterpret_cast<const T*>(row) + 3 * x, c, y, a);
                chroma = ToFloats(hn::PromoteTo(D32(), c));
                luma = ToFloats(hn::PromoteTo(D32(), y));
                Store(ToFloats(hn::PromoteTo(D32(), a)), lines.alpha, x);
            } else if constexpr (std::is_same_v<T, uint8_t>) {
                const auto both = hn::LoadU(D16(), reinterpret_cast<const uint16_t*>(row) + x);
                chroma = Field<8, 0>(hn::PromoteTo(D32(), both));
                luma = Field<8, 8>(hn::PromoteTo(D32(), both));
            } else {
                const V32 both = LoadWords(row, x);
                chroma = Field<16, 0>(both);
                luma = Field<16, 16>(both);
            }
            Store(chroma, lines.chroma, x);
            Store(luma, lines.luma, x);
        }
        Scalar::UnpackPairs<T, HasAlpha>(row, lines, x, end);
    }

    template <typename T, bool HasAlpha>
    static void PackPairs(const ColorLines& lines, const ColorRange& range, uint8_t* row, int64_t begin,
                          int64_t end) {
        int64_t x = begin;
        for (; x + BlockSize() <= end; x += BlockSize()) {
            const V32 c = LoadQuantized(lines.chroma, x, range.chroma);
            const V32 y = LoadQuantized(lines.luma, x, range.luma);
            if constexpr (HasAlpha) {
                const V32 a = LoadQuantized(lines.alpha, x, color_samples::AlphaLimits(range));
                hn::StoreInterleaved3(Narrow<T>(c), Narrow<T>(y), Narrow<T>(a), hn::Rebind<T, DF>(),
                                      reinterpret_cast<T*>(row) + 3 * x);
            } else if constexpr (std::is_same_v<T, uint8_t>) {
                StoreCodes<uint16_t>(hn::Or(c, hn::ShiftLeft<8>(y)), row, x);
            } else {
                StoreWords(hn::Or(c, hn::ShiftLeft<16>(y)), row, x);
            }
        }
        Scalar::PackPairs<T, HasAlpha>(lines, range, row, x, end);
    }

    static void ExpandTens(const uint8_t* row, uint16_t* samples, int64_t begin, int64_t end) {
        const V32 tenBits = hn::Set(D32(), 0x3ff);
        int64_t i = begin;
        for (; i + BlockSize() <= end; i += BlockSize()) {
            const V32 words = LoadWords(row, i);
            hn::StoreInterleaved3(Narrow<uint16_t>(hn::And(words, tenBits)),
                                  Narrow<uint16_t>(hn::And(hn::ShiftRight<10>(words), tenBits)),
                                  Narrow<uint16_t>(hn::And(hn::ShiftRight<20>(words), tenBits)), D16(),
                                  samples + 3 * i);
        }
        Scalar::ExpandTens(row, samples, i, end);
    }

    static void CompressTens(const uint16_t* samples, uint8_t* row, int64_t begin, int64_t end) {
        int64_t i = begin;
        for (; i + BlockSize() <= end; i += BlockSize()) {
            hn::Vec<D16> low, middle, high;
            hn::LoadInterleaved3(D16(), samples + 3 * i, low, middle, high);
            const V32 words =
                hn::Or(hn::PromoteTo(D32(), low), hn::ShiftLeft<10>(hn::PromoteTo(D32(), middle)));
            StoreWords(hn::Or(words, hn::ShiftLeft<20>(hn::PromoteTo(D32(), high))), row, i);
        }
        Scalar::CompressTens(samples, row, i, end);
    }

    // Four samples to a pixel

    template <typename T, QuadOrder Order>
    static void UnpackQuads(const uint8_t* row, const ColorLines& lines, int64_t begin, int64_t end) {
        const auto ordered = color_samples::LinesInOrder<Order>(lines);
        int64_t x = begin;
        for (; x + BlockSize() <= end; x += BlockSize()) {
            VF v0, v1, v2, v3;
            if constexpr (std::is_same_v<T, float>) {
                hn::LoadInterleaved4(DF(), reinterpret_cast<const float*>(row) + 4 * x, v0, v1, v2, v3);
                v0 = Sane(DF(), v0);
                v1 = Sane(DF(), v1);
                v2 = Sane(DF(), v2);
                v3 = Sane(DF(), v3);
            } else if constexpr (std::is_same_v<T, uint8_t>) {
                const V32 words = LoadWords(row, x);
                v0 = Field<8, 0>(words);
                v1 = Field<8, 8>(words);
                v2 = Field<8, 16>(words);
                v3 = Field<8, 24>(words);
            } else {
                V32 low, high;
                hn::LoadInterleaved2(D32(), reinterpret_cast<const uint32_t*>(row) + 2 * x, low, high);
                v0 = Field<16, 0>(low);
                v1 = Field<16, 16>(low);
                v2 = Field<16, 0>(high);
                v3 = Field<16, 16>(high);
            }
            Store(v0, ordered[0], x);
            Store(v1, ordered[1], x);
            Store(v2, ordered[2], x);
            Store(v3, ordered[3], x);
        }
        Scalar::UnpackQuads<T, Order>(row, lines, x, end);
    }

    template <typename T, QuadOrder Order>
    static void PackQuads(const ColorLines& lines, const ColorRange& range, uint8_t* row, int64_t begin,
                          int64_t end) {
        const auto ordered = color_samples::LinesInOrder<Order>(lines);
        const auto limits = color_samples::LimitsInOrder<Order>(range);
        int64_t x = begin;
        for (; x + BlockSize() <= end; x += BlockSize()) {
            if constexpr (std::is_same_v<T, float>) {
                hn::StoreInterleaved4(Load(ordered[0], x), Load(ordered[1], x), Load(ordered[2], x),
                                      Load(ordered[3], x), DF(), reinterpret_cast<float*>(row) + 4 * x);
            } else {
                constexpr int bits = 8 * sizeof(T);
                const V32 low = hn::Or(LoadQuantized(ordered[0], x, limits[0]),
                                       hn::ShiftLeft<bits>(LoadQuantized(ordered[1], x, limits[1])));
                const V32 high = hn::Or(LoadQuantized(ordered[2], x, limits[2]),
                                        hn::ShiftLeft<bits>(LoadQuantized(ordered[3], x, limits[3])));
                StoreQuads<T>(low, high, row, x);
            }
        }
        Scalar::PackQuads<T, Order>(lines, range, row, x, end);
    }

    static void UnpackQuadTens(const uint8_t* row, const ColorLines& lines, int64_t begin, int64_t end) {
        int64_t x = begin;
        for (; x + BlockSize() <= end; x += BlockSize()) {
            const V32 words = LoadWords(row, x);
            Store(Field<10, 2>(words), lines.cb, x);
            Store(Field<10, 12>(words), lines.luma, x);
            Store(Field<10, 22>(words), lines.cr, x);
        }
        Scalar::UnpackQuadTens(row, lines, x, end);
    }

    static void PackQuadTens(const ColorLines& lines, const ColorRange& range, uint8_t* row, int64_t begin,
                             int64_t end) {
        int64_t x = begin;
        for (; x + BlockSize() <= end; x += BlockSize()) {
            const V32 cb = LoadQuantized(lines.cb, x, range.chroma);
            const V32 luma = LoadQuantized(lines.luma, x, range.luma);
            const V32 cr = LoadQuantized(lines.cr, x, range.chroma);
            const V32 words = hn::Or(hn::ShiftLeft<2>(cb), hn::ShiftLeft<12>(luma));
            StoreWords(hn::Or(words, hn::ShiftLeft<22>(cr)), row, x);
        }
        Scalar::PackQuadTens(lines, range, row, x, end);
    }

    // Planes

    template <typename T>
    static void UnpackPlane(const uint8_t* row, float* line, int64_t begin, int64_t end) {
        int64_t x = begin;
        for (; x + BlockSize() <= end; x += BlockSize())
            Store(LoadCodes<T>(row, x), line, x);
        Scalar::UnpackPlane<T>(row, line, x, end);
    }

    template <typename T>
    static void PackPlane(const float* line, ColorLimits limits, uint8_t* row, int64_t begin, int64_t end) {
        int64_t x = begin;
        for (; x + BlockSize() <= end; x += BlockSize())
            StoreCodes<T>(LoadQuantized(line, x, limits), row, x);
        Scalar::PackPlane<T>(line, limits, row, x, end);
    }

    template <typename T>
    static void UnpackChromaPlanes(const uint8_t* cb, const uint8_t* cr, float* chroma, int64_t begin,
                                   int64_t end) {
        int64_t i = begin;
        for (; i + BlockSize() <= end; i += BlockSize())
            hn::StoreInterleaved2(LoadCodes<T>(cb, i), LoadCodes<T>(cr, i), DF(), chroma + 2 * i);
        Scalar::UnpackChromaPlanes<T>(cb, cr, chroma, i, end);
    }

    template <typename T>
    static void PackChromaPlanes(const float* chroma, ColorLimits limits, uint8_t* cb, uint8_t* cr,
                                 int64_t begin, int64_t end) {
        int64_t i = begin;
        for (; i + BlockSize() <= end; i += BlockSize()) {
            VF first, second;
            hn::LoadInterleaved2(DF(), chroma + 2 * i, first, second);
            StoreCodes<T>(Quantize(first, limits), cb, i);
            StoreCodes<T>(Quantize(second, limits), cr, i);
        }
        Scalar::PackChromaPlanes<T>(chroma, limits, cb, cr, i, end);
    }
};

} // namespace HWY_NAMESPACE
} // namespace color_vector
HWY_AFTER_NAMESPACE();

#endif

#endif
