#include "prores/encoder/PrxV210Unpack.h"

#include "prores/encoder/PrxV210UnpackVector.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace {

static_assert(std::endian::native == std::endian::little, "words are moved as they stand in memory");

constexpr size_t groupPixels = 6;
constexpr ptrdiff_t groupBytes = 16;

/// Six black pixels of `v216`.
constexpr std::array<uint16_t, 12> blackGroup = {0x8000, 0x1000, 0x8000, 0x1000, 0x8000, 0x1000,
                                                 0x8000, 0x1000, 0x8000, 0x1000, 0x8000, 0x1000};

void WriteBlackGroups(const uint8_t*, uint8_t* pixels, int32_t count) {
    for (int32_t group = 0; group < count; ++group)
        std::memcpy(pixels + group * static_cast<ptrdiff_t>(sizeof(blackGroup)), blackGroup.data(),
                    sizeof(blackGroup));
}

} // namespace

void PrxUnpackV210Groups(const uint8_t* groups, uint8_t* pixels, int32_t count) {
    for (int32_t group = 0; group < count; ++group) {
        std::array<uint32_t, 4> packed;
        std::memcpy(packed.data(), groups + group * groupBytes, sizeof(packed));
        std::array<uint16_t, 2 * groupPixels> words;
        for (size_t i = 0; i < words.size(); ++i)
            words[i] = static_cast<uint16_t>(packed[i / 3] >> (10 * (i % 3)) << 6 & 0xFFC0);
        std::memcpy(pixels + group * static_cast<ptrdiff_t>(sizeof(words)), words.data(), sizeof(words));
    }
}

PrxV210Unpacker PrxSelectV210Unpacker() {
    const PrxV210Unpacker vector = PrxSelectVectorV210Unpacker();
    return vector != nullptr ? vector : PrxUnpackV210Groups;
}

PrxV210Unpacker PrxSelectV210UnpackerFor(int32_t width, ptrdiff_t rowBytes) {
    // Rows without room for whole groups come out black. Kept.
    const bool readable = std::abs(rowBytes) >= PrxCountV210Groups(width) * groupBytes;
    return readable ? PrxSelectV210Unpacker() : WriteBlackGroups;
}
