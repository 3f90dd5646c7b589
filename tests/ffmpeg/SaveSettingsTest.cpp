#include "ffmpeg/SaveSettings.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

namespace {

using namespace CxFFMPEG;

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(SaveSettings, FilmAndVideoRatesBecomeTheirFractions) {
    EXPECT_EQ(SaveRateOf(23.976, 0), (SaveRate{24000, 1001}));
    EXPECT_EQ(SaveRateOf(23.98, 0), (SaveRate{24000, 1001}));
    EXPECT_EQ(SaveRateOf(29.97, 0), (SaveRate{30000, 1001}));
    EXPECT_EQ(SaveRateOf(59.94, 0), (SaveRate{60000, 1001}));
}

TEST(SaveSettings, WholeRatesCountInHundredths) {
    EXPECT_EQ(SaveRateOf(24.0, 0), (SaveRate{2400, 100}));
    EXPECT_EQ(SaveRateOf(25.0, 0), (SaveRate{2500, 100}));
    EXPECT_EQ(SaveRateOf(30.0, 0), (SaveRate{3000, 100}));
    EXPECT_EQ(SaveRateOf(50.0, 0), (SaveRate{5000, 100}));
    EXPECT_EQ(SaveRateOf(60.0, 0), (SaveRate{6000, 100}));
}

TEST(SaveSettings, AnyOtherRateCountsInThousandths) {
    EXPECT_EQ(SaveRateOf(15.0, 0), (SaveRate{15000, 1000}));
    EXPECT_EQ(SaveRateOf(12.5, 0), (SaveRate{12500, 1000}));
    EXPECT_EQ(SaveRateOf(240.0, 0), (SaveRate{240000, 1000}));
}

TEST(SaveSettings, AHundredthOfAFrameIsTenThousandths) {
    EXPECT_EQ(SaveRateOf(0.01, 0), (SaveRate{10, 1000}));
}

TEST(SaveSettings, WhatIsBelowOneAfterTheDocumentsDivisionBecomesOne) {
    EXPECT_EQ(SaveRateOf(0.01, 20), (SaveRate{1, 1000}));
    EXPECT_EQ(SaveRateOf(0.0, 0), (SaveRate{1, 1000}));
    EXPECT_EQ(SaveRateOf(-5.0, 0), (SaveRate{1, 1000}));
}

TEST(SaveSettings, TheDocumentsDivisionComesBeforeTheTableOfRates) {
    EXPECT_EQ(SaveRateOf(50.0, 2), (SaveRate{2500, 100}));
    EXPECT_EQ(SaveRateOf(30.0, 4), (SaveRate{7500, 1000}));
    EXPECT_EQ(SaveRateOf(0.0025, 2), (SaveRate{2, 1000})) << "3 thousandths by 2, rounded up";
}

TEST(SaveSettings, TheDataRateCountsInKilobytesOf1024Bytes) {
    EXPECT_EQ(BitRateOf(512.0), 4194304u);
    EXPECT_EQ(BitRateOf(0.0), 0u);
}

TEST(SaveSettings, KeyFramesAreLimitedToSixtyFour) {
    EXPECT_EQ(GopSizeOf(64.0), 64u);
    EXPECT_EQ(GopSizeOf(65.0), 64u);
    EXPECT_EQ(GopSizeOf(-1.0), 0u);
    EXPECT_EQ(GopSizeOf(12.9), 12u);
}

TEST(SaveSettings, NumbersThatNoIntegerHoldsAreLimited) {
    EXPECT_EQ(GopSizeOf(1e300), 64u);
    EXPECT_EQ(GopSizeOf(std::nan("")), 0u);
    EXPECT_EQ(BitRateOf(infinity), 2147483647u);
    EXPECT_EQ(SaveRateOf(infinity, 0).timeScale, 2147483647u);
    EXPECT_EQ(SaveRateOf(std::nan(""), 0), (SaveRate{1, 1000}));
    EXPECT_EQ(ReducePixelAspect(infinity, 1.0).numerator, 2147483647);
    EXPECT_EQ(ReducePixelAspect(std::nan(""), 1.0), (PixelAspect{0, 10000}));
}

TEST(SaveSettings, EqualSidesAreASquarePixel) {
    EXPECT_EQ(ReducePixelAspect(1.0, 1.0), (PixelAspect{1, 1}));
    EXPECT_EQ(ReducePixelAspect(0.9, 0.9), (PixelAspect{1, 1}));
    EXPECT_EQ(ReducePixelAspect(0.0, 0.0), (PixelAspect{1, 1}));
}

TEST(SaveSettings, ThePixelAspectIsInLowestTerms) {
    EXPECT_EQ(ReducePixelAspect(0.9, 1.0), (PixelAspect{9, 10}));
    EXPECT_EQ(ReducePixelAspect(2.0, 1.0), (PixelAspect{2, 1}));
    for (int32_t x = 1; x < 10000; x += 97) {
        for (int32_t y = 1; y < 10000; y += 89) {
            if (x == y) continue;
            const int32_t divisor = std::gcd(x, y);
            ASSERT_EQ(ReducePixelAspect(x / 10000.0, y / 10000.0), (PixelAspect{x / divisor, y / divisor}));
        }
    }
}

TEST(SaveSettings, SidesOfAnyLengthAreReduced) {
    EXPECT_EQ(ReducePixelAspect(200000.0, 210000.0), (PixelAspect{20, 21}));
    EXPECT_EQ(ReducePixelAspect(214748.3646, 214748.3647), (PixelAspect{2147483646, 2147483647}));
}

TEST(SaveSettings, SidesThatAreNotAboveZeroStayAsTheyAre) {
    EXPECT_EQ(ReducePixelAspect(0.0, 0.5), (PixelAspect{0, 5000}));
    EXPECT_EQ(ReducePixelAspect(-0.5, 0.5), (PixelAspect{-5000, 5000}));
}

TEST(SaveSettings, InterlacedPicturesOfTheNtscSizesHaveTheBottomFieldFirst) {
    EXPECT_EQ(SaveFieldOrder(true, 720, 486), 3u);
    EXPECT_EQ(SaveFieldOrder(true, 720, 480), 3u);
    EXPECT_EQ(SaveFieldOrder(true, 720, 576), 2u);
    EXPECT_EQ(SaveFieldOrder(true, 1920, 1080), 2u);
}

TEST(SaveSettings, ProgressivePicturesAreSoAtAnySize) {
    EXPECT_EQ(SaveFieldOrder(false, 720, 486), 1u);
    EXPECT_EQ(SaveFieldOrder(false, 1920, 1080), 1u);
}

} // namespace
