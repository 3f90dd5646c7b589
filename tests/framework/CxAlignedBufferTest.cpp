#include "framework/CxAlignedBuffer.h"

#include "framework/AllocatorSpy.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

class CxAlignedBufferTest : public testing::Test {
protected:
    void SetUp() override { AllocatorSpy::Reset(); }
    void TearDown() override { AllocatorSpy::Reset(); }

    CxAlignedBuffer buffer;
};

TEST_F(CxAlignedBufferTest, EnsureSizeOfMinusOneOnAnEmptyBufferGoesToTheAllocator) {
    EXPECT_FALSE(buffer.EnsureSize(-1));
    EXPECT_EQ(AllocatorSpy::allocations, 1);
    EXPECT_EQ(AllocatorSpy::lastSize, -1);
    EXPECT_EQ(buffer.data, nullptr);
    EXPECT_EQ(buffer.capacity, 0);
}

TEST_F(CxAlignedBufferTest, ANegativeSizeFreesTheBufferThatWasThere) {
    ASSERT_TRUE(buffer.EnsureSize(100));
    EXPECT_FALSE(buffer.EnsureSize(-1));
    EXPECT_EQ(AllocatorSpy::frees, 1);
    EXPECT_EQ(buffer.data, nullptr);
    EXPECT_EQ(buffer.capacity, 0);
}

TEST_F(CxAlignedBufferTest, ANewBufferIsPageAlignedAndOfTheSizeAskedFor) {
    ASSERT_TRUE(buffer.EnsureSize(5000));
    EXPECT_EQ(AllocatorSpy::lastSize, 5000);
    EXPECT_EQ(AllocatorSpy::lastAlignment, Platform::GetMemoryPageSize());
    EXPECT_EQ(reinterpret_cast<uintptr_t>(buffer.data) % Platform::GetMemoryPageSize(), 0u);
    EXPECT_EQ(buffer.capacity, 5000);
    std::memset(buffer.data, 0x5a, 5000);
}

TEST_F(CxAlignedBufferTest, ASizeThatFitsKeepsTheBuffer) {
    ASSERT_TRUE(buffer.EnsureSize(100));
    const void* const before = buffer.data;
    EXPECT_TRUE(buffer.EnsureSize(100));
    EXPECT_TRUE(buffer.EnsureSize(1));
    EXPECT_TRUE(buffer.EnsureSize(0));
    EXPECT_EQ(buffer.data, before);
    EXPECT_EQ(buffer.capacity, 100);
    EXPECT_EQ(AllocatorSpy::allocations, 1);
}

TEST_F(CxAlignedBufferTest, ALargerSizeReplacesTheBuffer) {
    ASSERT_TRUE(buffer.EnsureSize(100));
    ASSERT_TRUE(buffer.EnsureSize(101));
    EXPECT_EQ(buffer.capacity, 101);
    EXPECT_EQ(AllocatorSpy::allocations, 2);
    EXPECT_EQ(AllocatorSpy::frees, 1);
}

TEST_F(CxAlignedBufferTest, SizeZeroFitsAnEmptyBufferWithoutAnAllocation) {
    EXPECT_TRUE(buffer.EnsureSize(0));
    EXPECT_EQ(AllocatorSpy::allocations, 0);
    EXPECT_EQ(buffer.data, nullptr);
}

TEST_F(CxAlignedBufferTest, EnsureSizeSetsUsedToZeroAlsoWhenItFails) {
    buffer.used = 7;
    ASSERT_TRUE(buffer.EnsureSize(100));
    EXPECT_EQ(buffer.used, 0);
    buffer.used = 7;
    EXPECT_TRUE(buffer.EnsureSize(50));
    EXPECT_EQ(buffer.used, 0);
    buffer.used = 7;
    EXPECT_FALSE(buffer.EnsureSize(-1));
    EXPECT_EQ(buffer.used, 0);
}

TEST_F(CxAlignedBufferTest, AFailedAllocationLeavesNoBufferAndTheNextOneWorks) {
    ASSERT_TRUE(buffer.EnsureSize(100));
    AllocatorSpy::fails = true;
    EXPECT_FALSE(buffer.EnsureSize(200));
    EXPECT_EQ(buffer.data, nullptr);
    EXPECT_EQ(buffer.capacity, 0);
    AllocatorSpy::fails = false;
    EXPECT_TRUE(buffer.EnsureSize(200));
    EXPECT_EQ(buffer.capacity, 200);
}

TEST_F(CxAlignedBufferTest, ReleaseFreesTheBufferOnceAndKeepsUsed) {
    ASSERT_TRUE(buffer.EnsureSize(100));
    buffer.used = 7;
    buffer.Release();
    buffer.Release();
    EXPECT_EQ(AllocatorSpy::frees, 1);
    EXPECT_EQ(buffer.data, nullptr);
    EXPECT_EQ(buffer.capacity, 0);
    EXPECT_EQ(buffer.used, 7);
}

TEST_F(CxAlignedBufferTest, ReleaseWithoutCapacityClearsThePointerWithoutFreeingIt) {
    int notOurs = 0;
    buffer.data = &notOurs;
    buffer.Release();
    EXPECT_EQ(buffer.data, nullptr);
    EXPECT_EQ(AllocatorSpy::frees, 0);
}

TEST_F(CxAlignedBufferTest, TheBufferIsFreedWithItsOwner) {
    {
        CxAlignedBuffer local;
        ASSERT_TRUE(local.EnsureSize(100));
    }
    EXPECT_EQ(AllocatorSpy::frees, 1);
}

} // namespace
