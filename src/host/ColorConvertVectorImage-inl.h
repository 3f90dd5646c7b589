// The steps between lines and images, and those between half and full chroma, on vectors. For inclusion once
// for each instruction set, as Highway does it.

#if defined(CORVEX_HOST_COLOR_CONVERT_VECTOR_IMAGE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CORVEX_HOST_COLOR_CONVERT_VECTOR_IMAGE_INL_H
#undef CORVEX_HOST_COLOR_CONVERT_VECTOR_IMAGE_INL_H
#else
#define CORVEX_HOST_COLOR_CONVERT_VECTOR_IMAGE_INL_H
#endif

#include "host/ColorConvertScalar.h"
#include "host/ColorConvertVectorPack-inl.h"

#include <type_traits>

#include <hwy/highway.h>

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace color_vector {
namespace HWY_NAMESPACE {

using color_samples::ByteChannel;
using color_samples::FloatChannel;
using color_samples::HalfChannel;
using color_samples::WordChannel;

// ---------------------------------------------------------------------------------------------------------
// Vectors of the precision of the arithmetic, and of floats and integers with as many lanes

template <typename Real>
using DReal = hn::ScalableTag<Real>;
template <typename Real>
using VReal = hn::Vec<DReal<Real>>;
template <typename Real>
using DFloat = hn::Rebind<float, DReal<Real>>;
template <typename Real>
using VFloat = hn::Vec<DFloat<Real>>;
template <typename Real>
using DInt = hn::Rebind<int32_t, DReal<Real>>;
template <typename Real>
using DWord = hn::Rebind<uint32_t, DReal<Real>>;
template <typename Real>
using VWord = hn::Vec<DWord<Real>>;

template <typename Real>
HWY_INLINE VReal<Real> Set(double value) {
    return hn::Set(DReal<Real>(), static_cast<Real>(value));
}

template <typename Real>
HWY_INLINE VReal<Real> FromFloats(VFloat<Real> v) {
    if constexpr (std::is_same_v<Real, float>) {
        return v;
    } else {
        return hn::PromoteTo(DReal<Real>(), v);
    }
}

template <typename Real>
HWY_INLINE VFloat<Real> ToFloats(VReal<Real> v) {
    if constexpr (std::is_same_v<Real, float>) {
        return v;
    } else {
        return hn::DemoteTo(DFloat<Real>(), v);
    }
}

/// Towards zero.
template <typename Real>
HWY_INLINE VWord<Real> ToWords(VReal<Real> v) {
    if constexpr (std::is_same_v<Real, float>) {
        return hn::BitCast(DWord<Real>(), hn::ConvertTo(DInt<Real>(), v));
    } else {
        return hn::BitCast(DWord<Real>(), hn::DemoteTo(DInt<Real>(), v));
    }
}

template <typename Real>
HWY_INLINE VReal<Real> FromWords(VWord<Real> v) {
    const auto integers = hn::BitCast(DInt<Real>(), v);
    if constexpr (std::is_same_v<Real, float>) {
        return hn::ConvertTo(DReal<Real>(), integers);
    } else {
        return hn::PromoteTo(DReal<Real>(), integers);
    }
}

// ---------------------------------------------------------------------------------------------------------
// Halves, in the lower bits of 32-bit lanes. Half.h has the same in scalar form.

/// Bits of the half nearest to a number.
template <typename Real>
HWY_INLINE VWord<Real> HalvesOf(VFloat<Real> v) {
    const DWord<Real> d;
    const DFloat<Real> df;
    const auto set = [d](uint32_t value) HWY_ATTR { return hn::Set(d, value); };
    const auto bits = hn::BitCast(d, v);
    const auto sign = hn::And(hn::ShiftRight<16>(bits), set(0x8000));
    const auto magnitude = hn::And(bits, set(0x7fffffff));

    const auto odd = hn::And(hn::ShiftRight<13>(magnitude), set(1));
    const auto rebased = hn::Sub(magnitude, set((127 - 15) << 23));
    const auto normal = hn::ShiftRight<13>(hn::Add(hn::Add(rebased, set(0x0fff)), odd));
    // Added to 0.5, a number below the least normal half has its last bit where a subnormal half has its own.
    const auto half = hn::Set(df, 0.5f);
    const auto sum = hn::BitCast(d, hn::Add(hn::BitCast(df, magnitude), half));
    const auto subnormal = hn::Sub(sum, hn::BitCast(d, half));

    const auto finite = hn::IfThenElse(hn::Lt(magnitude, set(0x38800000)), subnormal, normal);
    const auto result = hn::IfThenElse(hn::Lt(magnitude, set(0x47800000)), finite, set(0x7c00));
    return hn::Or(result, sign);
}

/// Value of halves. What is no number stays none.
template <typename Real>
HWY_INLINE VFloat<Real> ValueOfHalves(VWord<Real> half) {
    const DWord<Real> d;
    const DFloat<Real> df;
    const auto set = [d](uint32_t value) HWY_ATTR { return hn::Set(d, value); };
    const auto sign = hn::ShiftLeft<16>(hn::And(half, set(0x8000)));
    const auto magnitude = hn::ShiftLeft<13>(hn::And(half, set(0x7fff)));
    const auto exponent = hn::And(magnitude, set(0x0f800000));

    const auto rebias = set((127 - 15) << 23);
    const auto normal = hn::Add(magnitude, rebias);
    const auto special = hn::Add(normal, rebias);
    // The mantissa behind an exponent of 2^-14; taking 2^-14 away leaves a normal number.
    const auto least = set(113 << 23);
    const auto subnormal =
        hn::BitCast(d, hn::Sub(hn::BitCast(df, hn::Add(magnitude, least)), hn::BitCast(df, least)));

    auto result = hn::IfThenElse(hn::Eq(exponent, set(0x0f800000)), special, normal);
    result = hn::IfThenElse(hn::Eq(exponent, set(0)), subnormal, result);
    return hn::BitCast(df, hn::Or(result, sign));
}

// ---------------------------------------------------------------------------------------------------------
// Pixels

/// One vector for each channel.
template <typename V>
struct Channels {
    V red, green, blue, alpha;
};

template <typename Real, typename Channel>
HWY_INLINE VWord<Real> ToStored(VReal<Real> v) {
    if constexpr (std::is_same_v<Channel, HalfChannel>) {
        return HalvesOf<Real>(ToFloats<Real>(v));
    } else {
        const auto white = Set<Real>(static_cast<typename Channel::Stored>(~0u));
        const auto limited = hn::Min(hn::Max(v, Set<Real>(0)), white);
        return ToWords<Real>(hn::Add(limited, Set<Real>(0.5)));
    }
}

template <typename Real, typename Channel>
HWY_INLINE void StorePixels(const Channels<VReal<Real>>& pixels, uint8_t* out) {
    if constexpr (std::is_same_v<Channel, FloatChannel>) {
        hn::StoreInterleaved4(ToFloats<Real>(pixels.red), ToFloats<Real>(pixels.green),
                              ToFloats<Real>(pixels.blue), ToFloats<Real>(pixels.alpha), DFloat<Real>(),
                              reinterpret_cast<float*>(out));
        return;
    } else {
        constexpr int bits = 8 * sizeof(typename Channel::Stored);
        const auto low = hn::Or(ToStored<Real, Channel>(pixels.red),
                                hn::ShiftLeft<bits>(ToStored<Real, Channel>(pixels.green)));
        const auto high = hn::Or(ToStored<Real, Channel>(pixels.blue),
                                 hn::ShiftLeft<bits>(ToStored<Real, Channel>(pixels.alpha)));
        auto* words = reinterpret_cast<uint32_t*>(out);
        if constexpr (bits == 8) {
            hn::StoreU(hn::Or(low, hn::ShiftLeft<16>(high)), DWord<Real>(), words);
        } else {
            hn::StoreInterleaved2(low, high, DWord<Real>(), words);
        }
    }
}

template <typename Real, typename Channel>
HWY_INLINE VReal<Real> FromStored(VWord<Real> v) {
    if constexpr (std::is_same_v<Channel, HalfChannel>) {
        return FromFloats<Real>(Sane(DFloat<Real>(), ValueOfHalves<Real>(v)));
    } else {
        return FromWords<Real>(v);
    }
}

template <typename Real, typename Channel>
HWY_INLINE Channels<VReal<Real>> LoadPixels(const uint8_t* in) {
    if constexpr (std::is_same_v<Channel, FloatChannel>) {
        const DFloat<Real> df;
        VFloat<Real> r, g, b, a;
        hn::LoadInterleaved4(df, reinterpret_cast<const float*>(in), r, g, b, a);
        return {FromFloats<Real>(Sane(df, r)), FromFloats<Real>(Sane(df, g)), FromFloats<Real>(Sane(df, b)),
                FromFloats<Real>(Sane(df, a))};
    } else {
        constexpr int bits = 8 * sizeof(typename Channel::Stored);
        const DWord<Real> d;
        const auto mask = hn::Set(d, (1u << bits) - 1);
        const auto* words = reinterpret_cast<const uint32_t*>(in);
        VWord<Real> low, high;
        if constexpr (bits == 8) {
            low = hn::LoadU(d, words);
            high = hn::ShiftRight<16>(low);
        } else {
            hn::LoadInterleaved2(d, words, low, high);
        }
        return {FromStored<Real, Channel>(hn::And(low, mask)),
                FromStored<Real, Channel>(hn::And(hn::ShiftRight<bits>(low), mask)),
                FromStored<Real, Channel>(hn::And(high, mask)),
                FromStored<Real, Channel>(hn::And(hn::ShiftRight<bits>(high), mask))};
    }
}

template <typename Real>
HWY_INLINE VReal<Real> LoadLine(const float* line, int64_t x) {
    return FromFloats<Real>(hn::LoadU(DFloat<Real>(), line + x));
}

template <typename Real>
HWY_INLINE void StoreLine(VReal<Real> v, float* line, int64_t x) {
    hn::StoreU(ToFloats<Real>(v), DFloat<Real>(), line + x);
}

template <typename Real>
HWY_INLINE VReal<Real> Weigh(const ColorFromRgb::Weights& weights, double offset,
                             const Channels<VReal<Real>>& pixels) {
    const auto red = hn::Mul(Set<Real>(weights[0]), pixels.red);
    const auto green = hn::Mul(Set<Real>(weights[1]), pixels.green);
    const auto blue = hn::Mul(Set<Real>(weights[2]), pixels.blue);
    return hn::Add(hn::Add(hn::Add(red, green), blue), Set<Real>(offset));
}

template <typename Real>
HWY_INLINE VReal<Real> LimitChroma(VReal<Real> codes) {
    return hn::Min(hn::Max(codes, Set<Real>(-colorChromaLimit)), Set<Real>(colorChromaLimit));
}

// ---------------------------------------------------------------------------------------------------------

/// As `PackSteps`: whole blocks, and the rest of the row in scalar form.
struct ImageSteps {
    template <typename Real, typename Channel>
    static void ToImage(const ColorLines& lines, const ColorToRgb& matrix, uint8_t* pixels, int64_t begin,
                        int64_t end) {
        const auto block = static_cast<int64_t>(hn::Lanes(DReal<Real>()));
        constexpr int64_t pixelBytes = 4 * sizeof(typename Channel::Stored);
        int64_t x = begin;
        for (; x + block <= end; x += block) {
            const auto luma = hn::Sub(LoadLine<Real>(lines.luma, x), Set<Real>(matrix.black));
            const auto y = hn::Mul(luma, Set<Real>(matrix.luma));
            const auto cb = hn::Sub(LoadLine<Real>(lines.cb, x), Set<Real>(matrix.zero));
            const auto cr = hn::Sub(LoadLine<Real>(lines.cr, x), Set<Real>(matrix.zero));
            const auto greenFromCb = hn::Add(y, hn::Mul(Set<Real>(matrix.cbToGreen), cb));
            StorePixels<Real, Channel>({hn::Add(y, hn::Mul(Set<Real>(matrix.crToRed), cr)),
                                        hn::Add(greenFromCb, hn::Mul(Set<Real>(matrix.crToGreen), cr)),
                                        hn::Add(y, hn::Mul(Set<Real>(matrix.cbToBlue), cb)),
                                        hn::Mul(LoadLine<Real>(lines.alpha, x), Set<Real>(matrix.alpha))},
                                       pixels + x * pixelBytes);
        }
        Scalar::ToImage<Real, Channel>(lines, matrix, pixels, x, end);
    }

    template <typename Real, typename Channel>
    static void FromImage(const uint8_t* pixels, const ColorFromRgb& matrix, const ColorLines& lines,
                          int64_t begin, int64_t end) {
        const auto block = static_cast<int64_t>(hn::Lanes(DReal<Real>()));
        constexpr int64_t pixelBytes = 4 * sizeof(typename Channel::Stored);
        int64_t x = begin;
        for (; x + block <= end; x += block) {
            const auto loaded = LoadPixels<Real, Channel>(pixels + x * pixelBytes);
            StoreLine<Real>(Weigh<Real>(matrix.luma, matrix.black, loaded), lines.luma, x);
            StoreLine<Real>(LimitChroma<Real>(Weigh<Real>(matrix.cb, matrix.zero, loaded)), lines.cb, x);
            StoreLine<Real>(LimitChroma<Real>(Weigh<Real>(matrix.cr, matrix.zero, loaded)), lines.cr, x);
            StoreLine<Real>(hn::Mul(loaded.alpha, Set<Real>(matrix.alpha)), lines.alpha, x);
        }
        Scalar::FromImage<Real, Channel>(pixels, matrix, lines, x, end);
    }
};

} // namespace HWY_NAMESPACE
} // namespace color_vector
HWY_AFTER_NAMESPACE();

#endif

#endif
