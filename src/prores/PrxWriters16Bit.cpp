// Writers of 16-bit Y'CbCr: the reference forms, and the choice of the fastest.

#include "prores/PrxChromaMean.h"
#include "prores/PrxWriters.h"
#include "prores/PrxWriters16BitVector.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace {

static_assert(std::endian::native == std::endian::little, "words are stored as they stand in memory");

/// Pixels across a macroblock.
constexpr int32_t mbWidth = 16;

/// 13-bit sample to word; the largest word is 0xFFF8.
uint16_t WordOf13Bits(int16_t sample) {
    return static_cast<uint16_t>(std::clamp<int32_t>(sample, -4096, 4095) * 8 + 32768);
}

/// 10-bit sample to a word that holds one of the codes 4 to 1019.
uint16_t WordOf10Bits(int16_t sample) {
    return static_cast<uint16_t>(std::clamp<int32_t>(sample, -508, 507) * 64 + 32768);
}

using WordOf = uint16_t (*)(int16_t sample);

/// Cb Y0 Cr Y1. Of a 4:4:4 stream the chroma of odd pixels is dropped, without a filter.
template <int32_t ChromaFormat, WordOf ToWord>
void Write422(const PrxMacroblock& macroblock, const PrxWriterSetup&) {
    const PrxMacroblockView<ChromaFormat> view(macroblock.samples, 0, 0);
    for (int32_t y = 0; y < macroblock.rows; ++y) {
        uint8_t* out = macroblock.dst + y * macroblock.dstStride;
        for (int32_t x = 0; x < mbWidth; x += 2) {
            const int32_t chromaX = ChromaFormat == prxChroma444 ? x : x / 2;
            const std::array<uint16_t, 4> pair = {ToWord(view.Cb(chromaX, y)), ToWord(view.Luma(x, y)),
                                                  ToWord(view.Cr(chromaX, y)), ToWord(view.Luma(x + 1, y))};
            std::memcpy(out, pair.data(), sizeof(pair));
            out += sizeof(pair);
        }
    }
}

/// Chroma of pixel `x`, of which `at` gives the stream's samples as words. The right neighbour of pixel 15
/// lies in another macroblock: that pixel gets the chroma of pixel 14 here.
template <int32_t ChromaFormat, typename At>
uint16_t ChromaOfPixel(int32_t x, At at) {
    if constexpr (ChromaFormat == prxChroma444) {
        return at(x);
    } else {
        return PrxChromaMean(at(x / 2), at(std::min((x + 1) / 2, 7)));
    }
}

/// A Y Cb Cr.
template <int32_t ChromaFormat, bool HasAlpha>
void WriteY416(const PrxMacroblock& macroblock, const PrxWriterSetup&) {
    const PrxMacroblockView<ChromaFormat> view(macroblock.samples, 0, 0);
    for (int32_t y = 0; y < macroblock.rows; ++y) {
        uint8_t* out = macroblock.dst + y * macroblock.dstStride;
        for (int32_t x = 0; x < mbWidth; ++x) {
            uint16_t alpha = 0xFFFF;
            if constexpr (HasAlpha)
                std::memcpy(&alpha, macroblock.alpha + y * macroblock.alphaStride + x * 2, sizeof(alpha));
            const uint16_t cb = ChromaOfPixel<ChromaFormat>(
                x, [&](int32_t chromaX) { return WordOf13Bits(view.Cb(chromaX, y)); });
            const uint16_t cr = ChromaOfPixel<ChromaFormat>(
                x, [&](int32_t chromaX) { return WordOf13Bits(view.Cr(chromaX, y)); });
            const std::array<uint16_t, 4> pixel = {alpha, WordOf13Bits(view.Luma(x, y)), cb, cr};
            std::memcpy(out, pixel.data(), sizeof(pixel));
            out += sizeof(pixel);
        }
    }
}

template <int32_t ChromaFormat>
PrxMacroblockWriter WriterOf(uint32_t pixelFormat, bool hasAlpha) {
    switch (pixelFormat) {
    case prxFormatV216: return Write422<ChromaFormat, WordOf13Bits>;
    case prxFormatW216: return Write422<ChromaFormat, WordOf10Bits>;
    case prxFormatY416: return hasAlpha ? WriteY416<ChromaFormat, true> : WriteY416<ChromaFormat, false>;
    default: return nullptr;
    }
}

} // namespace

PrxMacroblockWriter PrxSelectScalar16BitWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha) {
    if (chromaFormat == prxChroma422) return WriterOf<prxChroma422>(pixelFormat, hasAlpha);
    if (chromaFormat == prxChroma444) return WriterOf<prxChroma444>(pixelFormat, hasAlpha);
    return nullptr;
}

PrxMacroblockWriter PrxSelect16BitWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha) {
    const PrxMacroblockWriter vector = PrxSelectVector16BitWriter(pixelFormat, chromaFormat, hasAlpha);
    return vector != nullptr ? vector : PrxSelectScalar16BitWriter(pixelFormat, chromaFormat, hasAlpha);
}
