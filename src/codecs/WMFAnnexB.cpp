#include "codecs/WMFAnnexB.h"

#include <algorithm>
#include <cstring>

namespace CxWMF {

namespace {

constexpr size_t prefixBytes = 4;

bool HasZeroByte(uint32_t word) { return ((word - 0x01010101U) & ~word & 0x80808080U) != 0; }

/// Whether 00 00 01 stands at `at`, or would pass the end.
bool IsStartCode(std::span<const uint8_t> data, size_t at) {
    return at + 2 < data.size() && data[at] == 0 && data[at + 1] == 0 && data[at + 2] == 1;
}

/// The place of 00 00 01 at or behind `from`, or the data's size.
size_t FindCode(std::span<const uint8_t> data, size_t from) {
    uint32_t word = 0;
    size_t at = from;
    while (at < data.size()) {
        const bool hasWord = data.size() - at >= sizeof(word);
        if (hasWord) std::memcpy(&word, data.data() + at, sizeof(word));
        if (hasWord && !HasZeroByte(word)) {
            at += sizeof(word);
        } else {
            const size_t end = std::min(at + sizeof(word), data.size());
            for (; at < end; ++at)
                if (IsStartCode(data, at)) return at;
        }
    }
    return data.size();
}

void PutLength(size_t length, uint8_t* place) {
    for (size_t i = 0; i < prefixBytes; ++i)
        place[i] = static_cast<uint8_t>(length >> (8 * (prefixBytes - 1 - i)));
}

} // namespace

bool BeginsWithStartCode(std::span<const uint8_t> data) {
    return data.size() >= startCode.size() && std::ranges::equal(data.first(startCode.size()), startCode);
}

bool IsAnnexB(std::span<const uint8_t> data) {
    return data.size() > startCode.size() && BeginsWithStartCode(data);
}

size_t FindStartCode(std::span<const uint8_t> data, size_t from) {
    const size_t code = FindCode(data, from);
    const bool isLong = code > from && code < data.size() && data[code - 1] == 0;
    return isLong ? code - 1 : code;
}

void AnnexBFromLengthPrefixes(std::span<uint8_t> sample) {
    if (IsAnnexB(sample)) return;
    while (sample.size() >= prefixBytes && sample[0] == 0) {
        const size_t length = size_t{sample[1]} << 16 | size_t{sample[2]} << 8 | sample[3];
        std::ranges::copy(startCode, sample.begin());
        sample = sample.subspan(std::min(prefixBytes + length, sample.size()));
    }
}

size_t LengthPrefixesFromAnnexB(std::span<const uint8_t> stream, std::span<uint8_t> sample) {
    size_t written = 0;
    size_t start = FindStartCode(stream, 0);
    while (start < stream.size()) {
        // Zeros, and the 1 that ends the start code.
        while (stream[start] == 0)
            ++start;
        ++start;
        const size_t end = FindStartCode(stream, start);
        const std::span<const uint8_t> unit = stream.subspan(start, end - start);
        if (sample.size() - written < prefixBytes + unit.size()) break;
        if (!unit.empty()) {
            PutLength(unit.size(), sample.data() + written);
            std::ranges::copy(unit, sample.begin() + static_cast<ptrdiff_t>(written + prefixBytes));
            written += prefixBytes + unit.size();
        }
        start = end;
    }
    return written;
}

} // namespace CxWMF
