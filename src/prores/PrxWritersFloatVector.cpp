#include "prores/PrxWritersFloatVector.h"

#include "prores/PrxFloatRange.h"
#include "prores/PrxRoundToNearest.h"

#include <array>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "prores/PrxWritersFloatVector.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace prx_writers_float {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors there is nothing to gain on the scalar form.
PrxMacroblockWriter PickWriter(uint32_t, int32_t, bool) { return nullptr; }

#else

namespace hn = hwy::HWY_NAMESPACE;

/// Pixels of a vector: 4 or 8.
#if HWY_HAVE_SCALABLE
constexpr size_t vectorPixels = 4;
#else
constexpr size_t vectorPixels = HWY_LANES(float) < 8 ? 4 : 8;
#endif

using DFloat = hn::FixedTag<float, vectorPixels>;
using DInt = hn::Rebind<int32_t, DFloat>;
using DSample = hn::Rebind<int16_t, DFloat>;
using DIndex = hn::Repartition<uint8_t, DSample>;
using DByte = hn::Repartition<uint8_t, DFloat>;
using DPair = hn::Repartition<uint64_t, DFloat>;
using VFloat = hn::Vec<DFloat>;
using VSample = hn::Vec<DSample>;

template <int16_t Offset>
HWY_INLINE VFloat ToFloats(VSample samples) {
    const DSample d;
    const VSample limited =
        hn::Min(hn::Max(samples, hn::Set(d, prx_float_range::lowest)), hn::Set(d, prx_float_range::highest));
    const VSample moved = hn::Add(limited, hn::Set(d, Offset));
    return hn::Mul(hn::ConvertTo(DFloat(), hn::PromoteTo(DInt(), moved)),
                   hn::Set(DFloat(), prx_float_range::scale));
}

/// For the sample of each pixel of a row the bytes among eight samples of chroma: those of the even pixel on
/// its left, and of the even pixel on its right, an even pixel being its own neighbour. Pixel 15 has none on
/// its right in the macroblock, and gets its left one.
struct ChromaShuffles {
    alignas(16) std::array<uint8_t, 32> left;
    alignas(16) std::array<uint8_t, 32> right;
};

constexpr ChromaShuffles ShufflesOfChroma() {
    ChromaShuffles shuffles = {};
    for (size_t i = 0; i < 32; ++i) {
        const size_t pixel = i / 2;
        shuffles.left[i] = static_cast<uint8_t>(pixel / 2 * 2 + i % 2);
        shuffles.right[i] = static_cast<uint8_t>((pixel == 15 ? 7 : (pixel + 1) / 2) * 2 + i % 2);
    }
    return shuffles;
}

constexpr ChromaShuffles chromaShuffles = ShufflesOfChroma();

/// Chroma of pixels from `x` on, whose component stands in `leftBlock` and, in 4:4:4, `rightBlock`.
template <int32_t ChromaFormat>
HWY_INLINE VFloat ChromaOfPixels(const int16_t* leftBlock, const int16_t* rightBlock, int32_t x) {
    if constexpr (ChromaFormat == prxChroma444) {
        return ToFloats<prx_float_range::chromaOffset>(
            hn::LoadU(DSample(), (x < 8 ? leftBlock : rightBlock) + (x & 7)));
    } else {
        const hn::FixedTag<uint8_t, 16> row;
        const auto samples = hn::LoadU(row, reinterpret_cast<const uint8_t*>(leftBlock));
        const auto pick = [&](const std::array<uint8_t, 32>& shuffle) HWY_ATTR {
            const auto indices = hn::Load(DIndex(), shuffle.data() + 2 * x);
            return ToFloats<prx_float_range::chromaOffset>(
                hn::BitCast(DSample(), hn::TableLookupBytes(samples, indices)));
        };
        const VFloat sum = hn::Add(pick(chromaShuffles.left), pick(chromaShuffles.right));
        return hn::Mul(sum, hn::Set(DFloat(), 0.5F));
    }
}

/// Stores 16 bytes for each lane, one of `a`, `b`, `c` and `d` each, at any alignment: a pointer to float
/// would have to be aligned, whatever the instructions take.
HWY_INLINE void StorePixels(VFloat a, VFloat b, VFloat c, VFloat d, uint8_t* out) {
    const DFloat floats;
    const DPair pairs;
    const auto left = hn::BitCast(pairs, hn::InterleaveLower(floats, a, b));
    const auto right = hn::BitCast(pairs, hn::InterleaveLower(floats, c, d));
    const auto upperLeft = hn::BitCast(pairs, hn::InterleaveUpper(floats, a, b));
    const auto upperRight = hn::BitCast(pairs, hn::InterleaveUpper(floats, c, d));
    // Pixels 0 to 3; in each upper half, if there are eight, the ones from 4 on.
    const auto pixel0 = hn::InterleaveLower(pairs, left, right);
    const auto pixel1 = hn::InterleaveUpper(pairs, left, right);
    const auto pixel2 = hn::InterleaveLower(pairs, upperLeft, upperRight);
    const auto pixel3 = hn::InterleaveUpper(pairs, upperLeft, upperRight);
    const auto store = [out](hn::Vec<DPair> pixels, size_t vector) HWY_ATTR {
        const DByte bytes;
        hn::StoreU(hn::BitCast(bytes, pixels), bytes, out + vector * hn::Lanes(bytes));
    };
    if constexpr (vectorPixels == 4) {
        store(pixel0, 0);
        store(pixel1, 1);
        store(pixel2, 2);
        store(pixel3, 3);
    } else {
        store(hn::ConcatLowerLower(pairs, pixel1, pixel0), 0);
        store(hn::ConcatLowerLower(pairs, pixel3, pixel2), 1);
        store(hn::ConcatUpperUpper(pairs, pixel1, pixel0), 2);
        store(hn::ConcatUpperUpper(pairs, pixel3, pixel2), 3);
    }
}

/// A Y Cb Cr.
template <int32_t ChromaFormat, bool HasAlpha>
HWY_INLINE void WriteRow(const PrxMacroblock& macroblock, int32_t row) {
    const DFloat d;
    const auto block = [&](int32_t index) { return macroblock.samples + 64 * index + 8 * (row & 7); };
    const int32_t lower = row >> 3;
    const int32_t cb = 4 + 2 * lower;
    uint8_t* out = macroblock.dst + row * macroblock.dstStride;
    for (int32_t x = 0; x < 16; x += static_cast<int32_t>(vectorPixels)) {
        VFloat alpha = hn::Set(d, 1.0F);
        if constexpr (HasAlpha) {
            const uint8_t* alphaRow = macroblock.alpha + row * macroblock.alphaStride;
            alpha = hn::BitCast(d, hn::LoadU(DByte(), alphaRow + sizeof(float) * static_cast<size_t>(x)));
        }
        const VSample luma = hn::LoadU(DSample(), block(2 * lower + (x >> 3)) + (x & 7));
        StorePixels(alpha, ToFloats<prx_float_range::lumaOffset>(luma),
                    ChromaOfPixels<ChromaFormat>(block(cb), block(cb + 4), x),
                    ChromaOfPixels<ChromaFormat>(block(cb + 1), block(cb + 5), x),
                    out + 4 * sizeof(float) * static_cast<size_t>(x));
    }
}

template <int32_t ChromaFormat, bool HasAlpha>
void WriteR4fl(const PrxMacroblock& macroblock, const PrxWriterSetup&) {
    for (int32_t row = 0; row < macroblock.rows; ++row)
        WriteRow<ChromaFormat, HasAlpha>(macroblock, row);
}

template <int32_t ChromaFormat>
PrxMacroblockWriter WriterOf(bool hasAlpha) {
    return hasAlpha
               ? &PrxRunRoundingToNearest<&WriteR4fl<ChromaFormat, true>, PrxMacroblock, PrxWriterSetup>
               : &PrxRunRoundingToNearest<&WriteR4fl<ChromaFormat, false>, PrxMacroblock, PrxWriterSetup>;
}

PrxMacroblockWriter PickWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha) {
    if (pixelFormat != prxFormatR4fl) return nullptr;
    if (chromaFormat == prxChroma422) return WriterOf<prxChroma422>(hasAlpha);
    if (chromaFormat == prxChroma444) return WriterOf<prxChroma444>(hasAlpha);
    return nullptr;
}

#endif

} // namespace HWY_NAMESPACE
} // namespace prx_writers_float
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prx_writers_float {
namespace {
HWY_EXPORT(PickWriter);
} // namespace
} // namespace prx_writers_float

PrxMacroblockWriter PrxSelectVectorFloatWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha) {
    using namespace prx_writers_float;
    return HWY_DYNAMIC_DISPATCH(PickWriter)(pixelFormat, chromaFormat, hasAlpha);
}
#endif
