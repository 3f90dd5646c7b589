#include "prores/PrxScratchBuffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace {

TEST(ScratchBuffer, GivesAlignedMemoryOfTheSizeAsked) {
    PrxScratchBuffer buffer;
    for (const size_t size : {1U, 100U, 5000U}) {
        uint8_t* bytes = buffer.Reserve(size);
        ASSERT_NE(bytes, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(bytes) % 64, 0U);
        std::memset(bytes, 1, size);
    }
}

TEST(ScratchBuffer, StaysWhereItIsForWhatItCanTake) {
    PrxScratchBuffer buffer;
    uint8_t* bytes = buffer.Reserve(5000);
    EXPECT_EQ(buffer.Reserve(10), bytes);
    EXPECT_EQ(buffer.Reserve(5000), bytes);
}

TEST(ScratchBuffer, IsUsableAgainAfterAskingForTooMuch) {
    PrxScratchBuffer buffer;
    ASSERT_NE(buffer.Reserve(100), nullptr);
    EXPECT_EQ(buffer.Reserve(std::numeric_limits<size_t>::max() / 4), nullptr);
    uint8_t* bytes = buffer.Reserve(200);
    ASSERT_NE(bytes, nullptr);
    std::memset(bytes, 1, 200);
}

} // namespace
