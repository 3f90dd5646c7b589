#include "prores/encoder/PrxV210Unpack.h"

#include "prores/PrxFormats.h"
#include "prores/encoder/PrxV210UnpackVector.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace {

/// Random rows of `v210` in memory of exactly their size.
struct Rows {
    Rows(int32_t pixels, int32_t count, bool up, std::mt19937& random,
         GuardedBytes::Guard guard = GuardedBytes::Guard::Behind)
        : width(pixels), rowCount(count), upwards(up), stride((pixels + 5) / 6 * 16),
          memory(static_cast<size_t>(count * stride), guard) {
        std::ranges::generate(memory, [&] { return static_cast<uint8_t>(random()); });
    }

    const uint8_t* Row(int32_t row) const {
        return memory.data() + (upwards ? rowCount - 1 - row : row) * stride;
    }
    PrxStrip Strip() const {
        return {const_cast<uint8_t*>(Row(0)), upwards ? -stride : stride, prxFormatV210, width, rowCount};
    }
    /// Component `index` of a row, of ten bits: one bit after the other.
    int32_t Code(int32_t row, int32_t index) const {
        int32_t code = 0;
        for (int32_t bit = 0; bit < 10; ++bit) {
            const int32_t place = index / 3 * 32 + index % 3 * 10 + bit;
            code |= (Row(row)[place / 8] >> (place % 8) & 1) << bit;
        }
        return code;
    }

    int32_t width;
    int32_t rowCount;
    bool upwards;
    ptrdiff_t stride;
    GuardedBytes memory;
};

uint16_t Word(const PrxRowBuffer& buffer, int32_t row, int32_t index) {
    uint16_t word;
    std::memcpy(&word, buffer.Row(row) + 2 * index, sizeof(word));
    return word;
}

std::vector<uint8_t> Unpacked(PrxV210Unpacker unpack, const std::vector<uint8_t>& groups) {
    const auto count = static_cast<int32_t>(groups.size() / 16);
    const GuardedBytes in(groups.size(), GuardedBytes::Guard::Behind);
    std::ranges::copy(groups, in.begin());
    const GuardedBytes out(static_cast<size_t>(24 * count + 8), GuardedBytes::Guard::Behind);
    unpack(in.data(), out.data(), count);
    return {out.begin(), out.end() - 8};
}

} // namespace

TEST(PrxV210Unpack, CodesBecomeTheHighBitsOfWords) {
    std::mt19937 random = MakeRandom();
    for (int32_t width = 1; width <= 40; ++width) {
        for (const bool upwards : {false, true}) {
            const Rows rows(width, 3, upwards, random,
                            upwards ? GuardedBytes::Guard::Before : GuardedBytes::Guard::Behind);
            PrxRowBuffer buffer;
            ASSERT_TRUE(buffer.EnsureWidth(width));
            PrxUnpackV210Rows(rows.Strip(), buffer);
            for (int32_t row = 0; row < 3; ++row)
                for (int32_t i = 0; i < (width + 1) / 2 * 4; ++i)
                    ASSERT_EQ(Word(buffer, row, i), rows.Code(row, i) << 6) << "width " << width;
        }
    }
}

TEST(PrxV210Unpack, RowsTooShortForTheirWidthComeOutBlack) {
    std::mt19937 random = MakeRandom();
    for (const int32_t sign : {1, -1}) {
        const Rows rows(13, 2, sign < 0, random);
        PrxStrip strip = rows.Strip();
        strip.rowBytes = sign * 47;
        PrxRowBuffer buffer;
        ASSERT_TRUE(buffer.EnsureWidth(13));
        for (int32_t row = 0; row < 2; ++row)
            std::memset(buffer.Row(row), 0x77, static_cast<size_t>(buffer.RowBytes()));
        PrxUnpackV210Rows(strip, buffer);
        for (int32_t row = 0; row < 2; ++row)
            for (int32_t i = 0; i < 28; ++i)
                EXPECT_EQ(Word(buffer, row, i), i % 2 == 0 ? 0x8000 : 0x1000);
    }
}

TEST(PrxV210Unpack, RowsTooShortForTheirWidthAreNotRead) {
    const GuardedBytes oneGroup(16, GuardedBytes::Guard::Behind);
    PrxRowBuffer buffer;
    ASSERT_TRUE(buffer.EnsureWidth(7));
    PrxUnpackV210Rows({oneGroup.data(), 16, prxFormatV210, 7, 16}, buffer);
    EXPECT_EQ(Word(buffer, 15, 1), 0x1000);
}

TEST(PrxV210Unpack, VectorsGiveThePixelsOfTheReferenceFormOnEveryInstructionSet) {
    std::mt19937 random = MakeRandom();
    ASSERT_FALSE(VectorTargets().empty());
    for (const int64_t target : VectorTargets()) {
        const ForcedTarget forced(target);
        ASSERT_NE(PrxSelectVectorV210Unpacker(), nullptr);
        for (size_t count = 0; count <= 20; ++count) {
            std::vector<uint8_t> groups(16 * count);
            std::ranges::generate(groups, [&] { return static_cast<uint8_t>(random()); });
            ASSERT_EQ(Unpacked(PrxSelectVectorV210Unpacker(), groups), Unpacked(PrxUnpackV210Groups, groups));
            std::ranges::fill(groups, uint8_t{0xFF});
            ASSERT_EQ(Unpacked(PrxSelectVectorV210Unpacker(), groups), Unpacked(PrxUnpackV210Groups, groups));
        }
    }
}
