#include "prores/encoder/PrxBitWriter.h"

#include "prores/StreamBits.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

/// A writer and its output, which ends at memory that may not be touched.
struct Output {
    explicit Output(size_t budget)
        : bytes(budget, GuardedBytes::Guard::Behind), writer(bytes.data(), static_cast<int64_t>(budget)) {}

    stream::Bytes Written(uint32_t size) const { return {bytes.begin(), bytes.begin() + size}; }

    GuardedBytes bytes;
    PrxBitWriter writer;
};

uint64_t LowBits(uint64_t value, uint32_t length) {
    return length == 64 ? value : value & ((1ULL << length) - 1);
}

uint64_t Random64(std::mt19937& random) { return uint64_t{random()} << 32 | random(); }

} // namespace

TEST(PrxBitWriter, WritesTheFirstBitFirst) {
    Output output(16);
    EXPECT_TRUE(output.writer.WriteBits(0b101, 3));
    EXPECT_TRUE(output.writer.WriteBits(0, 1));
    EXPECT_TRUE(output.writer.WriteBits(0b11, 2));
    EXPECT_EQ(output.writer.Bits(), 6u);
    EXPECT_EQ(output.writer.Flush(), 1u);
    EXPECT_EQ(output.bytes.data()[0], 0b10101100);
}

TEST(PrxBitWriter, ABudgetOf0StoresNothing) {
    Output output(0);
    EXPECT_FALSE(output.writer.WriteBits(1, 1));
    EXPECT_EQ(output.writer.Bits(), 0u);
    EXPECT_EQ(output.writer.Flush(), 0u);
}

TEST(PrxBitWriter, ABudgetOf3BytesTakes24Bits) {
    Output output(3);
    EXPECT_TRUE(output.writer.WriteBits(0xABCDE, 20));
    EXPECT_TRUE(output.writer.WriteBits(0xF, 4));
    EXPECT_FALSE(output.writer.WriteBits(1, 1));
    EXPECT_EQ(output.writer.Flush(), 3u);
    EXPECT_EQ(output.Written(3), (stream::Bytes{0xAB, 0xCD, 0xEF}));
}

TEST(PrxBitWriter, ACodeThatDoesNotFitClosesTheWriterForShorterOnesToo) {
    Output output(3);
    EXPECT_TRUE(output.writer.WriteBits(0x1FFFF, 17));
    EXPECT_FALSE(output.writer.WriteBits(0, 8));
    EXPECT_FALSE(output.writer.WriteBits(0, 1));
    EXPECT_EQ(output.writer.Bits(), 17u);
    EXPECT_EQ(output.writer.Flush(), 3u);
    EXPECT_EQ(output.Written(3), (stream::Bytes{0xFF, 0xFF, 0x80}));
}

TEST(PrxBitWriter, ATooLongCodeHasTheBitsBeforeItStored) {
    Output output(2);
    EXPECT_TRUE(output.writer.WriteBits(0b101, 3));
    EXPECT_FALSE(output.writer.WriteBits(0, 64));
    EXPECT_EQ(output.bytes.data()[0], 0b10100000);
    EXPECT_EQ(output.writer.Flush(), 1u);
}

TEST(PrxBitWriter, CodesThatFillTheBudgetToTheLastBitFit) {
    for (size_t budget = 1; budget < 40; ++budget) {
        Output output(budget);
        for (size_t bit = 0; bit < 8 * budget; ++bit)
            ASSERT_TRUE(output.writer.WriteBits(bit % 3 == 0, 1)) << budget;
        EXPECT_FALSE(output.writer.WriteBits(0, 1)) << budget;
        EXPECT_EQ(output.writer.Flush(), budget);
    }
}

TEST(PrxBitWriter, FlushClosesTheWriterAndCanBeRepeated) {
    Output output(8);
    EXPECT_TRUE(output.writer.WriteBits(0x123, 12));
    EXPECT_EQ(output.writer.Flush(), 2u);
    EXPECT_FALSE(output.writer.WriteBits(1, 1));
    EXPECT_EQ(output.writer.Flush(), 2u);
    EXPECT_EQ(output.Written(2), (stream::Bytes{0x12, 0x30}));
}

TEST(PrxBitWriter, WritesAnythingUpTo64BitsUnderAnyBudget) {
    std::mt19937 random = MakeRandom();
    for (int round = 0; round < 3000; ++round) {
        const size_t budget = random() % 60;
        Output output(budget);
        stream::BitWriter expected;
        bool open = true;
        for (int code = 0; code < 80; ++code) {
            const uint32_t length = 1 + random() % (round % 2 != 0 ? 64 : 12);
            const uint64_t value = LowBits(Random64(random), length);
            open = open && expected.Count() + length <= 8 * budget;
            ASSERT_EQ(output.writer.WriteBits(value, length), open) << "budget " << budget;
            if (open) expected.Put(value, length);
            ASSERT_EQ(output.writer.Bits(), expected.Count());
        }
        const uint32_t size = output.writer.Flush();
        ASSERT_EQ(output.Written(size), expected.Data()) << "budget " << budget;
    }
}

TEST(PrxBitWriter, ANegativeBudgetIsNoLimit) {
    std::mt19937 random = MakeRandom();
    for (size_t bits = 1; bits < 2000; bits += 13) {
        // Room for just the bits that are written.
        const GuardedBytes bytes((bits + 7) / 8, GuardedBytes::Guard::Behind);
        PrxBitWriter writer(bytes.data(), -1);
        stream::BitWriter expected;
        while (expected.Count() < bits) {
            const auto length =
                static_cast<uint32_t>(std::min<size_t>(1 + random() % 64, bits - expected.Count()));
            const uint64_t value = LowBits(Random64(random), length);
            ASSERT_TRUE(writer.WriteBits(value, length));
            expected.Put(value, length);
        }
        ASSERT_EQ(writer.Flush(), bytes.size());
        ASSERT_TRUE(std::ranges::equal(bytes, expected.Data()));
    }
}

TEST(PrxBitWriter, AppendedCodesAreThoseWrittenOneByOne) {
    std::mt19937 random = MakeRandom();
    for (int round = 0; round < 1000; ++round) {
        Output output(700);
        stream::BitWriter expected;
        const uint32_t before = random() % 64;
        if (before > 0) {
            ASSERT_TRUE(output.writer.WriteBits(1, before));
        }
        expected.Put(1, before);

        uint64_t codes[64];
        uint64_t lengths[64];
        const size_t count = random() % 65;
        for (size_t i = 0; i < count; ++i) {
            lengths[i] = random() % (PrxBitWriter::longestAppended + 1);
            codes[i] = LowBits(Random64(random), static_cast<uint32_t>(lengths[i]));
            expected.Put(codes[i], static_cast<uint32_t>(lengths[i]));
        }
        output.writer.AppendCodes(codes, lengths, count);
        EXPECT_TRUE(output.writer.WriteBits(5, 3));
        expected.Put(5, 3);
        ASSERT_EQ(output.writer.Bits(), expected.Count());
        ASSERT_EQ(output.Written(output.writer.Flush()), expected.Data());
    }
}

TEST(PrxBitWriter, RoomToAppendEndsBeforeTheBudgetByNoMoreThanTwoWords) {
    for (size_t budget = 0; budget < 40; ++budget) {
        Output output(budget);
        const size_t room = output.writer.RoomToAppend();
        EXPECT_LE(room, 8 * budget);
        EXPECT_GE(room + 128, 8 * budget);
    }
}

TEST(PrxBitWriter, CodesThatFillTheRoomToAppendStayInTheBudget) {
    for (size_t budget = 9; budget < 100; ++budget) {
        for (uint32_t before = 1; before < 9; ++before) {
            Output output(budget);
            ASSERT_TRUE(output.writer.WriteBits(1, before));
            const size_t room = output.writer.RoomToAppend();
            const std::vector<uint64_t> codes(room, 1);
            output.writer.AppendCodes(codes.data(), codes.data(), room);
            EXPECT_EQ(output.writer.Bits(), room + before);
        }
    }
}

TEST(PrxBitWriter, AClosedWriterAndOneWithoutALimitHaveNoRoomToAppend) {
    Output output(100);
    EXPECT_GT(output.writer.RoomToAppend(), 0u);
    output.writer.Flush();
    EXPECT_EQ(output.writer.RoomToAppend(), 0u);
    PrxBitWriter unlimited(output.bytes.data(), -1);
    EXPECT_EQ(unlimited.RoomToAppend(), 0u);
    ASSERT_TRUE(unlimited.WriteBits(0x123, 12));
    EXPECT_EQ(unlimited.RoomToAppend(), 0u);
}
