#include "host/Platform.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace {

TEST(PlatformMemory, BlocksHaveTheAlignmentAskedFor) {
    for (int alignment = 1; alignment <= 65536; alignment *= 2) {
        void* const block = Platform::AllocMemAligned(100, alignment);
        ASSERT_NE(block, nullptr) << alignment;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % alignment, 0u);
        std::memset(block, 0xa5, 100);
        Platform::FreeMemAligned(block);
    }
}

TEST(PlatformMemory, ASizeOfZeroGivesABlock) {
    void* const block = Platform::AllocMemAligned(0, 64);
    ASSERT_NE(block, nullptr);
    Platform::FreeMemAligned(block);
}

TEST(PlatformMemory, ANegativeSizeGivesNull) {
    EXPECT_EQ(Platform::AllocMemAligned(-1, 16), nullptr);
    EXPECT_EQ(Platform::AllocMemAligned(std::numeric_limits<int64_t>::min(), 16), nullptr);
}

TEST(PlatformMemory, ASizeBeyondAllMemoryGivesNull) {
    EXPECT_EQ(Platform::AllocMemAligned(std::numeric_limits<int64_t>::max(), 4096), nullptr);
    EXPECT_EQ(Platform::AllocMemAligned(int64_t{1} << 50, 4096), nullptr);
}

TEST(PlatformMemory, AnAlignmentThatIsNoPowerOfTwoGivesNull) {
    for (const int alignment : {0, -1, -16, 3, 24, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(Platform::AllocMemAligned(16, alignment), nullptr) << alignment;
    }
}

TEST(PlatformMemory, ThePageSizeServesAsAnAlignment) {
    const int page = Platform::GetMemoryPageSize();
    EXPECT_GE(page, 4096);
    void* const block = Platform::AllocMemAligned(page, page);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % page, 0u);
    Platform::FreeMemAligned(block);
}

} // namespace
