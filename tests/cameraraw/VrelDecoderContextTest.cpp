// Opening and closing clips.

#include "cameraraw/VrelDecoderContext.h"

#include "cameraraw/RawTestSupport.h"

namespace {

class VrelDecoderContextTest : public RawTest {
protected:
    VrelDecoderContextTest() { Script().finish = Finish::InsideSubmit; }

    /// Whether a context of its own opens the clip that the script tells.
    static bool Opens() { return VrelDecoderContext().OpenClip("clip.vrel"); }
};

TEST_F(VrelDecoderContextTest, AContextMakesACodecAndTriesItsLimits) {
    const VrelDecoderContext context;
    EXPECT_EQ(TakeCalls(), initializeCalls);
    EXPECT_FALSE(context.IsOpen());
}

TEST_F(VrelDecoderContextTest, BeforeAClipTheFactsAreTheirDefaults) {
    const VrelDecoderContext context;
    EXPECT_EQ(context.Facts().width, 0U);
    EXPECT_EQ(context.Facts().height, 0U);
    EXPECT_EQ(context.Facts().processedWidth, 0U);
    EXPECT_EQ(context.Facts().processedHeight, 0U);
    EXPECT_EQ(context.Facts().frameCount, 0U);
    EXPECT_EQ(context.Facts().frameRate, -1.0F);
    EXPECT_EQ(context.Facts().timeCode, "");
}

TEST_F(VrelDecoderContextTest, TheFirstClipConfiguresTheCodecAndIsReadOnce) {
    VrelDecoderContext context;
    TakeCalls();
    EXPECT_TRUE(context.OpenClip("clip.vrel"));
    EXPECT_EQ(TakeCalls(), Joined({configureCalls, clipCalls}));
    EXPECT_EQ(Script().lastText, "clip.vrel");
}

TEST_F(VrelDecoderContextTest, ASecondClipReusesThePipelineAndDoesNotSetItAgain) {
    VrelDecoderContext context;
    EXPECT_TRUE(context.OpenClip("clip.vrel"));
    TakeCalls();
    EXPECT_TRUE(context.OpenClip("other.vrel"));
    EXPECT_EQ(TakeCalls(), clipCalls);
}

TEST_F(VrelDecoderContextTest, APipelineThatFailsTwiceEndsTheAttemptWhateverTheThirdTryGives) {
    VrelDecoderContext context;
    TakeCalls();
    Script().failing["RawPipelineSetup.SetPipeline cpub"] = 2;
    EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(context.OpenClip("clip.vrel")); }), "Vrel HRESULT = 0x0");
    EXPECT_EQ(TakeCalls(), (Calls{"RawCodec.QueryInterface RawPipelineSetup",
                                  "RawPipelineSetup.SetPipelineOption 0", "RawPipelineSetup.SetPipeline cpub",
                                  "RawPipelineSetup.SetPipeline cpub", "RawPipelineSetup.SetPipeline cpub"}));
    EXPECT_TRUE(context.OpenClip("clip.vrel")) << "the next clip tries again";
}

TEST_F(VrelDecoderContextTest, AClipTellsItsFacts) {
    Script().width = 40;
    Script().height = 30;
    Script().processedWidth = 20;
    Script().processedHeight = 10;
    Script().frameCount = 0x100000001;
    Script().frameRate = 23.976F;
    VrelDecoderContext context;
    EXPECT_TRUE(context.OpenClip("clip.vrel"));
    EXPECT_TRUE(context.IsOpen());
    EXPECT_EQ(context.Facts().width, 40U);
    EXPECT_EQ(context.Facts().height, 30U);
    EXPECT_EQ(context.Facts().processedWidth, 20U);
    EXPECT_EQ(context.Facts().processedHeight, 10U);
    EXPECT_EQ(context.Facts().frameCount, 0x100000001U);
    EXPECT_EQ(context.Facts().frameRate, 23.976F);
    EXPECT_EQ(context.Facts().timeCode, "01:00:00:00");
}

TEST_F(VrelDecoderContextTest, APathIsGivenAsItsTextIs) {
    VrelDecoderContext context;
    EXPECT_TRUE(context.OpenClip("/größe/\U0001F3A5.vrel"));
    EXPECT_EQ(Script().lastText, "/größe/\U0001F3A5.vrel");
}

TEST_F(VrelDecoderContextTest, AClipWithARateOf0AndATimeCodeOpens) {
    Script().frameRate = 0.0F;
    EXPECT_TRUE(Opens());
}

TEST_F(VrelDecoderContextTest, AClipWithANegativeRateDoesNotOpen) {
    Script().frameRate = -24.0F;
    EXPECT_FALSE(Opens());
}

TEST_F(VrelDecoderContextTest, AClipWithARateOf0AndNoTimeCodeDoesNotOpen) {
    Script().frameRate = 0.0F;
    Script().timeCode = u"";
    EXPECT_FALSE(Opens());
}

TEST_F(VrelDecoderContextTest, AClipWithARateAndNoTimeCodeOpens) {
    Script().timeCode = u"";
    EXPECT_TRUE(Opens());
}

TEST_F(VrelDecoderContextTest, AClipWithoutASizeOrFramesDoesNotOpenAndIsReleased) {
    for (uint32_t ScriptedRaw::*const size : {&ScriptedRaw::width, &ScriptedRaw::height}) {
        Script().*size = 0;
        VrelDecoderContext context;
        EXPECT_FALSE(context.OpenClip("clip.vrel"));
        EXPECT_FALSE(context.IsOpen());
        Script().*size = 4;
    }
    Script().frameCount = 0;
    EXPECT_FALSE(Opens());
    EXPECT_EQ(CallsOf("RawJob.Submit read"), 0);
}

TEST_F(VrelDecoderContextTest, AClipWhoseFirstFrameCantBeReadStaysHalfOpen) {
    Script().hasFrame = false;
    VrelDecoderContext context;
    EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(context.OpenClip("clip.vrel")); }), "");
    EXPECT_TRUE(context.IsOpen());
    context.ReleaseClip();
    EXPECT_FALSE(context.IsOpen());
}

TEST_F(VrelDecoderContextTest, ANewClipBeginsWithoutWhatTheLastOneTold) {
    Script().attributes = {{rawContrast, 0.5F}, {rawIso, int16_t{800}}};
    Script().clipMetadata = {{u"a", [](VARIANT& value) { value.vt = VT_I2; }}};
    VrelDecoderContext context;
    EXPECT_TRUE(context.OpenClip("clip.vrel"));
    Script().attributes = {};
    Script().clipMetadata = {};
    EXPECT_TRUE(context.OpenClip("other.vrel"));
    EXPECT_EQ(context.ClipValues().contrast, 1.0F);
    EXPECT_EQ(context.FrameValues().iso, 0);
    QMap<QString, QVariant> metadata;
    context.GetClipMetadata(metadata);
    EXPECT_TRUE(metadata.isEmpty());
}

TEST_F(VrelDecoderContextTest, AClipThatIsRefusedLeavesNoneOpenAndWhatTheLastOneToldStays) {
    VrelDecoderContext context;
    EXPECT_TRUE(context.OpenClip("clip.vrel"));
    Script().failing["RawCodec.OpenClip"] = 2;
    EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(context.OpenClip("other.vrel")); }), "Vrel HRESULT = 0x80040002");
    EXPECT_FALSE(context.IsOpen());
    EXPECT_EQ(context.Facts().width, 4U);
    EXPECT_EQ(context.Facts().timeCode, "01:00:00:00");
}

TEST_F(VrelDecoderContextTest, AnOpenClipIsReleasedOnceTheNextOneIsThere) {
    VrelDecoderContext context;
    EXPECT_TRUE(context.OpenClip("clip.vrel"));
    Script().calls.clear();
    EXPECT_TRUE(context.OpenClip("other.vrel"));
    const Calls calls(Script().calls.begin(), Script().calls.begin() + 4);
    EXPECT_EQ(calls, (Calls{"RawCodec.OpenClip", "~RawClip", "~RawClipReader",
                            "RawClip.QueryInterface RawClipReader"}));
}

TEST_F(VrelDecoderContextTest, WhatAReleasedClipToldStays) {
    VrelDecoderContext context;
    EXPECT_TRUE(context.OpenClip("clip.vrel"));
    context.ReleaseClip();
    EXPECT_FALSE(context.IsOpen());
    EXPECT_EQ(context.Facts().width, 4U);
}

TEST_F(VrelDecoderContextTest, ItsEndReleasesTheObjectsInTheirOrder) {
    {
        VrelDecoderContext context;
        EXPECT_TRUE(context.OpenClip("clip.vrel"));
        Script().calls.clear();
    }
    EXPECT_EQ(Script().calls, (Calls{"~RawClip", "~RawClipReader", "~RawManualFlow", "~RawConstants",
                                     "RawCodec.SetCallback null", "~RawCodec", "~RawExtras"}));
}

TEST_F(VrelDecoderContextTest, WithoutAFactoryItHasNoCodecAndEveryClipFailsInTheSameWords) {
    Script().hasFactory = false;
    std::optional<VrelDecoderContext> context;
    EXPECT_EQ(WordsOf([&] { context.emplace(); }), "Vrel NULL pointer");
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(context->OpenClip("clip.vrel")); }), "Vrel NULL pointer");
    EXPECT_EQ(TakeCalls(), Calls{"CreateRavenlightRawFactoryInstance"});
}

TEST_F(VrelDecoderContextTest, ANullPathFails) {
    VrelDecoderContext context;
    EXPECT_FALSE(context.OpenClip(nullptr));
    EXPECT_TRUE(context.OpenClip("clip.vrel"));
    EXPECT_FALSE(context.OpenClip(nullptr));
    EXPECT_FALSE(context.IsOpen());
}

} // namespace
