#include "prores/PrxSizes.h"

#include "prores/Prx.h"
#include "prores/PrxFormats.h"

#include <algorithm>
#include <limits>

namespace {

constexpr int64_t mostPixels = int64_t{1} << 40;

/// Size classes of the frame size bound: a picture of fewer than `pixelLimit` pixels has the base `bytes`.
struct SizeClass {
    int64_t pixelLimit;
    int64_t bytes;
};
constexpr SizeClass sizeClasses[] = {
    {349921, 0x48000}, {414721, 0x54000},  {691201, 0x6c000},
    {921601, 0x7e000}, {1555201, 0xd8000}, {2073601, 0xfc000},
};
constexpr int64_t largestClassBytes = 0x120000; ///< the base up to twice as many pixels; then it grows

int64_t BaseSize(int64_t pixels) {
    for (const SizeClass& sizeClass : sizeClasses) {
        if (pixels < sizeClass.pixelLimit) return sizeClass.bytes;
    }
    return pixels > 2 * largestClassBytes ? pixels / 2 : largestClassBytes;
}

/// A codec's data rate as a fraction of the base.
struct Rate {
    int64_t numerator;
    int64_t denominator;
};

Rate RateOf(uint32_t codecType, bool is444) {
    switch (codecType) {
    case prxCodecAp4x: return is444 ? Rate{9, 4} : Rate{3, 2};
    case prxCodecAp4h: return is444 ? Rate{3, 2} : Rate{1, 1};
    case prxCodecApcn: return {2, 3};
    case prxCodecApcs: return {13, 28};
    case prxCodecApco: return {13, 63};
    default: return {1, 1};
    }
}

constexpr uint64_t largestRow = 0xfffffff0;

} // namespace

int64_t PrxCountPixels(int32_t width, int32_t height) {
    return std::min(std::max<int64_t>(width, 0) * std::max<int64_t>(height, 0), mostPixels);
}

int64_t PrxGetTargetSize(uint32_t codecType, int64_t pixels, uint32_t pixelFormat) {
    const Rate rate = RateOf(codecType, PrxIs444Codec(codecType) && !PrxIs422Format(pixelFormat));
    return BaseSize(pixels) * rate.numerator / rate.denominator & ~int64_t{0xfff};
}

int64_t PrxGetFrameSizeBound(uint32_t codecType, bool hasAlpha, int32_t width, int32_t height) {
    const int64_t pixels = PrxCountPixels(width, height);
    const int64_t alphaSize = hasAlpha && PrxIs444Codec(codecType) ? 3 * pixels : 0;
    return PrxGetTargetSize(codecType, pixels, 0) + alphaSize;
}

uint32_t PrxGetBytesPerRow(uint32_t width, uint32_t pixelFormat, int32_t quality) {
    const uint64_t wide = width;
    if (pixelFormat == prxFormatV210) {
        return static_cast<uint32_t>(std::min((wide + 47) / 48 * 128, largestRow));
    }
    // Of single pixels with an even number of bytes, 8 and more make a multiple of 16 bytes.
    const uint64_t storedWidth = (wide + 15) / 16 * (quality == 2 ? 8 : 16);
    return static_cast<uint32_t>(
        std::min(storedWidth * PrxGetGroupSize(pixelFormat).bytesPerGroup, largestRow));
}

void PrxGetMaxFrameSize(uint32_t codecType, uint8_t hasAlpha, int32_t width, int32_t height,
                        int32_t* maxFrameSize, int32_t* targetFrameSize) {
    if (maxFrameSize != nullptr) {
        const int64_t bound = PrxGetFrameSizeBound(codecType, hasAlpha != 0, width, height);
        *maxFrameSize = static_cast<int32_t>(std::min<int64_t>(bound, std::numeric_limits<int32_t>::max()));
    }
    if (targetFrameSize != nullptr) {
        // The product keeps its low 32 bits only, so bounds of 2^28 bytes and more give a value of no use.
        // Kept.
        const int64_t bound = PrxGetTargetSize(codecType, PrxCountPixels(width, height), 0);
        *targetFrameSize = static_cast<int32_t>(static_cast<uint32_t>(bound) * 8) / 9;
    }
}

int32_t PrxGetChromaFormat(uint32_t codecType, uint32_t pixelFormat) {
    return PrxIs422Codec(codecType) || PrxIs422Format(pixelFormat) ? prxChroma422 : prxChroma444;
}
