#include "prores/encoder/PrxPictureWriter.h"

#include "prores/encoder/PrxBytes.h"

#include <algorithm>
#include <cassert>

namespace {

constexpr size_t headerSize = 8;
constexpr size_t entrySize = 2;

/// Copies `bytes` to `*next` and moves it behind them. Rate control sees to it that there is room; if there
/// were none, bytes would be left out, and none written outside.
void Append(std::span<const uint8_t> bytes, std::span<uint8_t>* next) {
    assert(bytes.size() <= next->size());
    const size_t size = std::min(bytes.size(), next->size());
    std::copy_n(bytes.data(), size, next->data());
    *next = next->subspan(size);
}

void WriteHeader(size_t pictureSize, size_t sliceCount, uint8_t* out) {
    out[0] = headerSize << 3;
    PrxStore32(out + 1, static_cast<uint32_t>(pictureSize));
    // A count that the field can't hold is left out.
    PrxStore16(out + 5, sliceCount < 65536 ? static_cast<uint32_t>(sliceCount) : 0);
    out[7] = prxLog2SliceWidth << 4;
}

} // namespace

size_t PrxWritePicture(std::span<const PrxSlice> slices, std::span<uint8_t> output) {
    const size_t tableSize = entrySize * slices.size();
    if (output.size() < headerSize + tableSize) return 0;
    uint8_t* entry = output.data() + headerSize;
    std::span<uint8_t> next = output.subspan(headerSize + tableSize);
    for (const PrxSlice& slice : slices) {
        const auto size = static_cast<size_t>(slice.outcome.sliceSize);
        PrxStore16(entry, static_cast<uint32_t>(size + slice.alphaSize));
        entry += entrySize;
        Append({slice.bytes, size}, &next);
        Append({slice.alphaData, slice.alphaSize}, &next);
    }
    const size_t pictureSize = output.size() - next.size();
    WriteHeader(pictureSize, slices.size(), output.data());
    return pictureSize;
}
