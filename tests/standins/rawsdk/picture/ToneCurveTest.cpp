#include "rawsdk/picture/ToneCurve.h"

#include "rawsdk/clip/Failure.h"
#include "rawsdk/picture/Samples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace rawsdk;

constexpr ToneParameters::Gamma gammas[] = {ToneParameters::Film, ToneParameters::Video,
                                            ToneParameters::Linear};

ClipSettings LinearClip() {
    ClipSettings clip;
    clip.gamma = gammaLinear;
    return clip;
}

/// The code that a curve gives for light from 0 to 1.
double CodeOf(const ClipSettings& clip, double light, const FrameSettings& frame = {}, size_t channel = 1) {
    const ToneCurve curve(ToneOf(clip, frame), channel);
    return curve(static_cast<uint32_t>(std::lround(light * mostColor))) / 65535.0;
}

TEST(ToneCurve, GoesFromBlackToWhiteInEveryGamma) {
    for (const char* gamma : {gammaFilm, gammaVideo, gammaLinear}) {
        ClipSettings clip;
        clip.gamma = gamma;
        EXPECT_EQ(CodeOf(clip, 0), 0) << gamma;
        EXPECT_EQ(CodeOf(clip, 1), 1) << gamma;
    }
}

TEST(ToneCurve, EncodesAsItsGammaTells) {
    ClipSettings clip;
    EXPECT_NEAR(CodeOf(clip, 0.18), std::log2(1 + 31 * 0.18) / 5, 1e-4);
    clip.gamma = gammaVideo;
    EXPECT_NEAR(CodeOf(clip, 0.18), 1.099 * std::pow(0.18, 0.45) - 0.099, 1e-4);
    EXPECT_NEAR(CodeOf(clip, 0.01), 0.045, 1e-4);
    clip.gamma = gammaLinear;
    EXPECT_NEAR(CodeOf(clip, 0.18), 0.18, 1e-4);
}

TEST(ToneCurve, DecodesWhatItEncodes) {
    for (const ToneParameters::Gamma gamma : gammas)
        for (double light = 0; light <= 1; light += 0.001)
            ASSERT_NEAR(Decode(gamma, Encode(gamma, light)), light, 1e-6);
}

TEST(ToneCurve, RefusesAGammaThatThereIsNot) {
    ClipSettings clip;
    clip.gamma = "another";
    EXPECT_THROW(ToneOf(clip, {}), Failure);
}

TEST(ToneCurve, CountsExposureInStops) {
    EXPECT_NEAR(CodeOf(LinearClip(), 0.1, {5500, 0, 1, 400}), 0.2, 1e-4);
    EXPECT_NEAR(CodeOf(LinearClip(), 0.1, {5500, 0, -2, 400}), 0.025, 1e-4);
    EXPECT_EQ(CodeOf(LinearClip(), 0.6, {5500, 0, 1, 400}), 1);
}

TEST(ToneCurve, MultipliesByTheGain) {
    ClipSettings clip = LinearClip();
    clip.gain = 3;
    EXPECT_NEAR(CodeOf(clip, 0.1), 0.3, 1e-4);
}

TEST(ToneCurve, LeavesWhiteWhiteInNeutralLight) {
    const ToneParameters tone = ToneOf(LinearClip(), {});
    for (const float gain : tone.gains)
        EXPECT_EQ(gain, 1);
}

TEST(ToneCurve, MakesWarmLightBluerAndColdLightRedder) {
    const ToneParameters warm = ToneOf(LinearClip(), {3200, 0, 0, 400});
    EXPECT_EQ(warm.gains[0], 1);
    EXPECT_LT(warm.gains[0], warm.gains[1]);
    EXPECT_LT(warm.gains[1], warm.gains[2]);
    const ToneParameters cold = ToneOf(LinearClip(), {9000, 0, 0, 400});
    EXPECT_EQ(cold.gains[2], 1);
    EXPECT_GT(cold.gains[0], cold.gains[1]);
    EXPECT_GT(cold.gains[1], cold.gains[2]);
}

TEST(ToneCurve, TakesGreenAwayAsTintRises) {
    const ToneParameters magenta = ToneOf(LinearClip(), {5500, 150, 0, 400});
    EXPECT_EQ(magenta.gains[1], 1);
    EXPECT_NEAR(magenta.gains[0], 2, 1e-6);
    const ToneParameters green = ToneOf(LinearClip(), {5500, -150, 0, 400});
    EXPECT_NEAR(green.gains[1], 2, 1e-6);
}

TEST(ToneCurve, TurnsAboutTheMidpointWithContrast) {
    ClipSettings clip = LinearClip();
    clip.contrast = 1.5f;
    clip.midpoint = 0.4f;
    EXPECT_NEAR(CodeOf(clip, 0.4), 0.4, 1e-4);
    EXPECT_NEAR(CodeOf(clip, 0.6), 0.7, 1e-4);
    EXPECT_EQ(CodeOf(clip, 0.1), 0);
}

TEST(ToneCurve, LiftsShadowsAndHighlightsBetweenBlackAndWhite) {
    ClipSettings clip = LinearClip();
    clip.shadows = 2;
    EXPECT_NEAR(CodeOf(clip, 0.25), 0.25 + 0.5 * 0.25 * 0.75 * 0.75, 1e-4);
    EXPECT_EQ(CodeOf(clip, 1), 1);
    clip.shadows = 1;
    clip.highlights = 0;
    EXPECT_NEAR(CodeOf(clip, 0.75), 0.75 - 0.5 * 0.75 * 0.75 * 0.25, 1e-4);
    EXPECT_EQ(CodeOf(clip, 0), 0);
}

TEST(ToneCurve, EndsAtTheLevelsOfBlackAndWhite) {
    ClipSettings clip = LinearClip();
    clip.blackLevel = 0.25f;
    clip.whiteLevel = 0.75f;
    EXPECT_NEAR(CodeOf(clip, 0), 0.25, 1e-4);
    EXPECT_NEAR(CodeOf(clip, 1), 0.75, 1e-4);
    EXPECT_NEAR(CodeOf(clip, 0.5), 0.5, 1e-4);
}

TEST(ToneCurve, MayFall) {
    ClipSettings clip = LinearClip();
    clip.blackLevel = 1;
    clip.whiteLevel = 0;
    const ToneCurve curve(ToneOf(clip, {}), 0);
    for (uint32_t color = 1; color <= mostColor; ++color)
        ASSERT_LE(curve(color), curve(color - 1));
    EXPECT_EQ(curve(0), 65535);
    EXPECT_EQ(curve(mostColor), 0);
}

TEST(ToneCurve, IsLinearBetweenSamples) {
    const ToneCurve curve(ToneOf(LinearClip(), {}), 0);
    for (uint32_t color = 0; color <= mostColor; ++color)
        ASSERT_NEAR(curve(color), color * 65535.0 / mostColor, 1.5);
}

TEST(ToneCurve, TakesColorsBeyondTheMostForTheMost) {
    const ToneCurve curve(ToneOf({}, {}), 0);
    EXPECT_EQ(curve(mostColor + 1), 65535);
    EXPECT_EQ(curve(UINT32_MAX), 65535);
}

TEST(ToneCurve, GivesBlackWhereSettingsAreNoNumbers) {
    const float noNumber = std::numeric_limits<float>::quiet_NaN();
    ClipSettings clip;
    clip.gain = noNumber;
    EXPECT_EQ(CodeOf(clip, 0.5), 0);
    clip.gain = 1;
    clip.contrast = noNumber;
    EXPECT_EQ(CodeOf(clip, 0.5), 0);
    EXPECT_EQ(CodeOf({}, 0.5, {0, 0, std::numeric_limits<float>::infinity(), 0}), 0);
}

} // namespace
