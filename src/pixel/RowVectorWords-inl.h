// Arithmetic of the vector row converters on vectors of 16-bit words. For inclusion once for each instruction
// set, as Highway does it.

#if defined(CORVEX_PIXEL_ROW_VECTOR_WORDS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CORVEX_PIXEL_ROW_VECTOR_WORDS_INL_H
#undef CORVEX_PIXEL_ROW_VECTOR_WORDS_INL_H
#else
#define CORVEX_PIXEL_ROW_VECTOR_WORDS_INL_H
#endif

#include "pixel/RowPacking.h"

#include <hwy/highway.h>

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace row_vector {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// All work is done on vectors of 16-bit words; a row of bytes is widened first.
using D16 = hn::ScalableTag<uint16_t>;
using D8 = hn::Rebind<uint8_t, D16>;
using V16 = hn::Vec<D16>;
using V8 = hn::Vec<D8>;

// Arithmetic in 32 bits takes half of the words at a time.
using DHalf16 = hn::Half<D16>;
using VHalf16 = hn::Vec<DHalf16>;
using DInt = hn::Repartition<int32_t, D16>;
using VInt = hn::Vec<DInt>;
using DFloat = hn::Repartition<float, D16>;
using VFloat = hn::Vec<DFloat>;

// ---------------------------------------------------------------------------------------------------------
// Words and bytes

/// 8 bits to 16: times 257.
HWY_INLINE V16 Widen(V8 v) {
    const V16 wide = hn::PromoteTo(D16(), v);
    return hn::Or(wide, hn::ShiftLeft<8>(wide));
}

/// 16 bits to 8: the upper half.
HWY_INLINE V8 HighBytes(V16 v) {
    return hn::DemoteTo(D8(), hn::BitCast(hn::RebindToSigned<D16>(), hn::ShiftRight<8>(v)));
}

/// 16 bits to 8, to nearest: with u = v + 128, u / 257, which equals (u - u / 256) / 256 for every u.
HWY_INLINE V8 RoundToBytes(V16 v) {
    const V16 u = hn::SaturatedAdd(v, hn::Set(D16(), 128));
    return HighBytes(hn::Sub(u, hn::ShiftRight<8>(u)));
}

/// One vector of words, or of bytes as words, from an address of any alignment.
template <typename Word>
HWY_INLINE V16 LoadWords(const uint8_t* in) {
    if constexpr (sizeof(Word) == 1) {
        return Widen(hn::LoadU(D8(), in));
    } else {
        return hn::LoadU(D16(), reinterpret_cast<const Word*>(in));
    }
}

HWY_INLINE V16 SwapBytes(V16 v) { return hn::Or(hn::ShiftLeft<8>(v), hn::ShiftRight<8>(v)); }

// ---------------------------------------------------------------------------------------------------------
// Video range of 16-bit words

/// The clamp of the scalar form is not here: no 16-bit channel leaves the range.
HWY_INLINE VHalf16 ToVideoRangeHalf(VHalf16 v) {
    const VFloat channel = hn::ConvertTo(DFloat(), hn::PromoteTo(DInt(), v));
    const VFloat scaled = hn::Add(hn::Mul(channel, hn::Set(DFloat(), video_range16::fromFull)),
                                  hn::Set(DFloat(), static_cast<float>(video_range16::black)));
    return hn::DemoteTo(DHalf16(), hn::ConvertTo(DInt(), scaled));
}

HWY_INLINE V16 ToVideoRange(V16 v) {
    return hn::Combine(D16(), ToVideoRangeHalf(hn::UpperHalf(DHalf16(), v)),
                       ToVideoRangeHalf(hn::LowerHalf(DHalf16(), v)));
}

HWY_INLINE VHalf16 FromVideoRangeHalf(VHalf16 v) {
    const VFloat word = hn::ConvertTo(DFloat(), hn::PromoteTo(DInt(), v));
    const VFloat scaled = hn::Mul(word, hn::Set(DFloat(), video_range16::toFull));
    return hn::DemoteTo(DHalf16(), hn::ConvertTo(DInt(), scaled));
}

HWY_INLINE V16 FromVideoRange(V16 v) {
    const V16 black = hn::Set(D16(), video_range16::black);
    const V16 clamped = hn::Min(hn::Max(v, black), hn::Set(D16(), video_range16::white));
    const V16 above = hn::Sub(clamped, black);
    return hn::Combine(D16(), FromVideoRangeHalf(hn::UpperHalf(DHalf16(), above)),
                       FromVideoRangeHalf(hn::LowerHalf(DHalf16(), above)));
}

// ---------------------------------------------------------------------------------------------------------
// Ten bits in video range

/// c * 876 / 65535 + 64: with high and low the halves of the product, the quotient is high, and one more
/// where high + low + 1 passes 16 bits.
HWY_INLINE V16 TenBitsOf(V16 v) {
    const V16 range = hn::Set(D16(), video_range10::range);
    const V16 high = hn::MulHigh(v, range);
    const V16 low = hn::Mul(v, range);
    const V16 carry = hn::VecFromMask(D16(), hn::Gt(low, hn::Sub(hn::Set(D16(), 65534), high)));
    return hn::Add(hn::Sub(high, carry), hn::Set(D16(), video_range10::black));
}

/// (v - 64) * 65535 / 876, clamped: 65535 / 876 is 74 and a fraction, 53192 / 65536 of which gives the same
/// integer for each of the 877 values.
HWY_INLINE V16 FromTenBits(V16 v) {
    const V16 range = hn::Set(D16(), video_range10::range);
    const V16 above = hn::Min(hn::SaturatedSub(v, hn::Set(D16(), video_range10::black)), range);
    return hn::Add(hn::Mul(above, hn::Set(D16(), 74)), hn::MulHigh(above, hn::Set(D16(), 53192)));
}

} // namespace HWY_NAMESPACE
} // namespace row_vector
HWY_AFTER_NAMESPACE();

#endif
#endif
