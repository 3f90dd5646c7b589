#include "iostream/StartCodes.h"

#include "support/GuardedBytes.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

using IOStream::FindStartCode;
using IOStream::FindStartCodeScalar;
using Bytes = std::vector<uint8_t>;

/// Runs a test once for each instruction set with vectors, and fails if there is none.
void ForEachTarget(const std::function<void()>& test) {
    const std::vector<int64_t> targets = VectorTargets();
    ASSERT_FALSE(targets.empty());
    for (const int64_t target : targets) {
        const ForcedTarget forced(target);
        SCOPED_TRACE(hwy::TargetName(target));
        test();
    }
}

size_t ScalarOf(const Bytes& bytes) { return FindStartCodeScalar(bytes.data(), bytes.size()); }

TEST(StartCodes, TheReferenceGivesThePlaceOfTheFirst) {
    EXPECT_EQ(ScalarOf({9, 0, 0, 1, 0, 0, 1}), 1u);
    EXPECT_EQ(ScalarOf({0, 0, 0, 0, 1}), 2u);
    EXPECT_EQ(ScalarOf({0, 0, 1}), 0u);
}

TEST(StartCodes, TheReferenceGivesTheSizeWhereThereIsNone) {
    EXPECT_EQ(ScalarOf({}), 0u);
    EXPECT_EQ(ScalarOf({0, 0}), 2u);
    EXPECT_EQ(ScalarOf({0, 0, 2, 0, 1, 0, 0}), 7u);
}

TEST(StartCodes, TheVectorFormFindsAStartCodeAtEachPlaceOfEachSize) {
    ForEachTarget([] {
        for (const uint8_t filling : {0, 1, 3, 255}) {
            for (size_t size = 0; size <= 140; ++size) {
                Bytes bytes(size, filling);
                ASSERT_EQ(FindStartCode(bytes.data(), size), size) << size << " times " << int{filling};
                for (size_t place = 0; place + 3 <= size; place += 1 + place / 8) {
                    std::ranges::fill(bytes, filling);
                    bytes[place] = bytes[place + 1] = 0;
                    bytes[place + 2] = 1;
                    ASSERT_EQ(FindStartCode(bytes.data(), size), place) << size << " of " << int{filling};
                }
            }
        }
    });
}

TEST(StartCodes, TheVectorFormEqualsTheReferenceOnBytesThatNearlyAreStartCodes) {
    std::mt19937 random = MakeRandom();
    ForEachTarget([&random] {
        for (uint32_t round = 0; round < 3000; ++round) {
            Bytes bytes(random() % 300);
            const uint32_t zeros = 2 + random() % 14; // of 16 bytes
            for (uint8_t& byte : bytes)
                byte = random() % 16 < zeros ? 0 : static_cast<uint8_t>(random() % 4 == 0 ? 1 : random());
            ASSERT_EQ(FindStartCode(bytes.data(), bytes.size()), ScalarOf(bytes)) << "round " << round;
        }
    });
}

TEST(StartCodes, TheVectorFormTouchesNoByteOutside) {
    ForEachTarget([] {
        for (const auto guard : {GuardedBytes::Guard::Before, GuardedBytes::Guard::Behind}) {
            for (size_t size = 0; size <= 140; ++size) {
                const GuardedBytes bytes(size, guard);
                ASSERT_EQ(FindStartCode(bytes.data(), size), size);
            }
        }
    });
}

} // namespace
