// From a picture to samples and back: how near the result is.

#include "rawsdk/picture/Mosaic.h"

#include "rawsdk/picture/Demosaic.h"
#include "rawsdk/picture/Processing.h"
#include "standins/rawsdk/picture/Pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

using namespace rawsdk;

OwnedPicture ThereAndBack(OwnedPicture& picture, const ClipSettings& clip, const FrameSettings& frame) {
    const ToneParameters tone = ToneOf(clip, frame);
    const std::vector<uint16_t> samples = Mosaic(tone).Samples(picture.Planes());
    OwnedPicture colors(picture.width, picture.height);
    Demosaic(samples.data(), colors.Planes(), 0, picture.height);
    OwnedPicture result(picture.width, picture.height);
    Processing(tone, nullptr).Process(colors.Planes(), result.Planes(), 0, picture.height);
    return result;
}

/// Colours that change slowly.
double Smooth(size_t plane, double x, double y) {
    const double turn = 2 * std::numbers::pi * (x * 0.7 + y * 0.4 + static_cast<double>(plane) / 3);
    return 0.5 + 0.4 * std::sin(turn);
}

TEST(Mosaic, HasRedAndGreenInEvenRowsAndGreenAndBlueInOddOnes) {
    OwnedPicture picture(6, 6);
    Paint(picture, [](size_t plane, double, double) { return 0.25 * static_cast<double>(plane + 1); });
    ClipSettings clip;
    clip.gamma = gammaLinear;
    const std::vector<uint16_t> samples = Mosaic(ToneOf(clip, {})).Samples(picture.Planes());
    EXPECT_EQ(samples[0], 1024);
    EXPECT_EQ(samples[1], 2048);
    EXPECT_EQ(samples[6], 2048);
    EXPECT_EQ(samples[7], 3071);
}

TEST(Mosaic, OfAGreyComesBackWithinOnePartInAThousandInEveryGamma) {
    for (const char* gamma : {gammaFilm, gammaVideo, gammaLinear}) {
        ClipSettings clip;
        clip.gamma = gamma;
        for (const double grey : {0.0, 0.1, 0.5, 0.9, 1.0}) {
            OwnedPicture picture(8, 8);
            Paint(picture, [&](size_t, double, double) { return grey; });
            EXPECT_LE(Compare(ThereAndBack(picture, clip, {}), picture).greatest, 80) << gamma << " " << grey;
        }
    }
}

TEST(Mosaic, OfASmoothPictureComesBackWithinOnePercent) {
    for (const char* gamma : {gammaFilm, gammaVideo, gammaLinear}) {
        ClipSettings clip;
        clip.gamma = gamma;
        OwnedPicture picture(128, 96);
        Paint(picture, Smooth);
        const Difference difference = Compare(ThereAndBack(picture, clip, {}), picture);
        EXPECT_LE(difference.greatest, 650) << gamma;
        EXPECT_LE(difference.typical, 100) << gamma;
    }
}

TEST(Mosaic, OfASmoothPictureComesBackWithinOneAndAHalfPercentInAnyLightAndExposure) {
    OwnedPicture picture(128, 96);
    Paint(picture, Smooth);
    for (const FrameSettings& frame :
         {FrameSettings{3200, 10, 0, 400}, {8000, -30, 0, 400}, {5500, 0, 1, 400}}) {
        const Difference difference = Compare(ThereAndBack(picture, {}, frame), picture);
        EXPECT_LE(difference.greatest, 980) << frame.kelvin;
        EXPECT_LE(difference.typical, 100) << frame.kelvin;
    }
}

TEST(Mosaic, OfASharpGreyEdgeComesBackButForTheSamplesBesideIt) {
    OwnedPicture picture(64, 64);
    Paint(picture, [](size_t, double x, double) { return x < 0.5 ? 0.2 : 0.8; });
    OwnedPicture result = ThereAndBack(picture, {}, {});
    for (size_t plane = 0; plane < 3; ++plane)
        for (uint32_t y = 0; y < 64; ++y)
            for (uint32_t x = 0; x < 64; ++x) {
                if (x >= 30 && x < 34) continue;
                ASSERT_NEAR(result.At(plane, x, y), picture.At(plane, x, y), 80) << x;
            }
    EXPECT_GT(Compare(result, picture).greatest, 80);
}

TEST(Mosaic, LimitsLightThatSamplesCanNotTell) {
    OwnedPicture picture(4, 4);
    Paint(picture, [](size_t, double, double) { return 1; });
    const std::vector<uint16_t> samples = Mosaic(ToneOf({}, {5500, 0, -2, 400})).Samples(picture.Planes());
    EXPECT_EQ(*std::ranges::min_element(samples), mostSample);
}

TEST(Mosaic, OfNoGainIsSound) {
    ClipSettings clip;
    clip.gain = 0;
    OwnedPicture picture(4, 4);
    const std::vector<uint16_t> samples = Mosaic(ToneOf(clip, {})).Samples(picture.Planes());
    EXPECT_EQ(*std::ranges::max_element(samples), 0);
}

} // namespace
