#include "iostream/BitBuffer.h"

#include "iostream/BitStreamWriter.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using IOStream::BitBuffer;
using NoData = BitBuffer::IOBitBufferNoDataException;
using IllegalData = BitBuffer::IOBitBufferIllegalDataException;
using Bytes = std::vector<uint8_t>;

BitBuffer ReaderOf(const Bytes& bytes) { return {bytes.data(), static_cast<uint32_t>(bytes.size())}; }

/// Whole bytes from a reader until it throws.
Bytes Delivered(BitBuffer reader) {
    Bytes delivered;
    try {
        for (;;)
            delivered.push_back(static_cast<uint8_t>(reader.ReadBits(8)));
    } catch (const NoData&) {
        return delivered;
    }
}

uint32_t UEOf(const BitStreamWriter& bits) { return ReaderOf(bits.Bytes()).ReadUE(); }

TEST(BitBuffer, TheFirstBitOfAnEmptyRangeThrowsNoData) {
    BitBuffer reader(nullptr, 0);
    try {
        reader.ReadBit();
        FAIL() << "nothing was thrown";
    } catch (const std::exception& exception) {
        EXPECT_STREQ(exception.what(), "No data in buffer");
    }
}

TEST(BitBuffer, AnEscapedPairOfZerosAtTheEndGivesOnlyTheFirst) {
    const Bytes bytes = {0, 0, 3};
    BitBuffer reader = ReaderOf(bytes);
    EXPECT_EQ(reader.ReadBits(8), 0u);
    EXPECT_TRUE(reader.pendingZero);
    EXPECT_THROW(reader.Fill(), NoData);
}

TEST(BitBuffer, TakesOutTheByteBehindTwoZeros) {
    EXPECT_EQ(Delivered(ReaderOf({0, 0, 3, 1})), (Bytes{0, 0, 1}));
}

TEST(BitBuffer, TakesOutTwoEmulationPreventionBytesInARow) {
    EXPECT_EQ(Delivered(ReaderOf({0, 0, 3, 0, 0, 3, 1})), (Bytes{0, 0, 0, 0, 1}));
}

TEST(BitBuffer, ATakenOutByteCountsNoMoreForWhatFollows) {
    EXPECT_EQ(Delivered(ReaderOf({0, 0, 3, 0, 3})), (Bytes{0, 0, 0, 3}));
}

TEST(BitBuffer, TwoZerosAtTheEndComeThroughAsTheyAre) {
    EXPECT_EQ(Delivered(ReaderOf({0, 0})), (Bytes{0, 0}));
    EXPECT_EQ(Delivered(ReaderOf({7, 0, 0})), (Bytes{7, 0, 0}));
}

TEST(BitBuffer, KeepsEmulationPreventionBytesInAnyOtherMode) {
    for (const uint32_t mode : {0u, 2u}) {
        const Bytes bytes = {0, 0, 3, 1};
        BitBuffer reader = ReaderOf(bytes);
        reader.emulationMode = mode;
        EXPECT_EQ(Delivered(reader), bytes) << "mode " << mode;
    }
}

TEST(BitBuffer, ASizeThatIsNegativeAsSignedTurnsEmulationPreventionOff) {
    const Bytes bytes = {0, 0, 3, 1};
    BitBuffer reader(bytes.data(), 0x80000000u);
    EXPECT_EQ(reader.ReadBits(32), 0x00000301u);
}

TEST(BitBuffer, GivesTheFirstBitHighest) {
    const Bytes bytes = {0xA5, 0x81};
    BitBuffer reader = ReaderOf(bytes);
    EXPECT_EQ(reader.ReadBit(), 1u);
    EXPECT_EQ(reader.ReadBits(3), 2u);
    EXPECT_EQ(reader.ReadBits(12), 0x581u);
}

TEST(BitBuffer, ReadsUpTo32BitsAtOnce) {
    EXPECT_EQ(ReaderOf({0xFE, 0xDC, 0xBA, 0x98}).ReadBits(32), 0xFEDCBA98u);
}

TEST(BitBuffer, ReadingNoBitsGivesZeroAndTakesNoByteEvenOfAnEmptyRange) {
    EXPECT_EQ(BitBuffer(nullptr, 0).ReadBits(0), 0u);
    const Bytes bytes = {0xFF};
    BitBuffer reader = ReaderOf(bytes);
    EXPECT_EQ(reader.ReadBits(0), 0u);
    EXPECT_EQ(reader.bytesLeft, 1u);
}

TEST(BitBuffer, ReadUEGivesTheFirstFourCodes) {
    EXPECT_EQ(UEOf(BitStreamWriter().U(1, 1)), 0u);
    EXPECT_EQ(UEOf(BitStreamWriter().U(3, 0b010)), 1u);
    EXPECT_EQ(UEOf(BitStreamWriter().U(3, 0b011)), 2u);
    EXPECT_EQ(UEOf(BitStreamWriter().U(5, 0b00100)), 3u);
}

TEST(BitBuffer, ReadUEAccepts30LeadingZeros) {
    EXPECT_EQ(UEOf(BitStreamWriter().Repeat(30, false).U(1, 1).U(30, 5)), 5u + (1u << 30) - 1);
}

TEST(BitBuffer, ReadUERefuses31LeadingZeros) {
    const Bytes bytes = BitStreamWriter().Repeat(31, false).U(1, 1).U(31, 0).Bytes();
    BitBuffer reader = ReaderOf(bytes);
    try {
        reader.ReadUE();
        FAIL() << "nothing was thrown";
    } catch (const std::exception& exception) {
        EXPECT_STREQ(exception.what(), "Illegal data in buffer");
    }
}

TEST(BitBuffer, ReadUERefuses255LeadingZeros) {
    const Bytes bytes = BitStreamWriter().Repeat(255, false).U(1, 1).Bytes();
    EXPECT_THROW(ReaderOf(bytes).ReadUE(), IllegalData);
}

TEST(BitBuffer, ReadUECountsLeadingZerosModulo256) {
    EXPECT_EQ(UEOf(BitStreamWriter().Repeat(256, false).U(1, 1)), 0u);
    EXPECT_EQ(UEOf(BitStreamWriter().Repeat(258, false).U(1, 1).U(2, 3)), 6u);
}

TEST(BitBuffer, ReadUEGivesBackWhatWasWrittenThroughEmulationPrevention) {
    std::mt19937 random = MakeRandom();
    BitStreamWriter writer;
    std::vector<uint32_t> values(2000);
    for (uint32_t& value : values) {
        value = static_cast<uint32_t>(random()) >> (2 + random() % 30);
        writer.UE(value);
    }
    const Bytes bytes = WithEmulationPrevention(writer.Trailing().Bytes());
    BitBuffer reader = ReaderOf(bytes);
    for (const uint32_t value : values)
        ASSERT_EQ(reader.ReadUE(), value);
}

TEST(BitBuffer, SkipBitsHonoursEmulationPrevention) {
    const Bytes bytes = {0, 0, 3, 0xAB};
    BitBuffer reader = ReaderOf(bytes);
    reader.SkipBits(20);
    EXPECT_EQ(reader.ReadBits(4), 0xBu);
}

TEST(BitBuffer, SkipBitsReadsOnlyAsManyBitsAsThereAre) {
    const Bytes bytes = {0xFF};
    BitBuffer reader = ReaderOf(bytes);
    EXPECT_THROW(reader.SkipBits(UINT32_MAX), NoData);
    EXPECT_EQ(reader.bytesLeft, 0u);
}

TEST(BitBuffer, SkipBitsJumpsBytesBehindTheOneInHandWithoutEmulationPrevention) {
    const Bytes bytes = {0xA7, 0x11, 0x22, 0x33};
    BitBuffer reader = ReaderOf(bytes);
    reader.emulationMode = 0;
    EXPECT_EQ(reader.ReadBits(4), 0xAu);
    reader.SkipBits(16);
    EXPECT_EQ(reader.ReadBits(12), 0x733u);
}

TEST(BitBuffer, SkipBitsReadsWhatIsNoWholeByteAfterTheJump) {
    const Bytes bytes = {0x11, 0xF5};
    BitBuffer reader = ReaderOf(bytes);
    reader.emulationMode = 0;
    reader.SkipBits(12);
    EXPECT_EQ(reader.ReadBits(4), 5u);
}

TEST(BitBuffer, ASkipOfMoreBytesThanThereAreThrowsAndStays) {
    const Bytes bytes = {1, 2};
    BitBuffer reader = ReaderOf(bytes);
    reader.emulationMode = 0;
    EXPECT_THROW(reader.SkipBits(24), NoData);
    EXPECT_EQ(reader.bytesLeft, 2u);
    EXPECT_EQ(reader.next, bytes.data());
}

TEST(BitBuffer, ReadsNoByteBehindTheRange) {
    std::mt19937 random = MakeRandom();
    for (uint32_t round = 0; round < 2000; ++round) {
        const GuardedBytes bytes(random() % 20, GuardedBytes::Guard::Behind);
        std::ranges::generate(bytes, [&random] { return static_cast<uint8_t>(random() % 4); });
        BitBuffer reader(bytes.data(), static_cast<uint32_t>(bytes.size()));
        reader.emulationMode = round % 2;
        EXPECT_THROW(
            for (;;) {
                reader.SkipBits(random() % 30);
                reader.ReadBits(random() % 33);
            },
            NoData);
        EXPECT_EQ(reader.next + reader.bytesLeft, bytes.end());
    }
}

} // namespace
