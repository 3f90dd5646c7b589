#include "prores/PrxHeaders.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

PrxBufferPiece PieceOf(const Bytes& bytes) { return {bytes.data(), bytes.size(), nullptr}; }

/// A picture header of `size` bytes as told in it, of slices 1 << `log2SliceMbWidth` macroblocks wide.
Bytes PictureHeader(uint8_t size, uint8_t log2SliceMbWidth) {
    return {static_cast<uint8_t>(size << 3),
            0x01,
            0x02,
            0x03,
            0x04,
            0,
            0,
            static_cast<uint8_t>(log2SliceMbWidth << 4)};
}

} // namespace

TEST(PrxPictureHeader, GivesItsSizeAndTheWidthOfSlices) {
    for (uint8_t log2Width = 0; log2Width < 4; ++log2Width) {
        uint32_t read = 99;
        EXPECT_EQ(PrxReadPictureHeader(PieceOf(PictureHeader(8, log2Width)), &read), 8U);
        EXPECT_EQ(read, log2Width);
    }
}

TEST(PrxPictureHeader, TheBitsBesideSizeAndWidthAreNotRead) {
    Bytes bytes = PictureHeader(8, 2);
    bytes[0] |= 7;
    bytes[7] |= 0xcf;
    uint32_t log2Width = 0;
    EXPECT_EQ(PrxReadPictureHeader(PieceOf(bytes), &log2Width), 8U);
    EXPECT_EQ(log2Width, 2U);
}

TEST(PrxPictureHeader, ASizeBelow8IsRefused) {
    uint32_t log2Width = 0;
    for (uint8_t size = 0; size < 8; ++size) {
        EXPECT_EQ(PrxReadPictureHeader(PieceOf(PictureHeader(size, 3)), &log2Width), 0U);
    }
}

TEST(PrxPictureHeader, ASizeBehindTheEndIsRefused) {
    Bytes bytes = PictureHeader(31, 3);
    uint32_t log2Width = 0;
    bytes.resize(30);
    EXPECT_EQ(PrxReadPictureHeader(PieceOf(bytes), &log2Width), 0U);
    bytes.resize(31);
    EXPECT_EQ(PrxReadPictureHeader(PieceOf(bytes), &log2Width), 31U);
    EXPECT_EQ(PrxReadPictureHeader(PrxBufferPiece(), &log2Width), 0U);
}

TEST(PrxPictureHeader, ReadsTheSameFromTwoPiecesAsFromOne) {
    const Bytes bytes = PictureHeader(8, 2);
    for (size_t cut = 0; cut <= bytes.size(); ++cut) {
        const PrxBufferPiece second = {bytes.data() + cut, bytes.size() - cut, nullptr};
        const PrxBufferPiece first = {bytes.data(), cut, &second};
        uint32_t log2Width = 0;
        EXPECT_EQ(PrxReadPictureHeader(first, &log2Width), 8U);
        EXPECT_EQ(log2Width, 2U);
        EXPECT_EQ(PrxGetPictureSize(first), 0x01020304U);
    }
}

TEST(PrxPictureHeader, ARefusalLeavesTheResultAsItWas) {
    uint32_t log2Width = 99;
    EXPECT_EQ(PrxReadPictureHeader(PieceOf(PictureHeader(7, 3)), &log2Width), 0U);
    EXPECT_EQ(log2Width, 99U);
}

TEST(PrxPictureHeader, HoldsThePictureSize) {
    EXPECT_EQ(PrxGetPictureSize(PieceOf(PictureHeader(8, 3))), 0x01020304U);
    EXPECT_EQ(PrxGetPictureSize(PieceOf({0x40, 0xff, 0xff})), 0xffff0000U);
}

TEST(PrxPictureLayout, CountsMacroblocksAndSlices) {
    const Bytes bytes = PictureHeader(8, 3);
    PrxPictureLayout layout;
    PrxInitPictureLayout(&layout, PieceOf(bytes), 1998, 540);
    EXPECT_EQ(layout.mbWidth, 125U);
    EXPECT_EQ(layout.mbHeight, 34U);
    EXPECT_EQ(layout.sliceMbWidth, 8U);
    EXPECT_EQ(layout.slicesPerRow, 17U);
    EXPECT_EQ(layout.sliceCount, 17U * 34U);
}

TEST(PrxPictureLayout, APartOfAMacroblockCountsAsOne) {
    const Bytes bytes = PictureHeader(8, 0);
    for (const uint32_t side : {1, 15, 16, 17, 31, 32, 33}) {
        PrxPictureLayout layout;
        PrxInitPictureLayout(&layout, PieceOf(bytes), side, side);
        EXPECT_EQ(layout.mbWidth, (side - 1) / 16 + 1) << side;
        EXPECT_EQ(layout.mbHeight, (side - 1) / 16 + 1) << side;
    }
}

TEST(PrxPictureLayout, ElevenMacroblocksInSlicesOfEightGiveThreeSlices) {
    const Bytes bytes = PictureHeader(8, 3);
    PrxPictureLayout layout;
    PrxInitPictureLayout(&layout, PieceOf(bytes), 11 * 16, 16);
    EXPECT_EQ(layout.slicesPerRow, 3U);
    EXPECT_EQ(PrxNextSliceWidth(8, 11), 8U);
    EXPECT_EQ(PrxNextSliceWidth(8, 3), 2U);
    EXPECT_EQ(PrxNextSliceWidth(8, 1), 1U);
}

TEST(PrxPictureLayout, TheSlicesOfEveryRowTakeAllItsMacroblocks) {
    for (uint8_t log2Width = 0; log2Width < 4; ++log2Width) {
        const Bytes bytes = PictureHeader(8, log2Width);
        for (uint32_t mbWidth = 1; mbWidth <= 4096; ++mbWidth) {
            PrxPictureLayout layout;
            PrxInitPictureLayout(&layout, PieceOf(bytes), mbWidth * 16 - mbWidth % 16, 16);
            uint32_t mbLeft = mbWidth;
            for (uint32_t slice = 0; slice < layout.slicesPerRow; ++slice) {
                ASSERT_GT(mbLeft, 0U);
                mbLeft -= PrxNextSliceWidth(layout.sliceMbWidth, mbLeft);
            }
            ASSERT_EQ(mbLeft, 0U);
        }
    }
}

TEST(PrxPictureLayout, TheSliceCountOfTheHeaderIsNotRead) {
    Bytes bytes = PictureHeader(8, 1);
    bytes[5] = 0xff;
    bytes[6] = 0xff;
    PrxPictureLayout layout;
    PrxInitPictureLayout(&layout, PieceOf(bytes), 64, 32);
    EXPECT_EQ(layout.sliceCount, 4U);
}

TEST(PrxPictureLayout, TheSliceTableFollowsTheHeaderBySize) {
    Bytes bytes = PictureHeader(10, 3);
    bytes.insert(bytes.end(), {0xaa, 0xbb, 0x12, 0x34});
    PrxPictureLayout layout;
    PrxInitPictureLayout(&layout, PieceOf(bytes), 16, 16);
    EXPECT_EQ(PrxRead16At(layout.sliceTable, 0), 0x1234);
    EXPECT_EQ(PrxTotalSize(layout.sliceTable), 2U);
}

TEST(PrxPictureLayout, TheLargestPictureIsCountedWithoutOverflow) {
    const Bytes bytes = PictureHeader(8, 0);
    PrxPictureLayout layout;
    PrxInitPictureLayout(&layout, PieceOf(bytes), 65535, 65535);
    EXPECT_EQ(layout.sliceCount, 4096U * 4096U);
}

TEST(PrxPictureLayout, IsAllZeroForARefusedHeader) {
    PrxPictureLayout layout;
    std::memset(static_cast<void*>(&layout), 0xee, sizeof(layout));
    PrxInitPictureLayout(&layout, PieceOf(PictureHeader(7, 3)), 1920, 1080);
    EXPECT_EQ(layout.mbWidth, 0U);
    EXPECT_EQ(layout.mbHeight, 0U);
    EXPECT_EQ(layout.sliceMbWidth, 0U);
    EXPECT_EQ(layout.slicesPerRow, 0U);
    EXPECT_EQ(layout.sliceCount, 0U);
    EXPECT_EQ(PrxTotalSize(layout.sliceTable), 0U);
}

TEST(PrxPictureLayout, HasNoSlicesForAPictureWithoutPixels) {
    const Bytes bytes = PictureHeader(8, 3);
    PrxPictureLayout layout;
    PrxInitPictureLayout(&layout, PieceOf(bytes), 0, 1080);
    EXPECT_EQ(layout.sliceCount, 0U);
    PrxInitPictureLayout(&layout, PieceOf(bytes), 1920, 0);
    EXPECT_EQ(layout.mbHeight, 0U);
    EXPECT_EQ(layout.sliceCount, 0U);
}
