#include "prores/PrxWritersRgbVector.h"

#include "prores/PrxRoundToNearest.h"

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "prores/PrxWritersRgbVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "prores/PrxRgbPacking-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prx_rgb {
namespace HWY_NAMESPACE {

#if !HWY_ARCH_X86 || HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// The scalar form serves.
PrxMacroblockWriter PickRgbWriter(uint32_t, bool) { return nullptr; }

#else

constexpr ptrdiff_t blockSize = 64; ///< samples

HWY_INLINE VInt LoadSamples(const int16_t* samples) {
    return hn::PromoteTo(DInt(), hn::LoadU(hn::Rebind<int16_t, DInt>(), samples));
}

/// Stores one row of a block, eight pixels. Cr stands a block behind Cb.
template <uint32_t PixelFormat, bool HasAlpha>
HWY_INLINE void StoreBlockRow(const int16_t* luma, const int16_t* cb, const uint8_t* alpha, size_t alphaX,
                              const RgbFactors& factors, uint8_t* out) {
    constexpr PrxRgbLayout layout = PrxRgbLayoutOf(PixelFormat);
    const DInt d;
    const DFloat df;
    for (size_t x = 0; x < 8; x += hn::Lanes(d)) {
        const VInt y = hn::Add(LoadSamples(luma + x), hn::Set(d, prxRgbLumaOffset));
        StoreRgbPixels<PixelFormat>(hn::ConvertTo(df, y), hn::ConvertTo(df, LoadSamples(cb + x)),
                                    hn::ConvertTo(df, LoadSamples(cb + blockSize + x)), factors,
                                    LoadRgbAlpha<PixelFormat, HasAlpha>(alpha, alphaX + x),
                                    out + x * layout.bytesPerPixel);
    }
}

template <uint32_t PixelFormat, bool HasAlpha>
HWY_NOINLINE void StoreMacroblock(const PrxMacroblock& macroblock, const PrxWriterSetup& setup) {
    constexpr PrxRgbLayout layout = PrxRgbLayoutOf(PixelFormat);
    const RgbFactors factors(PrxGetColorCoefficients(setup.colorMatrix, layout.outMax, prxInputScaleSample));
    const uint8_t* alpha = macroblock.alpha;
    uint8_t* out = macroblock.dst;
    for (ptrdiff_t y = 0; y < macroblock.rows; ++y) {
        // Luma blocks go across first, chroma blocks, of which Cb and Cr alternate, down first.
        const ptrdiff_t lower = y / 8;
        const int16_t* luma = macroblock.samples + 2 * lower * blockSize + y % 8 * 8;
        const int16_t* cb = macroblock.samples + (4 + 2 * lower) * blockSize + y % 8 * 8;
        StoreBlockRow<PixelFormat, HasAlpha>(luma, cb, alpha, 0, factors, out);
        StoreBlockRow<PixelFormat, HasAlpha>(luma + blockSize, cb + 4 * blockSize, alpha, 8, factors,
                                             out + 8 * layout.bytesPerPixel);
        if constexpr (HasAlpha) alpha += macroblock.alphaStride;
        out += macroblock.dstStride;
    }
}

PrxMacroblockWriter PickRgbWriter(uint32_t pixelFormat, bool hasAlpha) {
    return PrxSelectByRgbFormat<PrxMacroblockWriter>(
        pixelFormat, hasAlpha, [](auto format, auto alpha) -> PrxMacroblockWriter {
            return &PrxRunRoundingToNearest<&StoreMacroblock<format, alpha>, PrxMacroblock, PrxWriterSetup>;
        });
}

#endif

} // namespace HWY_NAMESPACE
} // namespace prx_rgb
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prx_rgb {
namespace {
HWY_EXPORT(PickRgbWriter);
} // namespace
} // namespace prx_rgb

PrxMacroblockWriter PrxSelectVectorRgbWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha) {
    using namespace prx_rgb;
    if (chromaFormat != prxChroma444) return nullptr;
    return HWY_DYNAMIC_DISPATCH(PickRgbWriter)(pixelFormat, hasAlpha);
}
#endif
