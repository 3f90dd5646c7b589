// The steps from planes of bytes to images of bytes on vectors. For inclusion once for each instruction set,
// as Highway does it.

#if defined(CORVEX_HOST_COLOR_CONVERT_VECTOR_BYTES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef CORVEX_HOST_COLOR_CONVERT_VECTOR_BYTES_INL_H
#undef CORVEX_HOST_COLOR_CONVERT_VECTOR_BYTES_INL_H
#else
#define CORVEX_HOST_COLOR_CONVERT_VECTOR_BYTES_INL_H
#endif

#include "host/ColorConvertScalar.h"

#include <hwy/highway.h>

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

HWY_BEFORE_NAMESPACE();
namespace color_vector {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Two blocks of 128 bits at most, since pixels of four blocks would take long to bring in order.
using DBytes = hn::CappedTag<uint8_t, 32>;
using DHalfBytes = hn::Half<DBytes>;
using DUnsigned = hn::Repartition<uint16_t, DBytes>;
using DSigned = hn::Repartition<int16_t, DBytes>;
using DPixels = hn::Repartition<uint32_t, DBytes>;
using VBytes = hn::Vec<DBytes>;
using VUnsigned = hn::Vec<DUnsigned>;
using VSigned = hn::Vec<DSigned>;
using VPixels = hn::Vec<DPixels>;

/// `ColorBytesToRgb` in each lane.
struct ByteCoefficients {
    explicit ByteCoefficients(const ColorBytesToRgb& matrix)
        : luma(hn::Set(DUnsigned(), matrix.luma)), offset(hn::Set(DSigned(), matrix.offset)),
          crToRed(hn::Set(DSigned(), matrix.crToRed)), cbToGreen(hn::Set(DSigned(), matrix.cbToGreen)),
          crToGreen(hn::Set(DSigned(), matrix.crToGreen)),
          halfCbToBlue(hn::Set(DSigned(), matrix.halfCbToBlue)) {}

    VUnsigned luma;
    VSigned offset, crToRed, cbToGreen, crToGreen, halfCbToBlue;
};

/// Pixels whose luma and chroma are in the lanes of one vector of words, in two vectors: those of the lower
/// half of each block, and those of the upper.
struct BlockPixels {
    VPixels lower, upper;
};

HWY_INLINE VSigned AddProduct(VSigned sum, VSigned a, VSigned b) {
    return hn::SaturatedAdd(sum, hn::MulFixedPoint15(a, b));
}

/// A channel, 2^7 to a step, in the upper byte, limited; its highest bit is the other way round.
HWY_INLINE VUnsigned InUpperByte(VSigned channel) {
    return hn::BitCast(DUnsigned(), hn::SaturatedAdd(channel, channel));
}

/// @param luma  in the upper byte
HWY_INLINE BlockPixels PixelsOf(VUnsigned luma, VSigned cb, VSigned cr, const ByteCoefficients& matrix) {
    const DUnsigned d;
    const VSigned y = hn::Add(hn::BitCast(DSigned(), hn::MulHigh(luma, matrix.luma)), matrix.offset);
    const VUnsigned red = InUpperByte(AddProduct(y, cr, matrix.crToRed));
    const VUnsigned green =
        InUpperByte(AddProduct(AddProduct(y, cb, matrix.cbToGreen), cr, matrix.crToGreen));
    const VSigned halfBlue = hn::MulFixedPoint15(cb, matrix.halfCbToBlue);
    const VUnsigned blue = InUpperByte(hn::SaturatedAdd(hn::SaturatedAdd(y, halfBlue), halfBlue));

    const VUnsigned both = hn::Or(hn::ShiftRight<8>(red), hn::And(green, hn::Set(d, 0xff00)));
    const VUnsigned redGreen = hn::Xor(both, hn::Set(d, 0x8080));
    const VUnsigned blueAlpha = hn::Xor(hn::ShiftRight<8>(blue), hn::Set(d, 0xff80));
    return {hn::BitCast(DPixels(), hn::InterleaveLower(d, redGreen, blueAlpha)),
            hn::BitCast(DPixels(), hn::InterleaveUpper(d, redGreen, blueAlpha))};
}

/// @param first   pixels of the lower half of each block of luma bytes
/// @param second  of the upper half
HWY_INLINE void StoreInOrder(const BlockPixels& first, const BlockPixels& second, uint8_t* pixels) {
    const DPixels d;
    const size_t lanes = hn::Lanes(d);
    auto* out = reinterpret_cast<uint32_t*>(pixels);
    if (lanes == 4) {
        hn::StoreU(first.lower, d, out);
        hn::StoreU(first.upper, d, out + lanes);
        hn::StoreU(second.lower, d, out + 2 * lanes);
        hn::StoreU(second.upper, d, out + 3 * lanes);
    } else {
        hn::StoreU(hn::ConcatLowerLower(d, first.upper, first.lower), d, out);
        hn::StoreU(hn::ConcatLowerLower(d, second.upper, second.lower), d, out + lanes);
        hn::StoreU(hn::ConcatUpperUpper(d, first.upper, first.lower), d, out + 2 * lanes);
        hn::StoreU(hn::ConcatUpperUpper(d, second.upper, second.lower), d, out + 3 * lanes);
    }
}

/// Chroma samples of even and of odd pixels.
struct ChromaWords {
    explicit ChromaWords(const int16_t* line) {
        const DSigned d;
        const VSigned samples = hn::LoadU(d, line);
        even = hn::Add(samples, samples);
        odd = hn::Add(samples, hn::LoadU(d, line + 1));
    }

    VSigned Lower() const { return hn::InterleaveLower(DSigned(), even, odd); }
    VSigned Upper() const { return hn::InterleaveUpper(DSigned(), even, odd); }

    VSigned even, odd;
};

/// As `PackSteps`: whole blocks, and the rest of the row in scalar form.
struct ByteSteps {
    static void BlendBytes(const uint8_t* own, const uint8_t* other, int16_t* line, int64_t begin,
                           int64_t end) {
        const DHalfBytes bytes;
        const DSigned d;
        const auto step = static_cast<int64_t>(hn::Lanes(d));
        int64_t i = begin;
        for (; i + step <= end; i += step) {
            const VSigned a = hn::PromoteTo(d, hn::LoadU(bytes, own + i));
            const VSigned b = hn::PromoteTo(d, hn::LoadU(bytes, other + i));
            const VSigned sum = hn::Add(hn::Add(a, a), hn::Add(a, b));
            hn::StoreU(hn::ShiftLeft<5>(hn::Sub(sum, hn::Set(d, 4 * 128))), d, line + i);
        }
        color_scalar::Steps::BlendBytes(own, other, line, i, end);
    }

    /// `begin` is even.
    static void BytesToImage(const ColorByteRow& row, const ColorBytesToRgb& matrix, uint8_t* pixels,
                             int64_t begin, int64_t end) {
        const DBytes bytes;
        const VBytes zero = hn::Zero(bytes);
        const ByteCoefficients coefficients(matrix);
        const auto step = static_cast<int64_t>(hn::Lanes(bytes));
        int64_t x = begin;
        for (; x + step <= end; x += step) {
            const VBytes luma = hn::LoadU(bytes, row.luma + x);
            const ChromaWords cb(row.cb + x / 2), cr(row.cr + x / 2);
            const auto lower = hn::BitCast(DUnsigned(), hn::InterleaveLower(bytes, zero, luma));
            const auto upper = hn::BitCast(DUnsigned(), hn::InterleaveUpper(bytes, zero, luma));
            StoreInOrder(PixelsOf(lower, cb.Lower(), cr.Lower(), coefficients),
                         PixelsOf(upper, cb.Upper(), cr.Upper(), coefficients), pixels + 4 * x);
        }
        color_scalar::Steps::BytesToImage(row, matrix, pixels, x, end);
    }
};

} // namespace HWY_NAMESPACE
} // namespace color_vector
HWY_AFTER_NAMESPACE();

#endif

#endif
