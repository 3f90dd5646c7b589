#include "prores/PrxRowPassRgbVector.h"

#include "prores/PrxRoundToNearest.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "prores/PrxRowPassRgbVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "prores/PrxRgbPacking-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prx_rgb {
namespace HWY_NAMESPACE {

#if !HWY_ARCH_X86 || HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// The scalar form serves.
PrxRowPass PickRowPass(uint32_t, bool) { return nullptr; }

#else

constexpr int32_t bytesPerPixel = 4; ///< of `v216`, where two pixels share Cb and Cr
constexpr int32_t bytesPerPair = 2 * bytesPerPixel;

/// Pixels of a block.
HWY_INLINE int32_t BlockWidth() { return static_cast<int32_t>(hn::Lanes(DInt())); }

HWY_INLINE VWord LoadWords(const uint8_t* in) {
    return hn::LoadU(DWord(), reinterpret_cast<const uint16_t*>(in));
}

/// For each lane, the sum of its two signed words times the weights that stand in the lane's parity: an even
/// pixel takes its own chroma twice, an odd one its own and the next.
HWY_INLINE VFloat SumChroma(VInt chroma) {
    alignas(16) static constexpr int16_t weights[8] = {2, 0, 1, 1, 2, 0, 1, 1};
    const hn::Repartition<int16_t, DInt> d;
    VInt unused = hn::Zero(DInt());
    const VInt sums = hn::ReorderWidenMulAccumulate(DInt(), hn::BitCast(d, chroma),
                                                    hn::LoadDup128(d, weights), hn::Zero(DInt()), unused);
    return hn::ConvertTo(DFloat(), sums);
}

/// Converts a block of pixels. Reads the pair behind it too.
template <uint32_t PixelFormat, bool HasAlpha>
HWY_INLINE void ConvertBlock(const uint8_t* in, const uint8_t* alpha, const RgbFactors& halved,
                             uint8_t* out) {
    const DInt d;
    const VWord words = LoadWords(in); // Cb0 Y0 Cr0 Y1 Cb1 Y2 Cr1 Y3 ...
    // Each word of luma gives way to the chroma of the next pair: Cb0 Cb1 Cr0 Cr1 Cb1 Cb2 Cr1 Cr2 ...
    const VWord both = hn::OddEven(LoadWords(in + bytesPerPair - 2), words);
    const VInt chroma = hn::BitCast(d, hn::Xor(both, hn::Set(DWord(), 0x8000)));
    const VInt luma = hn::BitCast(d, hn::ShiftRight<16>(hn::BitCast(hn::RebindToUnsigned<DInt>(), words)));
    StoreRgbPixels<PixelFormat>(hn::ConvertTo(DFloat(), hn::Sub(luma, hn::Set(d, 4096))),
                                SumChroma(hn::DupEven(chroma)), SumChroma(hn::DupOdd(chroma)), halved,
                                LoadRgbAlpha<PixelFormat, HasAlpha>(alpha, 0), out);
}

/// Converts the last `count` pixels of a stretch, at most a block, in memory of its own, where the last pair
/// is followed by itself.
template <uint32_t PixelFormat, bool HasAlpha>
HWY_INLINE void ConvertTail(const uint8_t* in, const uint8_t* alpha, const RgbFactors& halved, uint8_t* out,
                            int32_t count) {
    constexpr PrxRgbLayout layout = PrxRgbLayoutOf(PixelFormat);
    constexpr size_t lanes = hn::MaxLanes(DInt());
    alignas(64) uint8_t pixels[lanes * bytesPerPixel + bytesPerPair] = {};
    alignas(64) uint8_t samples[lanes * layout.AlphaBytes()] = {};
    alignas(64) uint8_t converted[lanes * layout.bytesPerPixel];
    const auto pairs = static_cast<size_t>((count + 1) / 2);
    std::memcpy(pixels, in, pairs * bytesPerPair);
    std::memcpy(pixels + pairs * bytesPerPair, in + (pairs - 1) * bytesPerPair, bytesPerPair);
    if constexpr (HasAlpha) std::memcpy(samples, alpha, static_cast<size_t>(count * layout.AlphaBytes()));
    ConvertBlock<PixelFormat, HasAlpha>(pixels, samples, halved, converted);
    std::memcpy(out, converted, static_cast<size_t>(count * layout.bytesPerPixel));
}

/// Converts `width` pixels, which are all of a stretch.
template <uint32_t PixelFormat, bool HasAlpha>
HWY_INLINE void ConvertRow(const uint8_t* in, const uint8_t* alpha, const RgbFactors& halved, uint8_t* out,
                           int32_t width) {
    constexpr PrxRgbLayout layout = PrxRgbLayoutOf(PixelFormat);
    const int32_t block = BlockWidth();
    int32_t left = width;
    for (; left > block; left -= block) {
        ConvertBlock<PixelFormat, HasAlpha>(in, alpha, halved, out);
        in += block * bytesPerPixel;
        out += block * layout.bytesPerPixel;
        if constexpr (HasAlpha) alpha += block * layout.AlphaBytes();
    }
    if (left > 0) ConvertTail<PixelFormat, HasAlpha>(in, alpha, halved, out, left);
}

template <uint32_t PixelFormat, bool HasAlpha>
HWY_NOINLINE void ConvertRows(const PrxRowPassJob& job, const PrxWriterSetup& setup) {
    constexpr PrxRgbLayout layout = PrxRgbLayoutOf(PixelFormat);
    const RgbFactors halved(
        PrxHalveChromaFactors(PrxGetColorCoefficients(setup.colorMatrix, layout.outMax, prxInputScaleWord)));
    const ptrdiff_t first = job.firstPixel;
    for (int32_t row = 0; row < job.rows; ++row) {
        const uint8_t* alpha =
            HasAlpha ? job.alpha + row * job.alphaStride + first * layout.AlphaBytes() : nullptr;
        ConvertRow<PixelFormat, HasAlpha>(
            job.rowBuffer + row * job.rowStride + first * bytesPerPixel, alpha, halved,
            job.dst + row * job.dstStride + first * layout.bytesPerPixel, job.endPixel - job.firstPixel);
    }
}

PrxRowPass PickRowPass(uint32_t pixelFormat, bool hasAlpha) {
    return PrxSelectByRgbFormat<PrxRowPass>(pixelFormat, hasAlpha, [](auto format, auto alpha) -> PrxRowPass {
        return &PrxRunRoundingToNearest<&ConvertRows<format, alpha>, PrxRowPassJob, PrxWriterSetup>;
    });
}

#endif

} // namespace HWY_NAMESPACE
} // namespace prx_rgb
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prx_rgb {
namespace {
HWY_EXPORT(PickRowPass);
} // namespace
} // namespace prx_rgb

PrxRowPass PrxSelectVectorRgbRowPass(uint32_t pixelFormat, bool hasAlpha) {
    using namespace prx_rgb;
    return HWY_DYNAMIC_DISPATCH(PickRowPass)(pixelFormat, hasAlpha);
}
#endif
