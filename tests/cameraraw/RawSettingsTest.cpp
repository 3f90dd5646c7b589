#include "cameraraw/RawSettings.h"

#include "cameraraw/RawTestSupport.h"
#include "cameraraw/VrelDecoderContext.h"

namespace {

/// Reads a clip's settings as opening it does.
class RawSettings : public RawTest {
protected:
    const RawClipValues& ClipValues() {
        EXPECT_TRUE(context.OpenClip("clip.vrel"));
        return context.ClipValues();
    }

    VrelDecoderContext context;
};

TEST(RawSettingsRecord, BeginsWithTheDefaults) {
    const RawClipValues clip;
    EXPECT_EQ(clip.saturation, 2.0F);
    EXPECT_EQ(clip.contrast, 1.0F);
    EXPECT_EQ(clip.midpoint, 0.5F);
    EXPECT_EQ(clip.highlights, 1.0F);
    EXPECT_EQ(clip.shadows, 1.0F);
    EXPECT_EQ(clip.colorScienceGeneration, 0);
    EXPECT_EQ(clip.videoBlackLevel, 0);
    EXPECT_EQ(clip.blackLevel, 0.0F);
    EXPECT_EQ(clip.whiteLevel, 1.0F);
    EXPECT_EQ(clip.highlightRecovery, 0);
    EXPECT_EQ(clip.gamut, "Ravenlight Design");
    EXPECT_EQ(clip.gamma, "Ravenlight Design Film");
    EXPECT_EQ(clip.cameraType, "");
    EXPECT_EQ(clip.gain, 1.0F);
    EXPECT_EQ(clip.lutMode, "Disabled");
    EXPECT_EQ(clip.lutSources, 0U);
    const RawFrameValues frame;
    EXPECT_EQ(frame.whiteBalanceKelvin, 5500U);
    EXPECT_EQ(frame.whiteBalanceTint, 0);
    EXPECT_EQ(frame.exposure, 0.0F);
}

TEST_F(RawSettings, OfAClipAreReadEachAsItsType) {
    Script().attributes = {{rawContrast, 0.5F},
                           {rawSaturation, 1.5F},
                           {rawMidpoint, 0.25F},
                           {rawHighlights, 0.75F},
                           {rawShadows, 1.25F},
                           {rawBlackLevel, -0.5F},
                           {rawWhiteLevel, 1.75F},
                           {rawVideoBlackLevel, uint16_t{1}},
                           {rawHighlightRecovery, uint16_t{2}},
                           {rawColorScienceGeneration, uint16_t{4}},
                           {rawGamut, "Wide"},
                           {rawGamma, "Log"},
                           {rawGain, 3.0F},
                           {rawLutMode, "Custom"}};
    const RawClipValues& clip = ClipValues();
    EXPECT_EQ(clip.contrast, 0.5F);
    EXPECT_EQ(clip.saturation, 1.5F);
    EXPECT_EQ(clip.midpoint, 0.25F);
    EXPECT_EQ(clip.highlights, 0.75F);
    EXPECT_EQ(clip.shadows, 1.25F);
    EXPECT_EQ(clip.blackLevel, -0.5F);
    EXPECT_EQ(clip.whiteLevel, 1.75F);
    EXPECT_EQ(clip.videoBlackLevel, 1);
    EXPECT_EQ(clip.highlightRecovery, 2);
    EXPECT_EQ(clip.colorScienceGeneration, 4);
    EXPECT_EQ(clip.gamut, "Wide");
    EXPECT_EQ(clip.gamma, "Log");
    EXPECT_EQ(clip.gain, 3.0F);
    EXPECT_EQ(clip.lutMode, "Custom");
    EXPECT_EQ(clip.cameraType, "Ravenlight Heron");
}

TEST_F(RawSettings, OfAFrameAreReadEachAsItsType) {
    Script().attributes = {{rawWhiteBalanceKelvin, uint32_t{4300}},
                           {rawWhiteBalanceTint, int16_t{-7}},
                           {rawExposure, 1.5F},
                           {rawIso, int16_t{800}}};
    ClipValues();
    EXPECT_EQ(context.FrameValues().whiteBalanceKelvin, 4300U);
    EXPECT_EQ(context.FrameValues().whiteBalanceTint, -7);
    EXPECT_EQ(context.FrameValues().exposure, 1.5F);
    EXPECT_EQ(context.FrameValues().iso, 800);
}

TEST_F(RawSettings, OnesThatAreRefusedOrOfAnotherTypeKeepTheirDefaultsWithoutAWord) {
    Script().attributes = {{rawContrast, uint32_t{7}}, {rawGamut, 1.0F}, {rawGain, 3.0F}};
    Script().failing["RawClipSettings.GetAttribute gain"] = 1;
    EXPECT_EQ(WordsOf([&] { ClipValues(); }), "");
    EXPECT_EQ(context.ClipValues().contrast, 1.0F);
    EXPECT_EQ(context.ClipValues().gamut, "Ravenlight Design");
    EXPECT_EQ(context.ClipValues().gain, 1.0F);
    EXPECT_EQ(CallsOf("RawClipSettings.GetAttribute gain"), 1);
}

TEST_F(RawSettings, AnEmbeddedLutWithoutASidecarIsSource1) {
    Script().luts = {{"Embedded", true}};
    EXPECT_EQ(ClipValues().lutSources, 1U);
}

TEST_F(RawSettings, ASidecarAloneIsSource2) {
    Script().luts = {{"Sidecar", true}};
    EXPECT_EQ(ClipValues().lutSources, 2U);
}

TEST_F(RawSettings, BothLutsAreSources3) {
    Script().luts = {{"Embedded", true}, {"Sidecar", true}};
    EXPECT_EQ(ClipValues().lutSources, 3U);
}

TEST_F(RawSettings, ALutWithoutATableIsNoSource) {
    Script().luts = {{"Embedded", false}, {"Sidecar", true}};
    EXPECT_EQ(ClipValues().lutSources, 2U);
}

TEST_F(RawSettings, ALutThatIsRefusedIsNoSourceAndNotReported) {
    Script().luts = {{"Embedded", true}, {"Sidecar", true}};
    Script().failing = {{"RawClipSettings.GetLut", 1}};
    EXPECT_EQ(WordsOf([&] { EXPECT_EQ(ClipValues().lutSources, 2U); }), "");
}

TEST_F(RawSettings, TheLutModeIsTheSameAfterTheProbeAsBefore) {
    Script().attributes = {{rawLutMode, "Embedded"}};
    Script().luts = {{"Embedded", true}};
    ClipValues();
    JoinThreads();
    const auto last =
        std::ranges::find_if(Script().calls.rbegin(), Script().calls.rend(), [](const auto& call) {
            return call.starts_with("RawClipSettings.SetAttribute");
        });
    ASSERT_NE(last, Script().calls.rend());
    EXPECT_EQ(*last, "RawClipSettings.SetAttribute lutm=Embedded");
}

} // namespace
