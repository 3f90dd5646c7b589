#include "prores/PrxBufferPiece.h"

#include "support/GuardedBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

constexpr uint64_t farAway = std::numeric_limits<uint64_t>::max();

/// The bytes 1 to 9 in pieces of 3, 0, 4 and 2 bytes, each ending at a page that can't be read.
class PrxBufferPieceTest : public testing::Test {
protected:
    PrxBufferPieceTest() {
        uint8_t value = 1;
        for (size_t i = pieces_.size(); i-- > 0;) {
            pieces_[i].next = i + 1 < pieces_.size() ? &pieces_[i + 1] : nullptr;
        }
        for (size_t i = 0; i < pieces_.size(); ++i) {
            for (uint8_t& byte : memory_[i])
                byte = value++;
            pieces_[i].data = memory_[i].data();
            pieces_[i].size = memory_[i].size();
        }
    }
    const PrxBufferPiece& Chain() const { return pieces_[0]; }

    std::array<GuardedBytes, 4> memory_ = {
        GuardedBytes(3, GuardedBytes::Guard::Behind), GuardedBytes(0, GuardedBytes::Guard::Behind),
        GuardedBytes(4, GuardedBytes::Guard::Behind), GuardedBytes(2, GuardedBytes::Guard::Behind)};
    std::array<PrxBufferPiece, 4> pieces_;
};

} // namespace

TEST_F(PrxBufferPieceTest, AByteIsFoundInThePieceThatHoldsIt) {
    for (uint64_t offset = 0; offset < 9; ++offset)
        EXPECT_EQ(PrxByteAt(Chain(), offset), offset + 1);
}

TEST_F(PrxBufferPieceTest, AByteBehindTheEndIsZero) {
    for (const uint64_t offset : {uint64_t{9}, uint64_t{10}, uint64_t{1} << 32, farAway}) {
        EXPECT_EQ(PrxByteAt(Chain(), offset), 0);
    }
}

TEST_F(PrxBufferPieceTest, ValuesAreBigEndianAcrossPieces) {
    EXPECT_EQ(PrxRead16At(Chain(), 0), 0x0102);
    EXPECT_EQ(PrxRead16At(Chain(), 2), 0x0304);
    EXPECT_EQ(PrxRead32At(Chain(), 0), 0x01020304U);
    EXPECT_EQ(PrxRead32At(Chain(), 4), 0x05060708U);
}

TEST_F(PrxBufferPieceTest, ValuesThatTheEndCutsAreFilledUpWithZeros) {
    EXPECT_EQ(PrxRead16At(Chain(), 8), 0x0900);
    EXPECT_EQ(PrxRead16At(Chain(), 9), 0);
    EXPECT_EQ(PrxRead16At(Chain(), farAway), 0);
    EXPECT_EQ(PrxRead32At(Chain(), 6), 0x07080900U);
    EXPECT_EQ(PrxRead32At(Chain(), farAway), 0U);
}

TEST_F(PrxBufferPieceTest, AdvancingInsideAPieceKeepsItsSuccessor) {
    const PrxBufferPiece rest = PrxAdvance(Chain(), 4);
    EXPECT_EQ(rest.data, pieces_[2].data + 1);
    EXPECT_EQ(rest.size, 3U);
    EXPECT_EQ(rest.next, &pieces_[3]);
}

TEST_F(PrxBufferPieceTest, AdvancingLeavesTheOtherBytesInOrder) {
    for (uint64_t count = 0; count <= 9; ++count) {
        const PrxBufferPiece rest = PrxAdvance(Chain(), count);
        EXPECT_EQ(PrxTotalSize(rest), 9 - count);
        for (uint64_t i = 0; i < 9 - count; ++i)
            EXPECT_EQ(PrxByteAt(rest, i), count + i + 1);
    }
}

TEST_F(PrxBufferPieceTest, AdvancingToTheEndOrBeyondGivesAnEmptyPiece) {
    for (const uint64_t count : {uint64_t{9}, uint64_t{10}, farAway}) {
        const PrxBufferPiece rest = PrxAdvance(Chain(), count);
        EXPECT_NE(rest.data, nullptr);
        EXPECT_EQ(rest.size, 0U);
        EXPECT_EQ(rest.next, nullptr);
    }
}

TEST_F(PrxBufferPieceTest, TheTotalSizeCountsAllPieces) { EXPECT_EQ(PrxTotalSize(Chain()), 9U); }

TEST_F(PrxBufferPieceTest, CopyingGathersBytesOfSeveralPieces) {
    std::array<uint8_t, 5> copy{};
    PrxCopyBytes(PrxAdvance(Chain(), 1), copy.size(), copy.data());
    EXPECT_EQ(copy, (std::array<uint8_t, 5>{2, 3, 4, 5, 6}));
}

TEST_F(PrxBufferPieceTest, CopyingBehindTheEndGivesZerosAndNoByteMoreThanAskedFor) {
    const GuardedBytes copy(12, GuardedBytes::Guard::Behind);
    std::fill(copy.begin(), copy.end(), 0xff);
    PrxCopyBytes(PrxAdvance(Chain(), 6), 12, copy.data());
    const std::vector<uint8_t> expected = {7, 8, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_TRUE(std::equal(copy.begin(), copy.end(), expected.begin(), expected.end()));
}

TEST_F(PrxBufferPieceTest, CopyingNothingTouchesNothing) {
    uint8_t untouched = 0xff;
    PrxCopyBytes(Chain(), 0, &untouched);
    EXPECT_EQ(untouched, 0xff);
}

TEST(PrxEmptyBufferPiece, ReadsAsZeros) {
    const PrxBufferPiece empty;
    EXPECT_EQ(PrxTotalSize(empty), 0U);
    EXPECT_EQ(PrxByteAt(empty, 0), 0);
    EXPECT_EQ(PrxRead16At(empty, 0), 0);
    EXPECT_EQ(PrxRead32At(empty, 0), 0U);
    EXPECT_NE(PrxAdvance(empty, 0).data, nullptr);
}
