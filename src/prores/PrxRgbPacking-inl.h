// Vectors of Y'CbCr to RGB pixels, with the results of `PrxStoreRgbPixel`. For inclusion once for each
// instruction set, as Highway does it.

#if defined(CORVEX_PRORES_PRX_RGB_PACKING_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CORVEX_PRORES_PRX_RGB_PACKING_INL_H
#undef CORVEX_PRORES_PRX_RGB_PACKING_INL_H
#else
#define CORVEX_PRORES_PRX_RGB_PACKING_INL_H
#endif

#include "prores/PrxColorCoefficients.h"
#include "prores/PrxNearestIntegers-inl.h"
#include "prores/PrxRgbPacking.h"

#include <hwy/highway.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

// The forms are made of what x86 does in one instruction; on other processors the scalar ones serve.
#if HWY_ARCH_X86 && HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace prx_rgb {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using prx_nearest::HWY_NAMESPACE::NearestIntegers;

static_assert(std::endian::native == std::endian::little, "words are stored as they stand in memory");

/// One pixel for each lane: no more than a row of a block has.
using DInt = hn::CappedTag<int32_t, 8>;
using DFloat = hn::RebindToFloat<DInt>;
using DWord = hn::Repartition<uint16_t, DInt>;
using DByte = hn::Repartition<uint8_t, DInt>;
using VInt = hn::VFromD<DInt>;
using VFloat = hn::VFromD<DFloat>;
using VWord = hn::VFromD<DWord>;

// ---------------------------------------------------------------------------------------------------------
// Packing by vector length

/// In each 128 bits the four values of `a`, then those of `b`, limited to 0..65535.
HWY_INLINE hn::Vec128<uint16_t> PackWords(hn::Vec128<int32_t> a, hn::Vec128<int32_t> b) {
#if HWY_TARGET >= HWY_SSSE3
    const hn::Full128<uint16_t> d;
    const hn::Full64<uint16_t> half;
    return hn::Combine(d, hn::DemoteTo(half, b), hn::DemoteTo(half, a));
#else
    return hn::Vec128<uint16_t>{_mm_packus_epi32(a.raw, b.raw)};
#endif
}

#if HWY_TARGET <= HWY_AVX2

HWY_INLINE hn::Vec256<uint16_t> PackWords(hn::Vec256<int32_t> a, hn::Vec256<int32_t> b) {
    return hn::Vec256<uint16_t>{_mm256_packus_epi32(a.raw, b.raw)};
}

#endif

// ---------------------------------------------------------------------------------------------------------
// RGB of pixels as whole numbers, not limited yet, to memory

using ByteOrder = std::array<uint8_t, 16>;

HWY_INLINE VInt OrderBytes(VWord words, const ByteOrder& order) {
    const DByte d;
    return hn::BitCast(DInt(), hn::TableLookupBytes(hn::BitCast(d, words), hn::LoadDup128(d, order.data())));
}

HWY_INLINE void StoreVector(VInt v, uint8_t* out) { hn::StoreU(hn::BitCast(DByte(), v), DByte(), out); }

/// Stores 16-bit channels. Each half of a pixel, A with R and G with B, is put together first.
HWY_INLINE void StoreWords(VInt a, VInt r, VInt g, VInt b, uint8_t* out) {
    alignas(16) static constexpr ByteOrder pairs = {1, 0, 9, 8, 3, 2, 11, 10, 5, 4, 13, 12, 7, 6, 15, 14};
    const VInt ar = OrderBytes(PackWords(a, r), pairs);
    const VInt gb = OrderBytes(PackWords(g, b), pairs);
    const VInt lower = hn::InterleaveLower(ar, gb);
    const VInt upper = hn::InterleaveUpper(DInt(), ar, gb);
    if constexpr (hn::MaxLanes(DInt()) == 8) {
        StoreVector(hn::ConcatLowerLower(DInt(), upper, lower), out);
        StoreVector(hn::ConcatUpperUpper(DInt(), upper, lower), out + 32);
    } else {
        StoreVector(lower, out);
        StoreVector(upper, out + 16);
    }
}

/// Stores 8-bit channels.
template <bool BigEndian>
HWY_INLINE void StoreBytes(VInt a, VInt r, VInt g, VInt b, uint8_t* out) {
    alignas(16) static constexpr ByteOrder argb = {0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15};
    alignas(16) static constexpr ByteOrder bgra = {9, 1, 8, 0, 11, 3, 10, 2, 13, 5, 12, 4, 15, 7, 14, 6};
    const VWord largest = hn::Set(DWord(), 255);
    const VWord ar = hn::Min(PackWords(a, r), largest);
    const VWord gb = hn::Min(PackWords(g, b), largest);
    const VWord channels = hn::Or(ar, hn::ShiftLeft<8>(gb)); // A G A G ... R B R B ...
    StoreVector(OrderBytes(channels, BigEndian ? argb : bgra), out);
}

HWY_INLINE VInt TenBits(VInt v) { return hn::Min(hn::Max(v, hn::Zero(DInt())), hn::Set(DInt(), 1023)); }

/// Stores 10-bit channels.
template <uint32_t PixelFormat>
HWY_INLINE void StoreTenBits(VInt r, VInt g, VInt b, uint8_t* out) {
    constexpr PrxRgbLayout layout = PrxRgbLayoutOf(PixelFormat);
    alignas(16) static constexpr ByteOrder swapped = {3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12};
    VInt word = hn::Or(hn::ShiftLeft<layout.rShift>(TenBits(r)), hn::ShiftLeft<layout.gShift>(TenBits(g)));
    word = hn::Or(word, hn::ShiftLeft<layout.bShift>(TenBits(b)));
    if constexpr (layout.bigEndian) word = OrderBytes(hn::BitCast(DWord(), word), swapped);
    StoreVector(word, out);
}

/// `PrxColorCoefficients` in all lanes.
struct RgbFactors {
    explicit RgbFactors(const PrxColorCoefficients& factors)
        : yScale(hn::Set(DFloat(), factors.yScale)), crToR(hn::Set(DFloat(), factors.crToR)),
          cbToG(hn::Set(DFloat(), factors.cbToG)), crToG(hn::Set(DFloat(), factors.crToG)),
          cbToB(hn::Set(DFloat(), factors.cbToB)) {}

    VFloat yScale;
    VFloat crToR;
    VFloat cbToG;
    VFloat crToG;
    VFloat cbToB;
};

/// Stores one pixel for each lane. `alpha` as `PrxRgbAlpha` has it.
template <uint32_t PixelFormat>
HWY_INLINE void StoreRgbPixels(VFloat y, VFloat cb, VFloat cr, const RgbFactors& factors, VInt alpha,
                               uint8_t* out) {
    constexpr PrxRgbLayout layout = PrxRgbLayoutOf(PixelFormat);
    const VFloat luma = hn::Mul(factors.yScale, y);
    const VInt r = NearestIntegers(hn::Add(luma, hn::Mul(factors.crToR, cr)));
    const VInt g =
        NearestIntegers(hn::Add(hn::Add(luma, hn::Mul(factors.cbToG, cb)), hn::Mul(factors.crToG, cr)));
    const VInt b = NearestIntegers(hn::Add(luma, hn::Mul(factors.cbToB, cb)));
    if constexpr (layout.outMax == 65535) {
        StoreWords(alpha, r, g, b, out);
    } else if constexpr (layout.outMax == 255) {
        StoreBytes<layout.bigEndian>(alpha, r, g, b, out);
    } else {
        StoreTenBits<PixelFormat>(r, g, b, out);
    }
}

/// Alpha of as many pixels as there are lanes, from pixel `x` of a row on; see `PrxRgbAlpha`.
template <uint32_t PixelFormat, bool HasAlpha>
HWY_INLINE VInt LoadRgbAlpha(const uint8_t* row, size_t x) {
    constexpr PrxRgbLayout layout = PrxRgbLayoutOf(PixelFormat);
    if constexpr (!HasAlpha) {
        return hn::Set(DInt(), layout.hasAlpha ? layout.outMax : 0);
    } else if constexpr (layout.AlphaBytes() == 1) {
        return hn::PromoteTo(DInt(), hn::LoadU(hn::Rebind<uint8_t, DInt>(), row + x));
    } else {
        const hn::Rebind<uint16_t, DInt> stored;
        return hn::PromoteTo(DInt(), hn::LoadU(stored, reinterpret_cast<const uint16_t*>(row) + x));
    }
}

} // namespace HWY_NAMESPACE
} // namespace prx_rgb
HWY_AFTER_NAMESPACE();

#endif

#endif
