#include "prores/encoder/PrxInputRgb.h"

#include "prores/PrxRgbPacking.h"
#include "prores/PrxRoundToNearest.h"
#include "prores/encoder/PrxInputBlocks.h"
#include "prores/encoder/PrxInputCoefficients.h"
#include "prores/encoder/PrxInputEdges.h"
#include "prores/encoder/PrxInputRgbSelect.h"
#include "prores/encoder/PrxInputRgbVector.h"

#include <algorithm>
#include <cmath>

namespace {

struct Rgb {
    float r;
    float g;
    float b;
};

/// Pixel `x` of a row.
template <uint32_t PixelFormat>
Rgb LoadPixel(const uint8_t* row, int32_t x) {
    constexpr PrxRgbLayout layout = PrxRgbLayoutOf(PixelFormat);
    const uint8_t* bytes = row + static_cast<ptrdiff_t>(x) * layout.bytesPerPixel;
    uint64_t word = 0;
    for (int32_t i = 0; i < layout.bytesPerPixel; ++i)
        word = word << 8 | bytes[layout.bigEndian ? i : layout.bytesPerPixel - 1 - i];
    const auto channel = [word](int32_t shift) {
        return static_cast<float>(static_cast<int32_t>(word >> shift & layout.outMax));
    };
    return {channel(layout.rShift), channel(layout.gShift), channel(layout.bShift)};
}

float Luma(const Rgb& rgb, const PrxInputCoefficients& factors) {
    return (factors.yG * rgb.g + factors.yR * rgb.r) + factors.yB * rgb.b;
}
float Cb(const Rgb& rgb, const PrxInputCoefficients& factors) {
    return (factors.cbG * rgb.g + factors.cbR * rgb.r) + factors.cbB * rgb.b;
}
float Cr(const Rgb& rgb, const PrxInputCoefficients& factors) {
    return (factors.crG * rgb.g + factors.crR * rgb.r) + factors.crB * rgb.b;
}

int32_t Nearest(float value) { return static_cast<int32_t>(std::lrint(value)); }

// ---------------------------------------------------------------------------------------------------------
// Macroblocks

template <uint32_t PixelFormat>
void ConvertPixels(const uint8_t* source, ptrdiff_t rowBytes, int16_t* blocks, int32_t colorMatrix) {
    const PrxInputCoefficients& factors =
        PrxGetInputCoefficients(colorMatrix, PrxRgbLayoutOf(PixelFormat).outMax, prxInputTargetSamples);
    const PrxInputBlocks samples(blocks);
    for (int32_t y = 0; y < 16; ++y) {
        for (int32_t x = 0; x < 16; ++x) {
            const Rgb rgb = LoadPixel<PixelFormat>(source + y * rowBytes, x);
            samples.Luma(x, y) = static_cast<int16_t>(Nearest(Luma(rgb, factors)) - prxRgbSampleOffset);
            samples.Cb(x, y) = static_cast<int16_t>(Nearest(Cb(rgb, factors)));
            samples.Cr(x, y) = static_cast<int16_t>(Nearest(Cr(rgb, factors)));
        }
    }
}

template <uint32_t PixelFormat>
void ConvertPixelsNearest(const uint8_t* source, ptrdiff_t rowBytes, int16_t* blocks, int32_t colorMatrix) {
    PrxRunRoundingToNearest<&ConvertPixels<PixelFormat>>(source, rowBytes, blocks, colorMatrix);
}

// ---------------------------------------------------------------------------------------------------------
// Rows

/// Stores an integer as a word with 0 in the middle of its range.
void StoreWord(float value, uint8_t* out) {
    const int32_t word = Nearest(value) + 32768;
    out[0] = static_cast<uint8_t>(word);
    out[1] = static_cast<uint8_t>(word >> 8);
}

float LumaWord(const Rgb& rgb, const PrxInputCoefficients& factors) {
    return Luma(rgb, factors) - static_cast<float>(prxRgbWordOffset);
}

template <uint32_t PixelFormat>
void ConvertRow(const uint8_t* source, int32_t width, int32_t colorMatrix, uint8_t* v216Row) {
    const PrxInputCoefficients& factors =
        PrxGetInputCoefficients(colorMatrix, PrxRgbLayoutOf(PixelFormat).outMax, prxInputTargetWords);
    for (int32_t x = 0; x < width; x += 2) {
        const Rgb left = LoadPixel<PixelFormat>(source, std::max(x - 1, 0));
        const Rgb own = LoadPixel<PixelFormat>(source, x);
        const Rgb right = LoadPixel<PixelFormat>(source, std::min(x + 1, width - 1));
        const auto filtered = [&](auto chroma) {
            return 2 * chroma(own, factors) + (chroma(right, factors) + chroma(left, factors));
        };
        uint8_t* pair = v216Row + 4 * static_cast<ptrdiff_t>(x);
        StoreWord(filtered(Cb), pair);
        StoreWord(LumaWord(own, factors), pair + 2);
        StoreWord(filtered(Cr), pair + 4);
        StoreWord(LumaWord(right, factors), pair + 6);
    }
}

template <uint32_t PixelFormat>
void ConvertRowNearest(const uint8_t* source, int32_t width, int32_t colorMatrix, uint8_t* v216Row) {
    PrxRunRoundingToNearest<&ConvertRow<PixelFormat>>(source, width, colorMatrix, v216Row);
}

} // namespace

PrxConvertMacroblock PrxGetScalarRgbConverter(uint32_t pixelFormat) {
    return PrxSelectRgbInput<PrxConvertMacroblock, PrxHasRgbConverter>(pixelFormat, [](auto format) {
        return PrxConvertMacroblock{PrxConvertWithEdges<format, ConvertPixelsNearest<format>>};
    });
}

PrxConvertRgbRow PrxGetScalarRgbRowConverter(uint32_t pixelFormat) {
    return PrxSelectRgbInput<PrxConvertRgbRow, PrxHasRgbRowConverter>(
        pixelFormat, [](auto format) { return PrxConvertRgbRow{ConvertRowNearest<format>}; });
}

PrxConvertMacroblock PrxGetRgbConverter(uint32_t pixelFormat) {
    const PrxConvertMacroblock vector = PrxGetVectorRgbConverter(pixelFormat);
    return vector != nullptr ? vector : PrxGetScalarRgbConverter(pixelFormat);
}

PrxConvertRgbRow PrxGetRgbRowConverter(uint32_t pixelFormat) {
    const PrxConvertRgbRow vector = PrxGetVectorRgbRowConverter(pixelFormat);
    return vector != nullptr ? vector : PrxGetScalarRgbRowConverter(pixelFormat);
}
