// Image pixels of each kind to and from vectors of 16-bit words, with the results of the host's accessors.
// Addresses are of bytes and need no alignment; T is the type of the image's channels. For inclusion once for
// each instruction set, as Highway does it.

#if defined(CORVEX_PIXEL_ROW_VECTOR_IMAGE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CORVEX_PIXEL_ROW_VECTOR_IMAGE_INL_H
#undef CORVEX_PIXEL_ROW_VECTOR_IMAGE_INL_H
#else
#define CORVEX_PIXEL_ROW_VECTOR_IMAGE_INL_H
#endif

#include "pixel/RowVectorWords-inl.h"

#include <concepts>

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace row_vector {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// Channels of the two floating-point kinds.
template <typename T>
concept FloatChannel = std::same_as<T, float> || std::same_as<T, hwy::float16_t>;

/// Whether this instruction set is known to convert half-precision numbers itself, to nearest and with all
/// their kinds.
constexpr bool hasHalves = (HWY_TARGET & (HWY_AVX2 | HWY_AVX3 | HWY_AVX3_DL)) != 0;

// ---------------------------------------------------------------------------------------------------------
// Floating-point channels

template <FloatChannel T>
HWY_INLINE VFloat LoadFloats(const uint8_t* channels) {
    const hn::Rebind<T, DFloat> stored;
    const auto v = hn::LoadU(stored, reinterpret_cast<const T*>(channels));
    if constexpr (std::same_as<T, float>) {
        return v;
    } else {
        return hn::PromoteTo(DFloat(), v);
    }
}

template <FloatChannel T>
HWY_INLINE void StoreFloats(VFloat v, uint8_t* channels) {
    const hn::Rebind<T, DFloat> stored;
    if constexpr (std::same_as<T, float>) {
        hn::StoreU(v, stored, reinterpret_cast<T*>(channels));
    } else {
        hn::StoreU(hn::DemoteTo(stored, v), stored, reinterpret_cast<T*>(channels));
    }
}

/// Bytes from the channels of one vector of floats to those of the next.
template <FloatChannel T>
HWY_INLINE size_t FloatsStep() {
    return hn::Lanes(DFloat()) * sizeof(T);
}

/// Channels as 0..65535.
struct FullScale {
    static constexpr uint16_t opaque = 65535;

    /// The integer nearest to 65535 v, exactly, for v limited to 0..1; not-a-number gives 0.
    ///
    /// 65536 v is exact; n and f are its integer and fraction, so 65535 v + 0.5 is n + (f - v + 0.5), and the
    /// bracket lies between -0.5 and 1.5. Both comparisons with it are exact: where one of their
    /// subtractions would have to round, its result is negative and decides the same.
    static HWY_INLINE VInt FromFloats(VFloat channel) {
        const VFloat positive = hn::IfThenElseZero(hn::Gt(channel, hn::Zero(DFloat())), channel);
        const VFloat v = hn::Min(positive, hn::Set(DFloat(), 1.0f));
        const VFloat scaled = hn::Mul(v, hn::Set(DFloat(), 65536.0f));
        const VInt n = hn::ConvertTo(DInt(), scaled);
        const VFloat f = hn::Sub(scaled, hn::ConvertTo(DFloat(), n));
        const VFloat half = hn::Set(DFloat(), 0.5f);
        const VInt above = hn::BitCast(DInt(), hn::VecFromMask(DFloat(), hn::Ge(hn::Sub(f, half), v)));
        const VInt below = hn::BitCast(DInt(), hn::VecFromMask(DFloat(), hn::Gt(hn::Sub(v, half), f)));
        return hn::Add(hn::Sub(n, above), below);
    }

    static HWY_INLINE VFloat ToFloats(VInt words) {
        return hn::Div(hn::ConvertTo(DFloat(), words), hn::Set(DFloat(), 65535.0f));
    }
};

/// Channels as 10 bits in video range.
struct TenBitScale {
    static constexpr uint16_t opaque = video_range10::black + video_range10::range;

    /// Limited to 0..1023; not-a-number gives 0.
    static HWY_INLINE VInt FromFloats(VFloat channel) {
        using namespace video_range10;
        const VFloat lowest = hn::Set(DFloat(), static_cast<float>(-black));
        const VFloat greatest = hn::Set(DFloat(), static_cast<float>(highest - black));
        const VFloat scaled =
            hn::Add(hn::Mul(channel, hn::Set(DFloat(), static_cast<float>(range))), hn::Set(DFloat(), 0.5f));
        const VFloat limited = hn::IfThenElse(hn::Gt(scaled, lowest), hn::Min(scaled, greatest), lowest);
        return hn::Add(hn::ConvertTo(DInt(), limited), hn::Set(DInt(), black));
    }

    static HWY_INLINE VFloat ToFloats(VInt words) {
        using namespace video_range10;
        const VInt above = hn::Sub(words, hn::Set(DInt(), black));
        return hn::Div(hn::ConvertTo(DFloat(), above), hn::Set(DFloat(), static_cast<float>(range)));
    }
};

template <class Scale, FloatChannel T>
HWY_INLINE V16 LoadScaled(const uint8_t* channels) {
    const VInt low = Scale::FromFloats(LoadFloats<T>(channels));
    const VInt high = Scale::FromFloats(LoadFloats<T>(channels + FloatsStep<T>()));
    return hn::Combine(D16(), hn::DemoteTo(DHalf16(), high), hn::DemoteTo(DHalf16(), low));
}

template <class Scale, FloatChannel T>
HWY_INLINE void StoreScaled(V16 v, uint8_t* channels) {
    StoreFloats<T>(Scale::ToFloats(hn::PromoteTo(DInt(), hn::LowerHalf(DHalf16(), v))), channels);
    StoreFloats<T>(Scale::ToFloats(hn::PromoteTo(DInt(), hn::UpperHalf(DHalf16(), v))),
                   channels + FloatsStep<T>());
}

// ---------------------------------------------------------------------------------------------------------
// One vector of channels as they follow each other

template <typename T>
HWY_INLINE V16 LoadChannels(const uint8_t* channels) {
    if constexpr (FloatChannel<T>) {
        return LoadScaled<FullScale, T>(channels);
    } else {
        return LoadWords<T>(channels);
    }
}

template <typename T>
HWY_INLINE void StoreChannels(V16 v, uint8_t* channels) {
    if constexpr (FloatChannel<T>) {
        StoreScaled<FullScale, T>(v, channels);
    } else if constexpr (std::same_as<T, uint8_t>) {
        hn::StoreU(RoundToBytes(v), D8(), channels);
    } else {
        hn::StoreU(v, D16(), reinterpret_cast<T*>(channels));
    }
}

// ---------------------------------------------------------------------------------------------------------
// As many pixels as a vector has words, with a vector for each channel

HWY_INLINE void LoadWordPixels(const uint16_t* pixels, V16& r, V16& g, V16& b) {
    V16 a;
    hn::LoadInterleaved4(D16(), pixels, r, g, b, a);
}

HWY_INLINE void LoadBytePixels(const uint8_t* pixels, V16& r, V16& g, V16& b) {
    V8 r8, g8, b8, a8;
    hn::LoadInterleaved4(D8(), pixels, r8, g8, b8, a8);
    r = Widen(r8);
    g = Widen(g8);
    b = Widen(b8);
}

template <class Scale, FloatChannel T>
HWY_INLINE void LoadScaledPixels(const uint8_t* pixels, V16& r, V16& g, V16& b) {
    const size_t lanes = hn::Lanes(D16());
    HWY_ALIGN uint16_t words[4 * hn::MaxLanes(D16())];
    for (size_t i = 0; i < 4; ++i)
        hn::Store(LoadScaled<Scale, T>(pixels + i * lanes * sizeof(T)), D16(), words + i * lanes);
    LoadWordPixels(words, r, g, b);
}

template <typename T>
HWY_INLINE void LoadPixels(const uint8_t* pixels, V16& r, V16& g, V16& b) {
    if constexpr (FloatChannel<T>) {
        LoadScaledPixels<FullScale, T>(pixels, r, g, b);
    } else if constexpr (std::same_as<T, uint8_t>) {
        LoadBytePixels(pixels, r, g, b);
    } else {
        LoadWordPixels(reinterpret_cast<const T*>(pixels), r, g, b);
    }
}

template <class Scale, FloatChannel T>
HWY_INLINE void StoreOpaqueScaledPixels(V16 r, V16 g, V16 b, uint8_t* pixels) {
    const size_t lanes = hn::Lanes(D16());
    HWY_ALIGN uint16_t words[4 * hn::MaxLanes(D16())];
    hn::StoreInterleaved4(r, g, b, hn::Set(D16(), Scale::opaque), D16(), words);
    for (size_t i = 0; i < 4; ++i)
        StoreScaled<Scale, T>(hn::Load(D16(), words + i * lanes), pixels + i * lanes * sizeof(T));
}

template <typename T>
HWY_INLINE void StoreOpaquePixels(V16 r, V16 g, V16 b, uint8_t* pixels) {
    if constexpr (FloatChannel<T>) {
        StoreOpaqueScaledPixels<FullScale, T>(r, g, b, pixels);
    } else if constexpr (std::same_as<T, uint8_t>) {
        hn::StoreInterleaved4(RoundToBytes(r), RoundToBytes(g), RoundToBytes(b), hn::Set(D8(), 255), D8(),
                              pixels);
    } else {
        hn::StoreInterleaved4(r, g, b, hn::Set(D16(), 65535), D16(), reinterpret_cast<T*>(pixels));
    }
}

// ---------------------------------------------------------------------------------------------------------
// The same with channels of 10 bits in video range

template <typename T>
HWY_INLINE void LoadTenBitPixels(const uint8_t* pixels, V16& r, V16& g, V16& b) {
    if constexpr (FloatChannel<T>) return LoadScaledPixels<TenBitScale, T>(pixels, r, g, b);
    LoadPixels<T>(pixels, r, g, b);
    r = TenBitsOf(r);
    g = TenBitsOf(g);
    b = TenBitsOf(b);
}

template <typename T>
HWY_INLINE void StoreOpaqueTenBitPixels(V16 r, V16 g, V16 b, uint8_t* pixels) {
    if constexpr (FloatChannel<T>) return StoreOpaqueScaledPixels<TenBitScale, T>(r, g, b, pixels);
    StoreOpaquePixels<T>(FromTenBits(r), FromTenBits(g), FromTenBits(b), pixels);
}

} // namespace HWY_NAMESPACE
} // namespace row_vector
HWY_AFTER_NAMESPACE();

#endif
#endif
