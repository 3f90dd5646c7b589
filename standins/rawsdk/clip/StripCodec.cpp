#include "rawsdk/clip/StripCodec.h"

#include "rawsdk/clip/Failure.h"

#include <memory>
#include <zstd.h>

namespace rawsdk {

namespace {

constexpr int level = 3;
constexpr uint32_t sampleMask = 0xFFF;

struct FreeContext {
    void operator()(ZSTD_CCtx* context) const { ZSTD_freeCCtx(context); }
};

/// A difference of 12 bits, with its sign in the lowest bit.
constexpr uint32_t Folded(uint32_t difference) {
    const bool isNegative = (difference & 0x800) != 0;
    return (isNegative ? ~difference << 1 | 1 : difference << 1) & sampleMask;
}
constexpr uint32_t Unfolded(uint32_t folded) { return folded >> 1 ^ (0 - (folded & 1)); }

/// The sample to the left that has the same colour, or 0.
uint32_t Left(const uint16_t* row, uint32_t x) { return x < 2 ? 0 : row[x - 2]; }

/// Splits the differences into their low bytes, and behind these their high bits.
std::vector<uint8_t> Difference(std::span<const uint16_t> samples, uint32_t width) {
    std::vector<uint8_t> planes(samples.size() * 2);
    for (size_t first = 0; first < samples.size(); first += width)
        for (uint32_t x = 0; x < width; ++x) {
            const uint16_t* const row = &samples[first];
            const uint32_t folded = Folded(row[x] - Left(row, x));
            planes[first + x] = static_cast<uint8_t>(folded);
            planes[samples.size() + first + x] = static_cast<uint8_t>(folded >> 8);
        }
    return planes;
}

void Sum(const uint8_t* low, const uint8_t* high, uint16_t* row, uint32_t width) {
    uint32_t left[2] = {0, 0};
    for (uint32_t x = 0; x < width; ++x) {
        uint32_t& value = left[x & 1];
        value = (value + Unfolded(low[x] | uint32_t{high[x]} << 8)) & sampleMask;
        row[x] = static_cast<uint16_t>(value);
    }
}

} // namespace

std::vector<uint8_t> CompressStrip(std::span<const uint16_t> samples, uint32_t width) {
    const std::vector<uint8_t> planes = Difference(samples, width);
    const std::unique_ptr<ZSTD_CCtx, FreeContext> context(ZSTD_createCCtx());
    if (context == nullptr) throw Failure{E_OUTOFMEMORY};
    ZSTD_CCtx_setParameter(context.get(), ZSTD_c_compressionLevel, level);
    ZSTD_CCtx_setParameter(context.get(), ZSTD_c_checksumFlag, 1);
    std::vector<uint8_t> data(ZSTD_compressBound(planes.size()));
    const size_t size = ZSTD_compress2(context.get(), data.data(), data.size(), planes.data(), planes.size());
    if (ZSTD_isError(size)) throw Failure{E_OUTOFMEMORY};
    data.resize(size);
    return data;
}

void DecompressStrip(std::span<const uint8_t> data, std::span<uint16_t> samples, uint32_t width) {
    const size_t bytes = samples.size() * 2;
    const auto planes = std::make_unique_for_overwrite<uint8_t[]>(bytes);
    Require(ZSTD_decompress(planes.get(), bytes, data.data(), data.size()) == bytes);
    for (size_t first = 0; first < samples.size(); first += width)
        Sum(&planes[first], &planes[samples.size() + first], &samples[first], width);
}

} // namespace rawsdk
