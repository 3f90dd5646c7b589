#include "prores/PrxRowPassV210.h"

#include "prores/PrxRowPassV210Vector.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace {

static_assert(std::endian::native == std::endian::little, "words are moved as they stand in memory");

constexpr int32_t groupPixels = 6;
constexpr ptrdiff_t groupBytes = 16;
constexpr ptrdiff_t pixelBytes = 4; ///< of `w216`

/// The words of a group: Cb Y Cr Y.
using GroupWords = std::array<uint16_t, 2 * groupPixels>;

/// Packs the last group, of which only `pixelCount` pixels exist. An odd last pixel brings the whole chroma
/// of its pair.
void PackPartialGroup(const uint8_t* pixels, uint8_t* group, int32_t pixelCount) {
    GroupWords words = {0x8000, 0x1000, 0x8000, 0x1000, 0x8000, 0x1000,
                        0x8000, 0x1000, 0x8000, 0x1000, 0x8000, 0x1000};
    const int32_t wordCount = 2 * pixelCount + pixelCount % 2;
    std::memcpy(words.data(), pixels, sizeof(uint16_t) * static_cast<size_t>(wordCount));
    PrxPackV210Groups(reinterpret_cast<const uint8_t*>(words.data()), group, 1);
}

} // namespace

void PrxPackV210Groups(const uint8_t* pixels, uint8_t* groups, int32_t count) {
    for (int32_t group = 0; group < count; ++group) {
        GroupWords words;
        std::memcpy(words.data(), pixels + group * groupPixels * pixelBytes, sizeof(words));
        std::array<uint32_t, 4> packed;
        for (size_t i = 0; i < packed.size(); ++i) {
            const auto code = [&](size_t part) { return uint32_t{words[3 * i + part]} >> 6; };
            packed[i] = code(0) | code(1) << 10 | code(2) << 20;
        }
        std::memcpy(groups + group * groupBytes, packed.data(), sizeof(packed));
    }
}

void PrxRunV210RowPass(const PrxRowPassJob& job, PrxV210Packer pack) {
    if (job.targetRowBytes < (job.width + groupPixels - 1) / groupPixels * groupBytes) return;
    const int32_t firstGroup = job.firstPixel / groupPixels;
    const int32_t endGroup = (job.endPixel + groupPixels - 1) / groupPixels;
    const int32_t endWhole = std::min(endGroup, job.width / groupPixels);
    for (int32_t y = 0; y < job.rows; ++y) {
        const uint8_t* in = job.rowBuffer + y * job.rowStride;
        uint8_t* out = job.dst + y * job.dstStride;
        pack(in + firstGroup * groupPixels * pixelBytes, out + firstGroup * groupBytes,
             endWhole - firstGroup);
        if (endWhole < endGroup)
            PackPartialGroup(in + endWhole * groupPixels * pixelBytes, out + endWhole * groupBytes,
                             job.width - endWhole * groupPixels);
    }
}

void PrxScalarV210RowPass(const PrxRowPassJob& job, const PrxWriterSetup&) {
    PrxRunV210RowPass(job, PrxPackV210Groups);
}

PrxRowPass PrxSelectV210RowPass() {
    const PrxRowPass vector = PrxSelectVectorV210RowPass();
    return vector != nullptr ? vector : PrxScalarV210RowPass;
}
