#include "prores/encoder/PrxInputYuv.h"

#include "prores/PrxFormats.h"
#include "prores/PrxRoundToNearest.h"
#include "prores/encoder/PrxInputBlocks.h"
#include "prores/encoder/PrxInputEdges.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace {

static_assert(std::endian::native == std::endian::little, "words are read as they stand in memory");

/// Number `index` of the numbers of type T at `bytes`.
template <typename T>
T Get(const uint8_t* bytes, int32_t index) {
    T value;
    std::memcpy(&value, bytes + index * sizeof(T), sizeof(T));
    return value;
}

/// The sample of a code of 16 bits: rounded to 12 bits, at most the largest.
int16_t SampleOf(uint16_t code) { return static_cast<int16_t>(std::min(code - 32768 + 8, 32767) >> 4); }

/// The sample of a code of 8 bits.
int16_t SampleOf(uint8_t code) { return static_cast<int16_t>((code - 128) * 16); }

// ---------------------------------------------------------------------------------------------------------
// Pixel formats: the samples of pixel `x` of a row. In packed 4:2:2 the chroma of an even pixel is its
// pair's.

/// `First` is the place of Y0 in a pair, `CbPlace` that of Cb; the other two follow two places behind.
template <typename T, int32_t First, int32_t CbPlace>
struct PackedPixels {
    static int16_t Luma(const uint8_t* row, int32_t x) { return SampleOf(Get<T>(row, 2 * x + First)); }
    static int16_t Cb(const uint8_t* row, int32_t x) { return SampleOf(Get<T>(row, 2 * x + CbPlace)); }
    static int16_t Cr(const uint8_t* row, int32_t x) { return SampleOf(Get<T>(row, 2 * x + CbPlace + 2)); }
};

/// The places of the channels among the four of a pixel.
template <typename T, int32_t LumaPlace, int32_t CbPlace, int32_t CrPlace>
struct FullPixels {
    static int16_t Luma(const uint8_t* row, int32_t x) { return SampleOf(Get<T>(row, 4 * x + LumaPlace)); }
    static int16_t Cb(const uint8_t* row, int32_t x) { return SampleOf(Get<T>(row, 4 * x + CbPlace)); }
    static int16_t Cr(const uint8_t* row, int32_t x) { return SampleOf(Get<T>(row, 4 * x + CrPlace)); }
};

struct R408Pixels : FullPixels<uint8_t, 1, 2, 3> {
    /// Black is 0, and so codes above 239 have no sample of their own: they all get that of 239. Kept.
    static int16_t Luma(const uint8_t* row, int32_t x) {
        return static_cast<int16_t>(std::min(Get<uint8_t>(row, 4 * x + 1) - 112, 127) * 16);
    }
};

struct FloatPixels {
    static int16_t Luma(const uint8_t* row, int32_t x) {
        return FloatSample(Get<float>(row, 4 * x + 1), prx_float_input::lumaOffset);
    }
    static int16_t Cb(const uint8_t* row, int32_t x) {
        return FloatSample(Get<float>(row, 4 * x + 2), prx_float_input::chromaOffset);
    }
    static int16_t Cr(const uint8_t* row, int32_t x) {
        return FloatSample(Get<float>(row, 4 * x + 3), prx_float_input::chromaOffset);
    }

private:
    /// Limits before it rounds, so that every value fits an integer. What is not a number counts as 0.
    static int16_t FloatSample(float value, int32_t offset) {
        const float scaled = std::isnan(value) ? 0.0F : value * prx_float_input::scale;
        const float limited = std::clamp(scaled, static_cast<float>(prx_float_input::lowest + offset),
                                         static_cast<float>(prx_float_input::highest + offset));
        return static_cast<int16_t>(std::lrint(limited) - offset);
    }
};

// ---------------------------------------------------------------------------------------------------------
// Macroblocks

template <class Pixels, int32_t ChromaFormat>
void ConvertRow(const uint8_t* row, int32_t y, const PrxInputBlocks& blocks) {
    constexpr bool is444 = ChromaFormat == prxChroma444;
    for (int32_t x = 0; x < 16; ++x)
        blocks.Luma(x, y) = Pixels::Luma(row, x);
    for (int32_t x = 0; x < (is444 ? 16 : 8); ++x) {
        const int32_t pixel = is444 ? x : 2 * x;
        blocks.Cb(x, y) = Pixels::Cb(row, pixel);
        blocks.Cr(x, y) = Pixels::Cr(row, pixel);
    }
}

template <class Pixels, int32_t ChromaFormat>
void ConvertPixels(const uint8_t* source, ptrdiff_t rowBytes, int16_t* blocks, int32_t) {
    for (int32_t y = 0; y < 16; ++y)
        ConvertRow<Pixels, ChromaFormat>(source + y * rowBytes, y, PrxInputBlocks(blocks));
}

template <int32_t ChromaFormat>
[[gnu::noinline]] void ConvertFloats(const uint8_t* source, ptrdiff_t rowBytes, int16_t* blocks) {
    ConvertPixels<FloatPixels, ChromaFormat>(source, rowBytes, blocks, 0);
}

template <int32_t ChromaFormat>
void ConvertFloatsNearest(const uint8_t* source, ptrdiff_t rowBytes, int16_t* blocks, int32_t) {
    PrxRunRoundingToNearest<&ConvertFloats<ChromaFormat>>(source, rowBytes, blocks);
}

template <uint32_t PixelFormat, class Pixels, int32_t ChromaFormat>
constexpr PrxConvertMacroblock converterOf =
    PrxConvertWithEdges<PixelFormat, ConvertPixels<Pixels, ChromaFormat>>;

template <int32_t ChromaFormat>
PrxConvertMacroblock FullConverterOf(uint32_t pixelFormat) {
    using Ay = FullPixels<uint8_t, 1, 2, 3>;
    using CbY = FullPixels<uint8_t, 1, 0, 2>;
    using Ay16 = FullPixels<uint16_t, 1, 2, 3>;
    switch (pixelFormat) {
    case prxFormatY408: return converterOf<prxFormatY408, Ay, ChromaFormat>;
    case prxFormatV408: return converterOf<prxFormatV408, CbY, ChromaFormat>;
    case prxFormatR408: return converterOf<prxFormatR408, R408Pixels, ChromaFormat>;
    case prxFormatY416: return converterOf<prxFormatY416, Ay16, ChromaFormat>;
    case prxFormatR4fl: return PrxConvertWithEdges<prxFormatR4fl, ConvertFloatsNearest<ChromaFormat>>;
    default: return nullptr;
    }
}

PrxConvertMacroblock PackedConverterOf(uint32_t pixelFormat) {
    using CbY = PackedPixels<uint8_t, 1, 0>;
    using YCb = PackedPixels<uint8_t, 0, 1>;
    using CbY16 = PackedPixels<uint16_t, 1, 0>;
    switch (pixelFormat) {
    case prxFormat2vuy: return converterOf<prxFormat2vuy, CbY, prxChroma422>;
    case prxFormatYuvs: return converterOf<prxFormatYuvs, YCb, prxChroma422>;
    case prxFormatV216: return converterOf<prxFormatV216, CbY16, prxChroma422>;
    default: return nullptr;
    }
}

} // namespace

PrxConvertMacroblock PrxGetScalarYuvConverter(uint32_t pixelFormat, int32_t chromaFormat) {
    if (chromaFormat == prxChroma444) return FullConverterOf<prxChroma444>(pixelFormat);
    if (chromaFormat != prxChroma422) return nullptr;
    const PrxConvertMacroblock packed = PackedConverterOf(pixelFormat);
    return packed != nullptr ? packed : FullConverterOf<prxChroma422>(pixelFormat);
}
