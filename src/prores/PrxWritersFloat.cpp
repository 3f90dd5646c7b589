// Writers of `r4fl`: the reference form, and the choice of the fastest.

#include "prores/PrxChromaMean.h"
#include "prores/PrxFloatRange.h"
#include "prores/PrxRoundToNearest.h"
#include "prores/PrxWriters.h"
#include "prores/PrxWritersFloatVector.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

float FloatOf(int16_t sample, int32_t offset) {
    const int32_t clamped = std::clamp<int32_t>(sample, prx_float_range::lowest, prx_float_range::highest);
    return static_cast<float>(clamped + offset) * prx_float_range::scale;
}

/// Chroma of pixel `x`, of which `at` gives the stream's samples. The right neighbour of pixel 15 lies in
/// another macroblock: that pixel gets the chroma of pixel 14 here.
template <int32_t ChromaFormat, typename At>
float ChromaOfPixel(int32_t x, At at) {
    if constexpr (ChromaFormat == prxChroma444) {
        return FloatOf(at(x), prx_float_range::chromaOffset);
    } else {
        return PrxChromaMean(FloatOf(at(x / 2), prx_float_range::chromaOffset),
                             FloatOf(at(std::min((x + 1) / 2, 7)), prx_float_range::chromaOffset));
    }
}

/// A Y Cb Cr.
template <int32_t ChromaFormat, bool HasAlpha>
void WriteR4fl(const PrxMacroblock& macroblock, const PrxWriterSetup&) {
    const PrxMacroblockView<ChromaFormat> view(macroblock.samples, 0, 0);
    for (int32_t y = 0; y < macroblock.rows; ++y) {
        uint8_t* out = macroblock.dst + y * macroblock.dstStride;
        for (int32_t x = 0; x < 16; ++x) {
            float alpha = 1.0F;
            if constexpr (HasAlpha)
                std::memcpy(&alpha, macroblock.alpha + y * macroblock.alphaStride + x * 4, sizeof(alpha));
            const std::array<float, 4> pixel = {
                alpha, FloatOf(view.Luma(x, y), prx_float_range::lumaOffset),
                ChromaOfPixel<ChromaFormat>(x, [&](int32_t chromaX) { return view.Cb(chromaX, y); }),
                ChromaOfPixel<ChromaFormat>(x, [&](int32_t chromaX) { return view.Cr(chromaX, y); })};
            std::memcpy(out, pixel.data(), sizeof(pixel));
            out += sizeof(pixel);
        }
    }
}

template <int32_t ChromaFormat>
PrxMacroblockWriter WriterOf(bool hasAlpha) {
    return hasAlpha
               ? &PrxRunRoundingToNearest<&WriteR4fl<ChromaFormat, true>, PrxMacroblock, PrxWriterSetup>
               : &PrxRunRoundingToNearest<&WriteR4fl<ChromaFormat, false>, PrxMacroblock, PrxWriterSetup>;
}

} // namespace

PrxMacroblockWriter PrxSelectScalarFloatWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha) {
    if (pixelFormat != prxFormatR4fl) return nullptr;
    if (chromaFormat == prxChroma422) return WriterOf<prxChroma422>(hasAlpha);
    if (chromaFormat == prxChroma444) return WriterOf<prxChroma444>(hasAlpha);
    return nullptr;
}

PrxMacroblockWriter PrxSelectFloatWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha) {
    const PrxMacroblockWriter vector = PrxSelectVectorFloatWriter(pixelFormat, chromaFormat, hasAlpha);
    return vector != nullptr ? vector : PrxSelectScalarFloatWriter(pixelFormat, chromaFormat, hasAlpha);
}
