#include "prores/PrxBitReader.h"

#include "prores/SliceEntropyModel.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <random>

namespace {

using Guard = GuardedBytes::Guard;

void FillAtRandom(const GuardedBytes& bytes, std::mt19937& random) {
    std::ranges::generate(bytes, [&random] { return static_cast<uint8_t>(random()); });
}

} // namespace

TEST(PrxBitReader, GivesTheBitsInOrderAndZerosBehindThem) {
    std::mt19937 random = MakeRandom();
    for (const Guard guard : {Guard::Before, Guard::Behind}) {
        for (size_t size = 0; size <= 40; ++size) {
            GuardedBytes bytes(size, guard);
            FillAtRandom(bytes, random);
            PrxBitReader reader(bytes.data(), size);
            model::BitSource expected({bytes.data(), size});
            for (size_t taken = 0; taken < size * 8 + 200;) {
                const uint32_t count = 1 + random() % PrxBitReader::refilledBits;
                ASSERT_EQ(reader.Read(count), expected.Read(count)) << size << " bytes, bit " << taken;
                reader.Refill();
                taken += count;
            }
        }
    }
}

TEST(PrxBitReader, SeveralShortReadsShareARefill) {
    std::mt19937 random = MakeRandom();
    GuardedBytes bytes(100, Guard::Behind);
    FillAtRandom(bytes, random);
    PrxBitReader reader(bytes.data(), bytes.size());
    model::BitSource expected({bytes.data(), bytes.size()});
    for (int round = 0; round < 30; ++round) {
        for (uint32_t left = PrxBitReader::refilledBits; left > 0;) {
            const uint32_t count = 1 + random() % std::min<uint32_t>(left, 9);
            ASSERT_EQ(reader.Read(count), expected.Read(count));
            left -= count;
        }
        reader.Refill();
    }
}

TEST(PrxBitReader, ARefillMoreChangesNothing) {
    const std::array<uint8_t, 12> bytes = {0x12, 0x34, 0x56, 0x78, 0x9a, 0xbc,
                                           0xde, 0xf0, 0x11, 0x22, 0x33, 0x44};
    PrxBitReader reader(bytes.data(), bytes.size());
    reader.Skip(5);
    reader.Refill();
    reader.Refill();
    EXPECT_EQ(reader.Read(27), 0x12345678u & 0x7ffffffu);
    reader.Refill();
    EXPECT_EQ(reader.Read(48), 0x9abcdef01122u);
}

TEST(PrxBitReader, AnEmptyStreamHasEnded) { EXPECT_TRUE(PrxBitReader(nullptr, 0).Ended()); }

TEST(PrxBitReader, EndsWhereThirtyTwoZerosFollow) {
    const std::array<uint8_t, 6> bytes = {0, 0, 0, 0, 0x80, 0};
    PrxBitReader reader(bytes.data(), bytes.size());
    EXPECT_TRUE(reader.Ended());
    reader.Skip(1);
    EXPECT_FALSE(reader.Ended());
    reader.Skip(31);
    reader.Refill();
    EXPECT_FALSE(reader.Ended());
    reader.Skip(1);
    EXPECT_TRUE(reader.Ended());
}

TEST(PrxBitReader, CountsLeadingZeros) {
    const std::array<uint8_t, 4> bytes = {0, 0x10, 0, 0};
    PrxBitReader reader(bytes.data(), bytes.size());
    EXPECT_EQ(reader.LeadingZeros(), 11u);
    reader.Skip(12);
    EXPECT_EQ(reader.LeadingZeros(), 63u);
}
