#include "prores/PrxRowPassSeam.h"

#include "prores/PrxChromaMean.h"
#include "prores/PrxFormats.h"
#include "prores/PrxRoundToNearest.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

/// Pixels across a macroblock.
constexpr int32_t mbWidth = 16;

/// Of A Y Cb Cr.
template <typename Sample>
using Chroma = std::array<Sample, 2>;

template <typename Sample>
Chroma<Sample> ChromaAt(const uint8_t* pixel) {
    Chroma<Sample> chroma;
    std::memcpy(chroma.data(), pixel + 2 * sizeof(Sample), sizeof(chroma));
    return chroma;
}

/// Finishes the pixel before `next`, the first pixel of a macroblock.
template <typename Sample>
void FinishSeam(uint8_t* next) {
    constexpr ptrdiff_t pixelBytes = 4 * sizeof(Sample);
    const Chroma<Sample> left = ChromaAt<Sample>(next - 2 * pixelBytes);
    const Chroma<Sample> right = ChromaAt<Sample>(next);
    const Chroma<Sample> mean = {PrxChromaMean(left[0], right[0]), PrxChromaMean(left[1], right[1])};
    std::memcpy(next - pixelBytes + 2 * sizeof(Sample), mean.data(), sizeof(mean));
}

template <typename Sample>
void FinishSeams(const PrxRowPassJob& job, const PrxWriterSetup&) {
    constexpr int32_t pixelBytes = 4 * sizeof(Sample);
    // The stretch's last macroblock has a successor unless it is the picture's last.
    const int32_t last = std::min(job.endPixel, job.width - 1);
    for (int32_t y = 0; y < job.rows; ++y) {
        uint8_t* row = job.dst + y * job.dstStride;
        for (int32_t x = job.firstPixel + mbWidth; x <= last; x += mbWidth)
            FinishSeam<Sample>(row + ptrdiff_t{x} * pixelBytes);
    }
}

} // namespace

PrxRowPass PrxSelectSeamPass(uint32_t pixelFormat) {
    switch (pixelFormat) {
    case prxFormatY416: return FinishSeams<uint16_t>;
    case prxFormatR4fl: return &PrxRunRoundingToNearest<&FinishSeams<float>, PrxRowPassJob, PrxWriterSetup>;
    default: return nullptr;
    }
}
