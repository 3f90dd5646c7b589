#include "prores/encoder/PrxRowBuffer.h"

#include <gtest/gtest.h>

#include <cstring>

TEST(PrxRowBuffer, RowsAreAlignedAndHaveRoomForTheirWidthAndAMacroblock) {
    PrxRowBuffer buffer;
    for (const int32_t width : {1, 15, 16, 17, 1920, 65535}) {
        ASSERT_TRUE(buffer.EnsureWidth(width));
        EXPECT_EQ(buffer.RowBytes() % 64, 0);
        EXPECT_GE(buffer.RowBytes(), 4 * (width + 16));
        for (int32_t row = 0; row < PrxRowBuffer::rowCount; ++row) {
            EXPECT_EQ(reinterpret_cast<uintptr_t>(buffer.Row(row)) % 64, 0U);
            EXPECT_EQ(buffer.Row(row), buffer.Row(0) + row * buffer.RowBytes());
            std::memset(buffer.Row(row), row, static_cast<size_t>(buffer.RowBytes()));
        }
    }
}

TEST(PrxRowBuffer, ANarrowerPictureKeepsTheMemory) {
    PrxRowBuffer buffer;
    ASSERT_TRUE(buffer.EnsureWidth(1920));
    const uint8_t* first = buffer.Row(0);
    ASSERT_TRUE(buffer.EnsureWidth(64));
    EXPECT_EQ(buffer.Row(0), first);
    ASSERT_TRUE(buffer.EnsureWidth(1920));
    EXPECT_EQ(buffer.Row(0), first);
}

TEST(PrxRowBuffer, ANewBufferHasNoRoom) { EXPECT_EQ(PrxRowBuffer().RowBytes(), 0); }
