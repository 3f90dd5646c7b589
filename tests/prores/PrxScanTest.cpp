#include "prores/PrxScan.h"

#include "prores/ScanReductions.h"
#include "prores/StreamCoefficients.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

/// The full scan without the coefficients that a reduced decode drops, in rows of `width`.
std::vector<uint8_t> KeptCorner(bool interlaced, uint32_t width, uint32_t height) {
    std::vector<uint8_t> kept;
    for (const uint8_t position : stream::ScanOrder(interlaced)) {
        const uint32_t x = position % 8;
        const uint32_t y = position / 8;
        if (x < width && y < height) kept.push_back(static_cast<uint8_t>(y * width + x));
    }
    return kept;
}

std::vector<uint8_t> Scan(bool interlaced, int32_t hShift) {
    const auto scan = PrxScanTable(interlaced, hShift);
    return {scan.begin(), scan.end()};
}

} // namespace

TEST(PrxScan, FullScansAreThoseOfTheStandard) {
    EXPECT_EQ(Scan(false, 0), KeptCorner(false, 8, 8));
    EXPECT_EQ(Scan(true, 0), KeptCorner(true, 8, 8));
}

TEST(PrxScan, ReducedProgressiveScansKeepASquareCorner) {
    EXPECT_EQ(Scan(false, 1), KeptCorner(false, 4, 4));
    EXPECT_EQ(Scan(false, 2), KeptCorner(false, 2, 2));
    EXPECT_EQ(Scan(false, 3), KeptCorner(false, 1, 1));
}

TEST(PrxScan, ReducedInterlacedScansKeepACornerTwiceAsHigh) {
    EXPECT_EQ(Scan(true, 1), KeptCorner(true, 4, 8));
    EXPECT_EQ(Scan(true, 2), KeptCorner(true, 2, 4));
    EXPECT_EQ(Scan(true, 3), KeptCorner(true, 1, 2));
}

TEST(PrxScan, FirstHalfOfTheProgressiveScanLiesInTheUpperFourRows) {
    const auto scan = PrxScanTable(false, 0);
    EXPECT_LT(*std::max_element(scan.begin(), scan.begin() + 32), 32);
}

TEST(PrxScan, EveryReducedDecodeStaysInItsBlock) {
    for (const ScanReduction& reduction : scanReductions) {
        const auto scan = reduction.Scan();
        const size_t blockSize = size_t{1} << reduction.Log2Block();
        ASSERT_GE(scan.size(), blockSize);
        std::vector<uint8_t> kept(scan.begin(), scan.begin() + static_cast<ptrdiff_t>(blockSize));
        std::ranges::sort(kept);
        for (size_t i = 0; i < blockSize; ++i)
            EXPECT_EQ(kept[i], i) << reduction.interlaced << reduction.hShift << reduction.vShift;
    }
}
