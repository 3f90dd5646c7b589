// Opening clips, and the road of a frame to the image.

#include "cameraraw/VrelFileFormat.h"

#include "cameraraw/FormatTestSupport.h"
#include "ffmpeg/BaseFormatSpy.h"

#include <limits>

namespace {

class VrelFileFormatTest : public RawTest {
protected:
    VrelFileFormatTest() { Script().finish = Finish::InsideSubmit; }

    LoadedClip clip;
};

void ExpectFrame(Image& image, uint64_t frame) {
    for (uint32_t pixel = 0; pixel < 8; ++pixel)
        EXPECT_EQ(PixelAtTop(image, static_cast<int32_t>(pixel % 4), static_cast<int32_t>(pixel / 4)),
                  (Pixel{ScriptedSample(frame, 0, pixel), ScriptedSample(frame, 1, pixel),
                         ScriptedSample(frame, 2, pixel), 65535}));
}

TEST_F(VrelFileFormatTest, AFreshObjectTellsItsDefaults) {
    EXPECT_EQ(clip.format.GetAttr(0x100000c8, -1), 0);
    EXPECT_EQ(clip.format.GetAttr(0x100000c9, -1), 0);
    EXPECT_EQ(clip.format.GetAttr(0x100000ca, -1), 0);
    EXPECT_EQ(clip.format.GetAttr(0x100000cb, -1), 0);
    EXPECT_EQ(clip.format.GetAttr(0x200000c8, -1.0), 1.0);
    EXPECT_EQ(clip.format.Context(), nullptr);
    EXPECT_EQ(clip.format.ObjectSize(), sizeof(VrelFileFormat));
}

TEST_F(VrelFileFormatTest, AttributesThatItDoesNotKnowAreTheBases) {
    int32_t integer = 7;
    EXPECT_FALSE(clip.format.CopyAttr(0x100000cc, &integer));
    EXPECT_EQ(integer, 7);
}

TEST_F(VrelFileFormatTest, AHeaderTellsSizeCountAndRate) {
    Script().processedWidth = 20;
    Script().processedHeight = 10;
    Script().frameCount = 77;
    Script().frameRate = 29.97F;
    ASSERT_TRUE(clip.Open());
    EXPECT_EQ(clip.format.GetAttr(0x100000c8, 0), 20);
    EXPECT_EQ(clip.format.GetAttr(0x100000c9, 0), 10);
    EXPECT_EQ(clip.format.GetAttr(0x100000ca, -1), 0);
    EXPECT_EQ(clip.format.GetAttr(0x100000cb, 0), 77);
    EXPECT_EQ(clip.format.GetAttr(0x200000c8, 0.0), static_cast<double>(29.97F));
}

TEST_F(VrelFileFormatTest, AClipWhoseFramesTellNoProcessedSizeHasItsOwnSize) {
    Script().processedWidth = 0;
    Script().processedHeight = 0;
    Script().width = 40;
    Script().height = 30;
    ASSERT_TRUE(clip.Open());
    EXPECT_EQ(clip.format.width, 40);
    EXPECT_EQ(clip.format.height, 30);
}

TEST_F(VrelFileFormatTest, ACountBeyondTheAttributeIsItsLargest) {
    Script().frameCount = 0x100000001;
    ASSERT_TRUE(clip.Open());
    EXPECT_EQ(clip.format.GetAttr(0x100000cb, 0), std::numeric_limits<int32_t>::max());
}

TEST_F(VrelFileFormatTest, ASizeThatTheHostDoesNotHaveLoadsNothing) {
    for (const uint32_t width : {0x80000000U, 0x40000000U}) {
        Script().processedWidth = width;
        ASSERT_TRUE(clip.Open(std::to_string(width)));
        EXPECT_EQ(clip.format.width, static_cast<int32_t>(width));
        Script().processedWidth = 4;
        EXPECT_FALSE(clip.Load(0, MakeImage(4, 2))) << width;
    }
    Image* image = nullptr;
    clip.format.width = -1;
    EXPECT_FALSE(clip.format.LoadFrameTagList(0, image, clip.tags));
    EXPECT_EQ(image, nullptr);
}

TEST_F(VrelFileFormatTest, OnlyTheDataTypeOfPicturesLoads) {
    EXPECT_FALSE(clip.format.LoadHeaderTagList(CxID("DataType_Sound", true), "clip.vrel", clip.tags));
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_TRUE(clip.format.LoadHeaderTagList(CxID(CLSID_DataType_Image, true), "clip.vrel", clip.tags));
}

TEST_F(VrelFileFormatTest, TheFirstHeaderAsksTheSdkStepByStep) {
    ASSERT_TRUE(clip.Open());
    EXPECT_EQ(TakeCalls(), Joined({initializeCalls, configureCalls, clipCalls}));
}

TEST_F(VrelFileFormatTest, ASecondHeaderOfTheSamePathNeitherReopensNorResetsAnything) {
    ASSERT_TRUE(clip.Open());
    TakeCalls();
    Script().width = 40;
    EXPECT_TRUE(clip.Open());
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_EQ(clip.format.width, 4);
    EXPECT_TRUE(clip.Load(0));
}

TEST_F(VrelFileFormatTest, AHeaderOfAnotherPathOpensItOnTheSameContext) {
    ASSERT_TRUE(clip.Open());
    TakeCalls();
    Script().processedHeight = 3;
    ASSERT_TRUE(clip.Open("other.vrel"));
    EXPECT_EQ(TakeCalls(), clipCalls);
    EXPECT_EQ(clip.format.height, 3);
    EXPECT_TRUE(clip.Load(0));
}

TEST_F(VrelFileFormatTest, AHeaderOfAnotherPathKeepsTheOldClipMetadata) {
    Script().clipMetadata = {{u"name", [](VARIANT& value) { value.vt = VT_I2, value.iVal = 1; }}};
    ASSERT_TRUE(clip.Open());
    Script().clipMetadata = {{u"name", [](VARIANT& value) { value.vt = VT_I2, value.iVal = 2; }}};
    ASSERT_TRUE(clip.Open("other.vrel"));
    const ImagePtr image = MakeImage(4, 2);
    ASSERT_TRUE(clip.Load(0, image));
    EXPECT_EQ(MetadataText(*image, "name"), "1");
}

TEST_F(VrelFileFormatTest, APathThatTheOpenContextRefusesIsTriedWithANewOne) {
    ASSERT_TRUE(clip.Open());
    TakeCalls();
    Script().failing["RawCodec.OpenClip"] = 2;
    EXPECT_EQ(WordsOf([&] { EXPECT_TRUE(clip.Open("other.vrel")); }), "Vrel HRESULT = 0x80040002");
    EXPECT_EQ(TakeCalls(), Joined({{"RawCodec.OpenClip", "RawCodec.OpenClip", "RawCodec.SetCallback null"},
                                   initializeCalls,
                                   configureCalls,
                                   clipCalls}));
}

TEST_F(VrelFileFormatTest, AClipThatIsRefusedLeavesTheObjectClosedAndUsable) {
    Script().failing["RawCodec.OpenClip"] = 1000;
    EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(clip.Open()); }), "Vrel HRESULT = 0x80040002");
    EXPECT_EQ(clip.format.Context(), nullptr);
    Script().failing.clear();
    EXPECT_TRUE(clip.Open());
    EXPECT_TRUE(clip.Load(0));
    Script().failing["RawCodec.OpenClip"] = 1000;
    WordsOf([&] { EXPECT_FALSE(clip.Open("other.vrel")); });
    EXPECT_EQ(clip.format.Context(), nullptr);
    Script().failing.clear();
    EXPECT_TRUE(clip.Open());
}

TEST_F(VrelFileFormatTest, AClipWhoseFirstFrameFailsIsClosed) {
    Script().hasFrame = false;
    EXPECT_FALSE(clip.Open());
    EXPECT_EQ(clip.format.Context(), nullptr);
}

TEST_F(VrelFileFormatTest, WithoutAFactoryTheHeaderFails) {
    Script().hasFactory = false;
    EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(clip.Open()); }), "Vrel NULL pointerVrel NULL pointer");
}

TEST_F(VrelFileFormatTest, ANullPathFails) {
    EXPECT_FALSE(clip.format.LoadHeaderTagList(nullptr, clip.tags));
    EXPECT_FALSE(clip.format.OpenFile(nullptr, clip.tags));
}

TEST_F(VrelFileFormatTest, ThePathsFormDoesNotMatter) {
    EXPECT_TRUE(clip.Open("noextension"));
    EXPECT_EQ(Script().lastText, "noextension");
}

TEST_F(VrelFileFormatTest, ClosingReleasesEverythingAndMayBeRepeated) {
    ASSERT_TRUE(clip.Open());
    TakeCalls();
    EXPECT_TRUE(clip.format.CloseFile());
    EXPECT_EQ(TakeCalls(), Calls{"RawCodec.SetCallback null"});
    EXPECT_EQ(Script().objects, 0);
    EXPECT_TRUE(clip.format.CloseFile());
    EXPECT_EQ(clip.format.width, 4);
    EXPECT_FALSE(clip.Load(0));
    ASSERT_TRUE(clip.Open());
    EXPECT_TRUE(clip.Load(0));
}

TEST_F(VrelFileFormatTest, ItHasNoControls) {
    clip.format.AddLoadInputs(nullptr);
    clip.format.NotifyChangedLoad(nullptr, nullptr, nullptr, 0.0);
    clip.format.SetupLoad(nullptr, nullptr);
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(VrelFileFormatTest, AFrameIsReadForItsMetadataAndThenDecoded) {
    ASSERT_TRUE(clip.Open());
    TakeCalls();
    ASSERT_TRUE(clip.Load(2));
    EXPECT_EQ(TakeCalls(), Joined({MetadataCalls(2), DecodeCalls(2)}));
}

TEST_F(VrelFileFormatTest, FramesReachTheImageInAnyOrder) {
    Script().finish = Finish::OnThread;
    ASSERT_TRUE(clip.Open());
    for (const uint32_t frame : {2, 0, 1, 1, 2}) {
        const ImagePtr image = MakeImage(4, 2);
        ASSERT_TRUE(clip.Load(frame, image));
        ExpectFrame(*image, frame);
    }
}

TEST_F(VrelFileFormatTest, TheBaseMakesAnImageWhereThereIsNone) {
    ASSERT_TRUE(clip.Open());
    Image* image = nullptr;
    ASSERT_TRUE(clip.format.LoadFrameTagList(1, image, clip.tags));
    ExpectFrame(*image, 1);
    Image::Free(image);
}

TEST_F(VrelFileFormatTest, AnImagePreparationOf0ReachesTheBaseAs3) {
    ASSERT_TRUE(clip.Open());
    clip.tags.Set(0x100000d0, 0, false);
    EXPECT_TRUE(clip.Load(2));
    EXPECT_EQ(BaseFormatSpy::frame, 2U);
    EXPECT_EQ(BaseFormatSpy::tags.GetLong(0x100000d0, -1), 3);
    EXPECT_EQ(clip.tags.GetLong(0x100000d0, -1), 0) << "the caller's list stays";
}

TEST_F(VrelFileFormatTest, AnyOtherImagePreparationReachesTheBaseAsItIs) {
    ASSERT_TRUE(clip.Open());
    EXPECT_TRUE(clip.Load(0));
    EXPECT_FALSE(BaseFormatSpy::tags.FindQuery(0x100000d0));
    clip.tags.Set(0x100000d0, 2, false);
    EXPECT_TRUE(clip.Load(0));
    EXPECT_EQ(BaseFormatSpy::tags.GetLong(0x100000d0, -1), 2);
}

TEST_F(VrelFileFormatTest, AFrameThatTheBaseRefusesHasItsMetadataAndIsNotDecoded) {
    Script().clipMetadata = {{u"name", [](VARIANT& value) { value.vt = VT_I2, value.iVal = 1; }}};
    ASSERT_TRUE(clip.Open());
    const ImagePtr image = MakeImage(4, 2);
    TakeCalls();
    BaseFormatSpy::isRefusing = true;
    EXPECT_FALSE(clip.Load(1, image));
    BaseFormatSpy::isRefusing = false;
    EXPECT_EQ(TakeCalls(), MetadataCalls(1));
    EXPECT_EQ(MetadataText(*image, "TimeCode"), "01:00:00:01");
}

TEST_F(VrelFileFormatTest, AClipThatWasReleasedOpensAgainWithTheNextFrame) {
    ASSERT_TRUE(clip.Open());
    clip.format.Context()->ReleaseClip();
    TakeCalls();
    const ImagePtr image = MakeImage(4, 2);
    ASSERT_TRUE(clip.Load(1, image));
    ExpectFrame(*image, 1);
    EXPECT_EQ(TakeCalls(), Joined({clipCalls, MetadataCalls(1), DecodeCalls(1)}));
    EXPECT_EQ(Script().lastText, "clip.vrel");
}

TEST_F(VrelFileFormatTest, AFrameThatFailsGivesFalseAndTheNextOneLoads) {
    ASSERT_TRUE(clip.Open());
    Script().decodeResults = {E_FAIL, E_FAIL};
    EXPECT_EQ(WordsOf([&] { EXPECT_FALSE(clip.Load(0)); }), "Vrel (WaitForDecodeJob) HRESULT = 0x80004005");
    EXPECT_TRUE(clip.Load(0));
}

TEST_F(VrelFileFormatTest, WithoutAClipNothingLoads) {
    clip.format.width = 4;
    clip.format.height = 2;
    const ImagePtr image = MakeImage(4, 2);
    EXPECT_FALSE(clip.Load(0, image));
    EXPECT_FALSE(image->ImageInfo.IsTable());
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(VrelFileFormatTest, AnImageOfAnotherHeightFails) {
    ASSERT_TRUE(clip.Open());
    for (const int32_t height : {1, 3}) {
        const ImagePtr image = MakeImage(4, height);
        EXPECT_FALSE(clip.Load(0, image)) << height;
        EXPECT_EQ(PixelAtTop(*image, 0, 0), (Pixel{0, 0, 0, 0})) << height;
    }
}

TEST_F(VrelFileFormatTest, AnImageThatIsWiderFailsAndANarrowerOneIsCut) {
    ASSERT_TRUE(clip.Open());
    EXPECT_FALSE(clip.Load(0, MakeImage(5, 2)));
    const ImagePtr narrow = MakeImage(3, 2);
    EXPECT_TRUE(clip.Load(0, narrow));
    EXPECT_EQ(PixelAtTop(*narrow, 2, 1).R, ScriptedSample(0, 0, 6));
}

TEST_F(VrelFileFormatTest, AFrameWithFewerBytesThanItsImageNeedsFails) {
    ASSERT_TRUE(clip.Open());
    Script().processedSize = 47;
    EXPECT_FALSE(clip.Load(0));
    Script().processedSize = 48;
    EXPECT_TRUE(clip.Load(0));
}

TEST_F(VrelFileFormatTest, AFrameThatIsSmallerThanTheHeaderToldFailsAndTheNextOneLoads) {
    ASSERT_TRUE(clip.Open());
    Script().processedWidth = 1;
    Script().processedHeight = 1;
    EXPECT_FALSE(clip.Load(0));
    Script().processedWidth = 4;
    Script().processedHeight = 2;
    EXPECT_TRUE(clip.Load(0));
}

TEST_F(VrelFileFormatTest, AFrameThatIsLargerThanTheHeaderToldIsReadAsTheHeadersSize) {
    ASSERT_TRUE(clip.Open());
    Script().processedWidth = 8;
    Script().processedHeight = 4;
    const ImagePtr image = MakeImage(4, 2);
    EXPECT_TRUE(clip.Load(0, image));
    // The planes are taken to be as far apart as those of the header's size.
    EXPECT_EQ(PixelAtTop(*image, 3, 1),
              (Pixel{ScriptedSample(0, 0, 7), ScriptedSample(0, 0, 15), ScriptedSample(0, 0, 23), 65535}));
}

TEST_F(VrelFileFormatTest, AHundredFramesAndTwentyClipsLeaveNothingBehind) {
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(clip.Open(std::to_string(i)));
        for (uint32_t frame = 0; frame < 5; ++frame)
            ASSERT_TRUE(clip.Load(frame % 3));
    }
    clip.format.CloseFile();
    EXPECT_EQ(Script().objects, 0);
}

} // namespace
