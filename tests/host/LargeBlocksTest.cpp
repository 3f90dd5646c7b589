#include "host/LargeBlocks.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <thread>
#include <vector>

namespace {

constexpr size_t megabyte = size_t{1} << 20;
constexpr size_t alignment = 4096;

/// Gives a block back, as a host's allocator does.
void Free(LargeBlocks& blocks, void* block) {
    if (!blocks.Keep(block)) std::free(block);
}

/// Takes a block of `size` bytes and gives it back.
/// @return where it was
void* Pass(LargeBlocks& blocks, size_t size) {
    void* const block = blocks.Take(size, alignment);
    Free(blocks, block);
    return block;
}

TEST(LargeBlocks, ABlockHasItsSizeAndAlignment) {
    LargeBlocks blocks;
    for (size_t wanted = sizeof(void*); wanted <= 8 * megabyte; wanted *= 8) {
        void* const block = blocks.Take(5 * megabyte + 3, wanted);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % wanted, 0u) << wanted;
        std::memset(block, 0xa5, 5 * megabyte + 3);
        std::free(block);
    }
}

TEST(LargeBlocks, AFreedBlockServesTheNextOfItsSize) {
    if (!LargeBlocks::areKept) GTEST_SKIP() << "AddressSanitizer sees blocks end only if they are freed";
    LargeBlocks blocks;
    void* const freed = Pass(blocks, 16 * megabyte);
    EXPECT_EQ(Pass(blocks, 16 * megabyte), freed);
    EXPECT_EQ(Pass(blocks, 12 * megabyte), freed);
}

TEST(LargeBlocks, ABlockInUseIsNotGivenTwice) {
    LargeBlocks blocks;
    Pass(blocks, 16 * megabyte);
    void* const first = blocks.Take(16 * megabyte, alignment);
    void* const second = blocks.Take(16 * megabyte, alignment);
    EXPECT_NE(first, second);
    std::free(first);
    std::free(second);
}

TEST(LargeBlocks, ABlockTooSmallOrMoreThanTwiceTooLargeIsPassedOver) {
    LargeBlocks blocks;
    void* const freed = Pass(blocks, 16 * megabyte);
    void* const larger = blocks.Take(24 * megabyte, alignment);
    void* const smaller = blocks.Take(5 * megabyte, alignment);
    if (LargeBlocks::areKept) {
        EXPECT_NE(larger, freed);
        EXPECT_NE(smaller, freed);
    }
    EXPECT_GE(malloc_usable_size(larger), 24 * megabyte);
    std::free(larger);
    std::free(smaller);
}

TEST(LargeBlocks, TheSmallestThatFitsIsTaken) {
    if (!LargeBlocks::areKept) GTEST_SKIP() << "AddressSanitizer sees blocks end only if they are freed";
    LargeBlocks blocks;
    void* const large = blocks.Take(32 * megabyte, alignment);
    void* const small = blocks.Take(24 * megabyte, alignment);
    Free(blocks, large);
    Free(blocks, small);
    EXPECT_EQ(blocks.Take(20 * megabyte, alignment), small);
    EXPECT_EQ(blocks.Take(20 * megabyte, alignment), large);
    std::free(small);
    std::free(large);
}

TEST(LargeBlocks, WhatIsTooSmallOrTooLargeIsNotKept) {
    LargeBlocks blocks;
    for (const size_t size : {size_t{1}, LargeBlocks::leastSize / 2, LargeBlocks::mostKept + megabyte}) {
        void* const block = std::malloc(size);
        ASSERT_NE(block, nullptr);
        EXPECT_FALSE(blocks.Keep(block)) << size;
        std::free(block);
    }
    EXPECT_FALSE(blocks.Keep(nullptr));
}

TEST(LargeBlocks, TheOldestMakeWayForANewOne) {
    if (!LargeBlocks::areKept) GTEST_SKIP() << "AddressSanitizer sees blocks end only if they are freed";
    LargeBlocks blocks;
    void* const oldest = blocks.Take(200 * megabyte, alignment);
    void* const next = blocks.Take(150 * megabyte, alignment);
    void* const newest = blocks.Take(300 * megabyte, alignment);
    for (void* const block : {oldest, next, newest})
        Free(blocks, block);
    EXPECT_EQ(blocks.Take(140 * megabyte, alignment), next);
    EXPECT_EQ(blocks.Take(290 * megabyte, alignment), newest);
    // The first one was freed, so that what is taken now is new and of the size asked for.
    void* const fresh = blocks.Take(120 * megabyte, alignment);
    EXPECT_LT(malloc_usable_size(fresh), 200 * megabyte);
    for (void* const block : {next, newest, fresh})
        std::free(block);
}

TEST(LargeBlocks, NoMoreThanAFixedNumberIsKept) {
    LargeBlocks blocks;
    std::vector<void*> taken(40);
    for (void*& block : taken)
        block = blocks.Take(LargeBlocks::leastSize, alignment);
    for (void* const block : taken)
        Free(blocks, block);
}

TEST(LargeBlocks, NullForMoreThanThereIs) {
    LargeBlocks blocks;
    EXPECT_EQ(blocks.Take(size_t{1} << 50, alignment), nullptr);
}

TEST(LargeBlocks, WhatIsKeptMakesWayWhereMemoryIsShort) {
    LargeBlocks blocks;
    void* const freed = Pass(blocks, 16 * megabyte);
    EXPECT_EQ(blocks.Take(size_t{1} << 50, alignment), nullptr);
    // The block is gone: what is taken now is no larger than asked for, within the room of its alignment.
    void* const fresh = blocks.Take(10 * megabyte, alignment);
    ASSERT_NE(freed, nullptr);
    EXPECT_LT(malloc_usable_size(fresh), 15 * megabyte);
    std::free(fresh);
}

TEST(LargeBlocks, ThreadsNeverShareABlock) {
    LargeBlocks blocks;
    const auto work = [&](uint8_t mark) {
        for (int round = 0; round < 200; ++round) {
            const size_t size = LargeBlocks::leastSize + mark * 4096u;
            auto* const block = static_cast<uint8_t*>(blocks.Take(size, alignment));
            std::memset(block, mark, 4096);
            std::memset(block + size - 4096, mark, 4096);
            EXPECT_EQ(block[17], mark);
            EXPECT_EQ(block[size - 1], mark);
            Free(blocks, block);
        }
    };
    std::vector<std::thread> threads;
    for (uint8_t mark = 1; mark <= 4; ++mark)
        threads.emplace_back(work, mark);
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace
