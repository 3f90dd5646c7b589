#include "prores/encoder/PrxInputRgbVector.h"

#include "prores/PrxRgbPacking.h"
#include "prores/PrxRoundToNearest.h"
#include "prores/encoder/PrxInputCoefficients.h"
#include "prores/encoder/PrxInputEdges.h"
#include "prores/encoder/PrxInputRgbSelect.h"

#include <bit>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "prores/encoder/PrxInputRgbVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "prores/PrxNearestIntegers-inl.h"
#include "prores/encoder/PrxInputRows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prx_input_rgb {
namespace HWY_NAMESPACE {

#if !HWY_ARCH_X86 || HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// The scalar forms serve.
PrxConvertMacroblock PickConverter(uint32_t) { return nullptr; }
PrxConvertRgbRow PickRowConverter(uint32_t) { return nullptr; }

#else

namespace hn = hwy::HWY_NAMESPACE;
using namespace prx_input_rows::HWY_NAMESPACE;
using prx_nearest::HWY_NAMESPACE::NearestIntegers;

static_assert(std::endian::native == std::endian::little, "words are stored as they stand in memory");

/// Pixels of a vector.
constexpr int32_t pixelCount = 4 * rowCount;

template <uint32_t PixelFormat>
constexpr ptrdiff_t pixelBytes = PrxRgbLayoutOf(PixelFormat).bytesPerPixel;

// ---------------------------------------------------------------------------------------------------------
// Pixels of the formats

struct Rgb {
    VFloat r;
    VFloat g;
    VFloat b;
};

HWY_INLINE VFloat ToFloats(VPair codes) { return hn::ConvertTo(DFloat(), hn::BitCast(DInt(), codes)); }

/// Words in the lower half of each block, or the upper one.
HWY_INLINE VFloat LowerToFloats(VWord words) {
    return ToFloats(hn::BitCast(DPair(), hn::InterleaveLower(DWord(), words, hn::Zero(DWord()))));
}
HWY_INLINE VFloat UpperToFloats(VWord words) {
    return ToFloats(hn::BitCast(DPair(), hn::InterleaveUpper(DWord(), words, hn::Zero(DWord()))));
}

/// Four pixels of 16 bits a channel for each block.
HWY_INLINE Rgb LoadWidePixels(const uint8_t* source, ptrdiff_t stride) {
    // Two pixels become R R B B G G A A.
    alignas(16) static constexpr Shuffle channels = {3, 2, 11, 10, 7, 6, 15, 14, 5, 4, 13, 12, 1, 0, 9, 8};
    const VByte first = ShuffleBytes(Load(source, stride), channels);
    const VByte second = ShuffleBytes(Load(source + 16, stride), channels);
    const VWord redBlue = LowerPairs(first, second);
    const VWord green = UpperPairs(first, second);
    return {LowerToFloats(redBlue), LowerToFloats(green), UpperToFloats(redBlue)};
}

template <bool BigEndian>
HWY_INLINE VPair LoadPairs(const uint8_t* source, ptrdiff_t stride) {
    alignas(16) static constexpr Shuffle swap = {3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12};
    const VByte pixels = Load(source, stride);
    return hn::BitCast(DPair(), BigEndian ? ShuffleBytes(pixels, swap) : pixels);
}

/// Four pixels for each block, from addresses that are `stride` bytes apart.
template <uint32_t PixelFormat>
HWY_INLINE Rgb LoadPixels(const uint8_t* source, ptrdiff_t stride) {
    constexpr PrxRgbLayout layout = PrxRgbLayoutOf(PixelFormat);
    if constexpr (layout.bytesPerPixel == 8) {
        return LoadWidePixels(source, stride);
    } else {
        const VPair words = LoadPairs<layout.bigEndian>(source, stride);
        const VPair mask = hn::Set(DPair(), layout.outMax);
        return {ToFloats(hn::And(hn::ShiftRight<layout.rShift>(words), mask)),
                ToFloats(hn::And(hn::ShiftRight<layout.gShift>(words), mask)),
                ToFloats(hn::And(hn::ShiftRight<layout.bShift>(words), mask))};
    }
}

// ---------------------------------------------------------------------------------------------------------
// The matrix

/// Factors of one component in all lanes.
struct Weights {
    Weights(float red, float green, float blue)
        : r(hn::Set(DFloat(), red)), g(hn::Set(DFloat(), green)), b(hn::Set(DFloat(), blue)) {}

    HWY_INLINE VFloat operator()(const Rgb& rgb) const {
        return hn::Add(hn::Add(hn::Mul(g, rgb.g), hn::Mul(r, rgb.r)), hn::Mul(b, rgb.b));
    }

    VFloat r;
    VFloat g;
    VFloat b;
};

struct Matrix {
    Matrix(uint32_t pixelFormat, int32_t colorMatrix, PrxInputTarget target)
        : Matrix(PrxGetInputCoefficients(colorMatrix, PrxRgbLayoutOf(pixelFormat).outMax, target)) {}
    explicit Matrix(const PrxInputCoefficients& factors)
        : y(factors.yR, factors.yG, factors.yB), cb(factors.cbR, factors.cbG, factors.cbB),
          cr(factors.crR, factors.crG, factors.crB) {}

    Weights y;
    Weights cb;
    Weights cr;
};

// ---------------------------------------------------------------------------------------------------------
// Macroblocks

/// The samples of eight pixels from those of the left and the right four.
HWY_INLINE VSample Samples(VInt left, VInt right) { return hn::ReorderDemote2To(DSample(), left, right); }

template <uint32_t PixelFormat>
struct RgbRows {
    const Matrix& matrix;

    HWY_INLINE void Convert(const uint8_t* source, ptrdiff_t rowBytes, int16_t* rowsOfHalf) const {
        ConvertEight(source, rowBytes, {leftLuma, leftCb, leftCr}, rowsOfHalf);
        ConvertEight(source + 8 * pixelBytes<PixelFormat>, rowBytes, {rightLuma, rightCb, rightCr},
                     rowsOfHalf);
    }

private:
    struct Places {
        BlockPlace luma;
        BlockPlace cb;
        BlockPlace cr;
    };

    HWY_INLINE void ConvertEight(const uint8_t* source, ptrdiff_t rowBytes, Places places,
                                 int16_t* rowsOfHalf) const {
        const Rgb left = LoadPixels<PixelFormat>(source, rowBytes);
        const Rgb right = LoadPixels<PixelFormat>(source + 4 * pixelBytes<PixelFormat>, rowBytes);
        const VInt offset = hn::Set(DInt(), prxRgbSampleOffset);
        Store(Samples(hn::Sub(NearestIntegers(matrix.y(left)), offset),
                      hn::Sub(NearestIntegers(matrix.y(right)), offset)),
              places.luma, rowsOfHalf);
        Store(Samples(NearestIntegers(matrix.cb(left)), NearestIntegers(matrix.cb(right))), places.cb,
              rowsOfHalf);
        Store(Samples(NearestIntegers(matrix.cr(left)), NearestIntegers(matrix.cr(right))), places.cr,
              rowsOfHalf);
    }
};

template <uint32_t PixelFormat>
HWY_NOINLINE void ConvertPixels(const uint8_t* source, ptrdiff_t rowBytes, int16_t* blocks,
                                int32_t colorMatrix) {
    const Matrix matrix(PixelFormat, colorMatrix, prxInputTargetSamples);
    ForEachVector(RgbRows<PixelFormat>{matrix}, source, rowBytes, blocks);
}

template <uint32_t PixelFormat>
void ConvertPixelsNearest(const uint8_t* source, ptrdiff_t rowBytes, int16_t* blocks, int32_t colorMatrix) {
    PrxRunRoundingToNearest<&ConvertPixels<PixelFormat>>(source, rowBytes, blocks, colorMatrix);
}

// ---------------------------------------------------------------------------------------------------------
// Rows. A vector holds pixels in the order of the row.

/// Cb and Cr in turn.
struct Chroma {
    VFloat even;
    VFloat odd;
};

HWY_INLINE Chroma ChromaOf(const Rgb& rgb, const Matrix& matrix) {
    const VFloat cb = matrix.cb(rgb);
    const VFloat cr = matrix.cr(rgb);
    return {hn::OddEven(hn::DupEven(cr), cb), hn::OddEven(cr, hn::DupOdd(cb))};
}

/// The lanes with the last two in front.
HWY_INLINE VFloat Rotate(VFloat v) {
    const VInt lanes = hn::And(hn::Iota(DInt(), pixelCount - 2), hn::Set(DInt(), pixelCount - 1));
    return hn::TableLookupLanes(v, hn::IndicesFromVec(DFloat(), lanes));
}

/// Converts `pixelCount` pixels. `left` has the chroma of the pixel before them in its first two lanes; what
/// the next block needs there is returned.
template <uint32_t PixelFormat>
HWY_INLINE VFloat ConvertBlock(const uint8_t* source, const Matrix& matrix, VFloat left, uint8_t* out) {
    const DFloat d;
    const Rgb rgb = LoadPixels<PixelFormat>(source, 4 * pixelBytes<PixelFormat>);
    const VFloat luma = hn::Sub(matrix.y(rgb), hn::Set(d, static_cast<float>(prxRgbWordOffset)));
    const Chroma chroma = ChromaOf(rgb, matrix);
    const VFloat rotated = Rotate(chroma.odd);
    const VFloat before = hn::IfThenElse(hn::FirstN(d, 2), left, rotated);
    const VFloat filtered = hn::Add(hn::Add(chroma.even, chroma.even), hn::Add(chroma.odd, before));
    // Each lane of luma with the chroma that stands before it: Cb Y0 Cr Y1.
    const VWord words = hn::OddEven(hn::BitCast(DWord(), hn::ShiftLeft<16>(NearestIntegers(luma))),
                                    hn::BitCast(DWord(), NearestIntegers(filtered)));
    hn::StoreU(hn::BitCast(DByte(), hn::Xor(words, hn::Set(DWord(), 0x8000))), DByte(), out);
    return rotated;
}

/// Fills a block with `count` pixels, and the last of them again and again.
template <ptrdiff_t PixelBytes>
HWY_INLINE void FillBlock(const uint8_t* source, int32_t count, uint8_t* block) {
    std::memcpy(block, source, static_cast<size_t>(count * PixelBytes));
    for (ptrdiff_t x = count; x < pixelCount; ++x)
        std::memcpy(block + x * PixelBytes, block + (x - 1) * PixelBytes, PixelBytes);
}

template <uint32_t PixelFormat>
HWY_NOINLINE void ConvertRow(const uint8_t* source, int32_t width, int32_t colorMatrix, uint8_t* v216Row) {
    constexpr ptrdiff_t bytes = pixelBytes<PixelFormat>;
    const Matrix matrix(PixelFormat, colorMatrix, prxInputTargetWords);
    alignas(64) uint8_t block[pixelCount * bytes];
    FillBlock<bytes>(source, 1, block);
    VFloat left = ChromaOf(LoadPixels<PixelFormat>(block, 4 * bytes), matrix).even;
    for (; width >= pixelCount; width -= pixelCount) {
        left = ConvertBlock<PixelFormat>(source, matrix, left, v216Row);
        source += pixelCount * bytes;
        v216Row += pixelCount * 4;
    }
    if (width > 0) {
        alignas(64) uint8_t converted[pixelCount * 4];
        FillBlock<bytes>(source, width, block);
        ConvertBlock<PixelFormat>(block, matrix, left, converted);
        std::memcpy(v216Row, converted, static_cast<size_t>((width + 1) / 2 * 8));
    }
}

template <uint32_t PixelFormat>
void ConvertRowNearest(const uint8_t* source, int32_t width, int32_t colorMatrix, uint8_t* v216Row) {
    PrxRunRoundingToNearest<&ConvertRow<PixelFormat>>(source, width, colorMatrix, v216Row);
}

// ---------------------------------------------------------------------------------------------------------

PrxConvertMacroblock PickConverter(uint32_t pixelFormat) {
    return PrxSelectRgbInput<PrxConvertMacroblock, PrxHasRgbConverter>(pixelFormat, [](auto format) {
        return PrxConvertMacroblock{PrxConvertWithEdges<format, ConvertPixelsNearest<format>>};
    });
}

PrxConvertRgbRow PickRowConverter(uint32_t pixelFormat) {
    return PrxSelectRgbInput<PrxConvertRgbRow, PrxHasRgbRowConverter>(
        pixelFormat, [](auto format) { return PrxConvertRgbRow{ConvertRowNearest<format>}; });
}

#endif

} // namespace HWY_NAMESPACE
} // namespace prx_input_rgb
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prx_input_rgb {
namespace {
HWY_EXPORT(PickConverter);
HWY_EXPORT(PickRowConverter);
} // namespace
} // namespace prx_input_rgb

PrxConvertMacroblock PrxGetVectorRgbConverter(uint32_t pixelFormat) {
    return HWY_DYNAMIC_DISPATCH(prx_input_rgb::PickConverter)(pixelFormat);
}

PrxConvertRgbRow PrxGetVectorRgbRowConverter(uint32_t pixelFormat) {
    return HWY_DYNAMIC_DISPATCH(prx_input_rgb::PickRowConverter)(pixelFormat);
}
#endif
