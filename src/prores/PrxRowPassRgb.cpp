#include "prores/PrxRowPassRgb.h"

#include "prores/PrxRgbPacking.h"
#include "prores/PrxRoundToNearest.h"
#include "prores/PrxRowPassRgbVector.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

constexpr int32_t bytesPerPair = 8;

/// Two pixels of `v216`.
struct Pair {
    int32_t cb;
    std::array<int32_t, 2> y;
    int32_t cr;
};

/// Pair `index` of a row, with luma black and neutral chroma at 0.
Pair LoadPair(const uint8_t* row, int32_t index) {
    const uint8_t* bytes = row + static_cast<ptrdiff_t>(index) * bytesPerPair;
    const auto word = [bytes](int32_t i) { return bytes[2 * i] | bytes[2 * i + 1] << 8; };
    return {word(0) - 32768, {word(1) - 4096, word(3) - 4096}, word(2) - 32768};
}

/// Converts the pixels of one row. Chroma is the sum of two samples, hence the halved factors: for an even
/// pixel its pair's own twice, for an odd one its pair's and the next pair's.
template <uint32_t PixelFormat, bool HasAlpha>
void ConvertRow(const PrxRowPassJob& job, const PrxColorCoefficients& halved, int32_t row) {
    const uint8_t* in = job.rowBuffer + row * job.rowStride;
    const uint8_t* alphaRow = HasAlpha ? job.alpha + row * job.alphaStride : nullptr;
    uint8_t* out = job.dst + row * job.dstStride;
    const int32_t lastPair = (job.endPixel - 1) / 2;
    for (int32_t x = job.firstPixel; x < job.endPixel; ++x) {
        const Pair own = LoadPair(in, x / 2);
        const Pair other = LoadPair(in, std::min((x + 1) / 2, lastPair));
        PrxStoreRgbPixel<PixelFormat>(
            static_cast<float>(own.y[x % 2]), static_cast<float>(own.cb + other.cb),
            static_cast<float>(own.cr + other.cr), halved, PrxRgbAlpha<PixelFormat, HasAlpha>(alphaRow, x),
            out + static_cast<ptrdiff_t>(x) * PrxRgbLayoutOf(PixelFormat).bytesPerPixel);
    }
}

template <uint32_t PixelFormat, bool HasAlpha>
void ConvertRows(const PrxRowPassJob& job, const PrxWriterSetup& setup) {
    constexpr PrxRgbLayout layout = PrxRgbLayoutOf(PixelFormat);
    const PrxColorCoefficients halved =
        PrxHalveChromaFactors(PrxGetColorCoefficients(setup.colorMatrix, layout.outMax, prxInputScaleWord));
    for (int32_t row = 0; row < job.rows; ++row)
        ConvertRow<PixelFormat, HasAlpha>(job, halved, row);
}

} // namespace

PrxRowPass PrxSelectScalarRgbRowPass(uint32_t pixelFormat, bool hasAlpha) {
    return PrxSelectByRgbFormat<PrxRowPass>(pixelFormat, hasAlpha, [](auto format, auto alpha) -> PrxRowPass {
        return &PrxRunRoundingToNearest<&ConvertRows<format, alpha>, PrxRowPassJob, PrxWriterSetup>;
    });
}

PrxRowPass PrxSelectRgbRowPass(uint32_t pixelFormat, bool hasAlpha) {
    const PrxRowPass vector = PrxSelectVectorRgbRowPass(pixelFormat, hasAlpha);
    return vector != nullptr ? vector : PrxSelectScalarRgbRowPass(pixelFormat, hasAlpha);
}
