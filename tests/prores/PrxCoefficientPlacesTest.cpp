#include "prores/PrxCoefficientPlaces.h"

#include "prores/PrxScan.h"
#include "prores/ScanReductions.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>

TEST(PrxCoefficientPlaces, InterleaveTheBlocksFrequencyByFrequency) {
    for (const ScanReduction& reduction : scanReductions) {
        const auto scan = reduction.Scan();
        const uint32_t log2Block = reduction.Log2Block();
        for (const uint32_t log2Size : {log2Block, log2Block + 1}) {
            for (uint32_t log2Count = 0; log2Count <= 5; ++log2Count) {
                const uint16_t* places = PrxCoefficientPlaces(scan, log2Count, log2Size);
                ASSERT_NE(places, nullptr) << scan.size() << " " << log2Size;
                for (size_t i = 0; i < scan.size() << log2Count; ++i) {
                    const size_t block = i % (size_t{1} << log2Count);
                    ASSERT_EQ(places[i], (block << log2Size) + scan[i >> log2Count]) << i;
                }
            }
        }
    }
}

TEST(PrxCoefficientPlaces, StayInTheArrayOfEveryReducedDecode) {
    for (const ScanReduction& reduction : scanReductions) {
        const uint32_t log2Block = reduction.Log2Block();
        for (const uint32_t log2Size : {log2Block, log2Block + 1}) {
            for (uint32_t log2Count = 0; log2Count <= 5; ++log2Count) {
                const uint16_t* places = PrxCoefficientPlaces(reduction.Scan(), log2Count, log2Size);
                const uint32_t behindLastBlock = (((1u << log2Count) - 1) << log2Size) + (1u << log2Block);
                for (size_t i = 0; i < size_t{1} << (log2Block + log2Count); ++i)
                    ASSERT_LT(places[i], behindLastBlock);
            }
        }
    }
}

TEST(PrxCoefficientPlaces, KnowOnlyTheScansOfTheEngine) {
    const std::array<uint8_t, 64> foreign = {};
    EXPECT_EQ(PrxCoefficientPlaces(foreign, 2, 6), nullptr);
    EXPECT_EQ(PrxCoefficientPlaces(PrxScanTable(false, 0).first(32), 2, 6), nullptr);
}

TEST(PrxCoefficientPlaces, KnowOnlyTheSizesOfADecode) {
    const auto scan = PrxScanTable(false, 0);
    EXPECT_NE(PrxCoefficientPlaces(scan, 5, 7), nullptr);
    EXPECT_EQ(PrxCoefficientPlaces(scan, 6, 6), nullptr);
    EXPECT_EQ(PrxCoefficientPlaces(scan, 5, 8), nullptr);
    EXPECT_EQ(PrxCoefficientPlaces(scan, 5, 4), nullptr);
}
