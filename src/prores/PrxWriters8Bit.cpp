#include "prores/PrxWriters.h"
#include "prores/PrxWriters8BitVector.h"

#include <algorithm>

namespace {

/// A sample of 8 bits as an unsigned byte.
uint8_t ToByte(int16_t sample) { return static_cast<uint8_t>(std::clamp<int32_t>(sample, -128, 127) + 128); }

/// The same without 0 and 255, which serial interfaces keep for themselves (Rec. ITU-R BT.656).
uint8_t ToVideoByte(int16_t sample) { return std::clamp<uint8_t>(ToByte(sample), 1, 254); }

/// Luma with black at 0.
uint8_t ToLumaFromBlack(int16_t sample) { return static_cast<uint8_t>(std::max(ToByte(sample) - 16, 0)); }

constexpr uint8_t opaque = 255;
constexpr uint8_t opaqueInVideoRange = 235;

/// Two pixels share the even one's chroma. From a 4:4:4 stream the odd one's is dropped, without a filter.
/// Kept.
template <int32_t ChromaFormat>
void Write2vuy(const PrxMacroblock& macroblock, const PrxWriterSetup& setup) {
    const PrxMacroblockView<ChromaFormat> view(macroblock.samples, setup.hShift, setup.vShift);
    for (int32_t y = 0; y < macroblock.rows; ++y) {
        uint8_t* out = macroblock.dst + y * macroblock.dstStride;
        for (int32_t x = 0; x < 16 >> setup.hShift; x += 2, out += 4) {
            const int32_t chromaX = ChromaFormat == prxChroma422 ? x / 2 : x;
            out[0] = ToVideoByte(view.Cb(chromaX, y));
            out[1] = ToVideoByte(view.Luma(x, y));
            out[2] = ToVideoByte(view.Cr(chromaX, y));
            out[3] = ToVideoByte(view.Luma(x + 1, y));
        }
    }
}

/// The alpha sample of pixel (x, y) at the macroblock's reduction: alpha is decoded at full size only, and
/// the reduced picture takes single samples of it, without a filter. Kept.
uint8_t AlphaAt(const PrxMacroblock& macroblock, int32_t hShift, int32_t vShift, int32_t x, int32_t y) {
    return macroblock.alpha[(y << vShift) * macroblock.alphaStride + (x << hShift)];
}

/// Calls `store(out, luma, cb, cr, alpha)` for each pixel, four bytes at `out`. From a 4:2:2 stream two
/// pixels get the same chroma.
template <int32_t ChromaFormat, bool HasAlpha, typename Store>
void WriteFourBytes(const PrxMacroblock& macroblock, int32_t hShift, int32_t vShift, uint8_t opaqueAlpha,
                    Store store) {
    const PrxMacroblockView<ChromaFormat> view(macroblock.samples, hShift, vShift);
    for (int32_t y = 0; y < macroblock.rows; ++y) {
        uint8_t* out = macroblock.dst + y * macroblock.dstStride;
        for (int32_t x = 0; x < 16 >> hShift; ++x, out += 4) {
            const int32_t chromaX = ChromaFormat == prxChroma422 ? x / 2 : x;
            const uint8_t alpha = HasAlpha ? AlphaAt(macroblock, hShift, vShift, x, y) : opaqueAlpha;
            store(out, view.Luma(x, y), view.Cb(chromaX, y), view.Cr(chromaX, y), alpha);
        }
    }
}

struct R408Writer {
    template <int32_t ChromaFormat, bool HasAlpha>
    static void Write(const PrxMacroblock& macroblock, const PrxWriterSetup& setup) {
        WriteFourBytes<ChromaFormat, HasAlpha>(
            macroblock, setup.hShift, setup.vShift, opaque,
            [](uint8_t* out, int16_t luma, int16_t cb, int16_t cr, uint8_t alpha) {
                out[0] = alpha;
                out[1] = ToLumaFromBlack(luma);
                out[2] = ToByte(cb);
                out[3] = ToByte(cr);
            });
    }
};

struct Y408Writer {
    template <int32_t ChromaFormat, bool HasAlpha>
    static void Write(const PrxMacroblock& macroblock, const PrxWriterSetup& setup) {
        WriteFourBytes<ChromaFormat, HasAlpha>(
            macroblock, setup.hShift, setup.vShift, opaque,
            [](uint8_t* out, int16_t luma, int16_t cb, int16_t cr, uint8_t alpha) {
                out[0] = alpha;
                out[1] = ToByte(luma);
                out[2] = ToByte(cb);
                out[3] = ToByte(cr);
            });
    }
};

/// Full size whatever the setup's shifts are. Kept.
struct V408Writer {
    template <int32_t ChromaFormat, bool HasAlpha>
    static void Write(const PrxMacroblock& macroblock, const PrxWriterSetup&) {
        WriteFourBytes<ChromaFormat, HasAlpha>(
            macroblock, 0, 0, opaqueInVideoRange,
            [](uint8_t* out, int16_t luma, int16_t cb, int16_t cr, uint8_t alpha) {
                out[0] = ToVideoByte(cb);
                out[1] = ToVideoByte(luma);
                out[2] = ToVideoByte(cr);
                out[3] = alpha;
            });
    }
};

template <typename Writer>
PrxMacroblockWriter FourByteWriter(int32_t chromaFormat, bool hasAlpha) {
    if (chromaFormat == prxChroma422)
        return hasAlpha ? &Writer::template Write<prxChroma422, true>
                        : &Writer::template Write<prxChroma422, false>;
    return hasAlpha ? &Writer::template Write<prxChroma444, true>
                    : &Writer::template Write<prxChroma444, false>;
}

/// Whether a decoding mode reduces by 2^hShift across and 2^vShift down.
bool IsReduction(int32_t hShift, int32_t vShift) {
    const bool inRange = std::min(hShift, vShift) >= 0 && std::max(hShift, vShift) <= 3;
    return inRange && std::max(hShift, vShift) - std::min(hShift, vShift) <= 1;
}

} // namespace

PrxMacroblockWriter PrxSelectScalar8BitWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha) {
    if (chromaFormat != prxChroma422 && chromaFormat != prxChroma444) return nullptr;
    switch (pixelFormat) {
    case prxFormat2vuy:
        return chromaFormat == prxChroma422 ? &Write2vuy<prxChroma422> : &Write2vuy<prxChroma444>;
    case prxFormatR408: return FourByteWriter<R408Writer>(chromaFormat, hasAlpha);
    case prxFormatY408: return FourByteWriter<Y408Writer>(chromaFormat, hasAlpha);
    case prxFormatV408: return FourByteWriter<V408Writer>(chromaFormat, hasAlpha);
    default: return nullptr;
    }
}

PrxMacroblockWriter PrxSelect8BitWriter(uint32_t pixelFormat, int32_t chromaFormat, int32_t hShift,
                                        int32_t vShift, bool hasAlpha) {
    if (!IsReduction(hShift, vShift)) return nullptr;
    const PrxMacroblockWriter vector = PrxSelectVector8BitWriter(pixelFormat, chromaFormat, hShift, hasAlpha);
    return vector != nullptr ? vector : PrxSelectScalar8BitWriter(pixelFormat, chromaFormat, hasAlpha);
}
