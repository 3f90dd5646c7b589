#include "prores/encoder/PrxFrameWriter.h"

#include "prores/PrxFormats.h"
#include "prores/encoder/PrxBytes.h"
#include "prores/encoder/PrxQuantMatrices.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr uint32_t frameTag = 0x69637066;  // "icpf"
constexpr uint32_t encoderId = 0x72766c30; // "rvl0"

/// The formats that have a code, from 1 on.
constexpr uint32_t codedFormats[] = {
    prxFormat2vuy, prxFormatV210, prxFormatV216, prxFormatR408, prxFormatV408,
    prxFormatR4fl, prxFormatArgb, prxFormatBgra, prxFormatN302, prxFormatB64a,
    prxFormatR10k, prxFormatL302, prxFormatY408, prxFormatY416, prxFormatR210,
};

/// Positions that the encoder drops get a weight all the same: the largest of those that decoders know.
uint8_t WrittenWeight(uint8_t weight) { return weight == prxDroppedWeight ? 63 : weight; }

} // namespace

uint8_t PrxSourceFormatCode(uint32_t pixelFormat) {
    const auto* found = std::ranges::find(codedFormats, pixelFormat);
    return found != std::end(codedFormats) ? static_cast<uint8_t>(found - codedFormats + 1) : 0;
}

void PrxWriteFrameHeader(const PrxFrameHeader& header, const PrxFrameRateCodes& codes, uint32_t frameSize,
                         uint8_t* out) {
    PrxStore32(out, frameSize);
    PrxStore32(out + 4, frameTag);
    out += 8;
    const bool needsVersion1 = header.chromaFormat != prxChroma422 || header.alphaType != 0;
    PrxStore16(out, prxFrameHeaderSize);
    out[2] = 0;
    out[3] = needsVersion1 ? 1 : 0;
    PrxStore32(out + 4, encoderId);
    PrxStore16(out + 8, header.width);
    PrxStore16(out + 10, header.height);
    out[12] = static_cast<uint8_t>(header.chromaFormat << 6 | header.interlaceMode << 2);
    out[13] = static_cast<uint8_t>(codes.aspectRatio << 4 | codes.frameRate);
    out[14] = header.colorPrimaries;
    out[15] = header.transferCharacteristic;
    out[16] = header.matrixCoefficients;
    out[17] = static_cast<uint8_t>(header.sourcePixelFormat << 4 | header.alphaType);
    out[18] = 0;
    out[19] = 3;
    uint8_t* next = std::ranges::transform(header.lumaMatrix, out + 20, WrittenWeight).out;
    std::ranges::transform(header.chromaMatrix, next, WrittenWeight);
}

size_t PrxAddStuffing(std::span<uint8_t> output, size_t used) {
    constexpr size_t least = 50;
    const size_t count = least + ((size_t{0} - 2 - used) & 15);
    if (count > output.size() - used) return used;
    std::fill_n(output.data() + used, count, uint8_t{0});
    return used + count;
}
