#include "prores/encoder/PrxV210Unpack.h"

#include "prores/encoder/PrxV210UnpackVector.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

std::vector<uint8_t> RandomGroups(size_t count, std::mt19937& random) {
    std::vector<uint8_t> groups(16 * count);
    std::ranges::generate(groups, [&] { return static_cast<uint8_t>(random()); });
    return groups;
}

/// Component `index` of a row, of ten bits: one bit after the other.
int32_t CodeAt(const std::vector<uint8_t>& groups, size_t index) {
    int32_t code = 0;
    for (size_t bit = 0; bit < 10; ++bit) {
        const size_t place = index / 3 * 32 + index % 3 * 10 + bit;
        code |= (groups[place / 8] >> (place % 8) & 1) << bit;
    }
    return code;
}

uint16_t WordAt(const std::vector<uint8_t>& pixels, size_t index) {
    return static_cast<uint16_t>(pixels[2 * index] | pixels[2 * index + 1] << 8);
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
        const std::vector<uint8_t> groups =
            RandomGroups(static_cast<size_t>(PrxCountV210Groups(width)), random);
        const std::vector<uint8_t> pixels = Unpacked(PrxUnpackV210Groups, groups);
        for (size_t i = 0; i < pixels.size() / 2; ++i)
            ASSERT_EQ(WordAt(pixels, i), CodeAt(groups, i) << 6) << "width " << width;
    }
}

TEST(PrxV210Unpack, RowsOfWholeGroupsAreUnpackedUpwardsAndDownwards) {
    for (const ptrdiff_t rowBytes : {48, -48, 49, -64})
        EXPECT_EQ(PrxSelectV210UnpackerFor(13, rowBytes), PrxSelectV210Unpacker()) << rowBytes;
}

TEST(PrxV210Unpack, RowsTooShortForTheirWidthAreNotReadAndComeOutBlack) {
    for (const ptrdiff_t rowBytes : {47, -47, 30, 1, 0}) {
        const PrxV210Unpacker unpack = PrxSelectV210UnpackerFor(13, rowBytes);
        const GuardedBytes nothing(0, GuardedBytes::Guard::Behind);
        const GuardedBytes out(3 * 24, GuardedBytes::Guard::Behind);
        unpack(nothing.data(), out.data(), 3);
        const std::vector<uint8_t> pixels(out.begin(), out.end());
        for (size_t i = 0; i < pixels.size() / 2; ++i)
            EXPECT_EQ(WordAt(pixels, i), i % 2 == 0 ? 0x8000 : 0x1000);
    }
}

TEST(PrxV210Unpack, VectorsGiveThePixelsOfTheReferenceFormOnEveryInstructionSet) {
    std::mt19937 random = MakeRandom();
    ASSERT_FALSE(VectorTargets().empty());
    for (const int64_t target : VectorTargets()) {
        const ForcedTarget forced(target);
        ASSERT_NE(PrxSelectVectorV210Unpacker(), nullptr);
        for (size_t count = 0; count <= 20; ++count) {
            std::vector<uint8_t> groups = RandomGroups(count, random);
            ASSERT_EQ(Unpacked(PrxSelectVectorV210Unpacker(), groups), Unpacked(PrxUnpackV210Groups, groups));
            std::ranges::fill(groups, uint8_t{0xFF});
            ASSERT_EQ(Unpacked(PrxSelectVectorV210Unpacker(), groups), Unpacked(PrxUnpackV210Groups, groups));
        }
    }
}
