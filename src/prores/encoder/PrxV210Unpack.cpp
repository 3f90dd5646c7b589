#include "prores/encoder/PrxV210Unpack.h"

#include "prores/encoder/PrxV210UnpackVector.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace {

static_assert(std::endian::native == std::endian::little, "words are moved as they stand in memory");

constexpr int32_t groupPixels = 6;
constexpr ptrdiff_t groupBytes = 16;

/// Two black pixels of `v216`.
constexpr std::array<uint16_t, 4> blackPair = {0x8000, 0x1000, 0x8000, 0x1000};

void FillBlack(uint8_t* pixels, int32_t width) {
    for (int32_t pair = 0; pair < (width + 1) / 2; ++pair)
        std::memcpy(pixels + pair * static_cast<ptrdiff_t>(sizeof(blackPair)), blackPair.data(),
                    sizeof(blackPair));
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

void PrxUnpackV210Rows(const PrxStrip& strip, const PrxRowBuffer& buffer) {
    const int32_t groups = (strip.width + groupPixels - 1) / groupPixels;
    const bool readable = std::abs(strip.rowBytes) >= groups * groupBytes;
    const PrxV210Unpacker unpack = PrxSelectV210Unpacker();
    for (int32_t row = 0; row < strip.rowCount; ++row) {
        if (readable) {
            unpack(strip.rows + row * strip.rowBytes, buffer.Row(row), groups);
        } else {
            FillBlack(buffer.Row(row), strip.width);
        }
    }
}

PrxV210Unpacker PrxSelectV210Unpacker() {
    const PrxV210Unpacker vector = PrxSelectVectorV210Unpacker();
    return vector != nullptr ? vector : PrxUnpackV210Groups;
}
