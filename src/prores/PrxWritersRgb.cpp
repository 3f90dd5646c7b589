#include "prores/PrxRgbPacking.h"
#include "prores/PrxRoundToNearest.h"
#include "prores/PrxWriters.h"
#include "prores/PrxWritersRgbVector.h"

#include <cstddef>

namespace {

template <uint32_t PixelFormat, bool HasAlpha>
void StoreMacroblock(const PrxMacroblock& macroblock, const PrxWriterSetup& setup) {
    constexpr PrxRgbLayout layout = PrxRgbLayoutOf(PixelFormat);
    const PrxColorCoefficients& factors =
        PrxGetColorCoefficients(setup.colorMatrix, layout.outMax, prxInputScaleSample);
    // The writer knows full size only and takes the samples for such, whatever the shifts. Kept.
    const PrxMacroblockView<prxChroma444> view(macroblock.samples, 0, 0);
    for (int32_t y = 0; y < macroblock.rows; ++y) {
        const uint8_t* alphaRow = HasAlpha ? macroblock.alpha + y * macroblock.alphaStride : nullptr;
        uint8_t* out = macroblock.dst + y * macroblock.dstStride;
        for (int32_t x = 0; x < 16; ++x) {
            PrxStoreRgbPixel<PixelFormat>(static_cast<float>(view.Luma(x, y) + prxRgbLumaOffset),
                                          view.Cb(x, y), view.Cr(x, y), factors,
                                          PrxRgbAlpha<PixelFormat, HasAlpha>(alphaRow, x),
                                          out + static_cast<ptrdiff_t>(x) * layout.bytesPerPixel);
        }
    }
}

} // namespace

PrxMacroblockWriter PrxSelectScalarRgbWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha) {
    if (chromaFormat != prxChroma444) return nullptr;
    return PrxSelectByRgbFormat<PrxMacroblockWriter>(
        pixelFormat, hasAlpha, [](auto format, auto alpha) -> PrxMacroblockWriter {
            return &PrxRunRoundingToNearest<&StoreMacroblock<format, alpha>, PrxMacroblock, PrxWriterSetup>;
        });
}

PrxMacroblockWriter PrxSelectRgbWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha) {
    const PrxMacroblockWriter vector = PrxSelectVectorRgbWriter(pixelFormat, chromaFormat, hasAlpha);
    return vector != nullptr ? vector : PrxSelectScalarRgbWriter(pixelFormat, chromaFormat, hasAlpha);
}
