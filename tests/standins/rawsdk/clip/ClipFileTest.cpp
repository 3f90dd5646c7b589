#include "rawsdk/clip/ClipFile.h"

#include "rawsdk/clip/ClipWriter.h"
#include "rawsdk/clip/Failure.h"
#include "rawsdk/clip/StripCodec.h"
#include "standins/rawsdk/clip/TestClips.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

using namespace rawsdk;

HRESULT OpeningResult(const std::string& path) {
    try {
        const ClipFile clip(path);
        return S_OK;
    } catch (const Failure& failure) {
        return failure.result;
    }
}

TEST(ClipFile, TellsWhatWasWritten) {
    const TestFolder folder;
    ClipProperties properties = TestClip(20, 70);
    properties.frameRate = 23.976f;
    properties.camera = "Camera \u20ac";
    properties.settings.contrast = 1.25f;
    properties.metadata = {{u"take", NumberValue(int32_t{5})}};
    WriteTestClip(folder / "a.vrel", properties, 3);

    const ClipFile clip(folder / "a.vrel");
    EXPECT_EQ(clip.Clip().width, 20u);
    EXPECT_EQ(clip.Clip().height, 70u);
    EXPECT_EQ(clip.Clip().frameRate, 23.976f);
    EXPECT_EQ(clip.Clip().camera, "Camera \u20ac");
    EXPECT_EQ(clip.Clip().settings.contrast, 1.25f);
    ASSERT_EQ(clip.Clip().metadata.size(), 1u);
    EXPECT_EQ(clip.Clip().metadata[0].key, u"take");
    EXPECT_EQ(clip.FrameCount(), 3u);
}

TEST(ClipFile, GivesFramesInAnyOrder) {
    const TestFolder folder;
    WriteTestClip(folder / "a.vrel", TestClip(21, 130), 3);
    const ClipFile clip(folder / "a.vrel");
    std::vector<uint8_t> buffer(clip.BitstreamBound());
    for (const uint64_t frame : {2, 0, 1, 2}) {
        const FrameRecord record = clip.Read(frame, buffer);
        EXPECT_EQ(record.settings.iso, static_cast<int16_t>(100 * (frame + 1)));
        ASSERT_EQ(record.strips.size(), 3u);
        EXPECT_EQ(SamplesOf(record, 21, 130), TestSamples(21, 130, static_cast<uint32_t>(frame)));
    }
}

TEST(ClipFile, KeepsFrameMetadataAndTimecodes) {
    const TestFolder folder;
    ClipWriter writer(folder / "a.vrel", TestClip(8, 8));
    writer.Add({{}, {{u"lens", TextValue(u"50 mm")}}, 0x01020304}, TestSamples(8, 8, 0));
    writer.Add({}, TestSamples(8, 8, 1));
    writer.Finish();
    const ClipFile clip(folder / "a.vrel");
    EXPECT_EQ(clip.Timecode(0), 0x01020304u);
    EXPECT_EQ(clip.Timecode(1), noTimecode);
    std::vector<uint8_t> buffer(clip.BitstreamBound());
    EXPECT_EQ(clip.Read(0, buffer).metadata.at(0).key, u"lens");
    EXPECT_TRUE(clip.Read(1, buffer).metadata.empty());
}

TEST(ClipFile, MayHaveNoFrames) {
    const TestFolder folder;
    WriteTestClip(folder / "a.vrel", TestClip(8, 8), 0);
    const ClipFile clip(folder / "a.vrel");
    EXPECT_EQ(clip.FrameCount(), 0u);
    EXPECT_EQ(clip.BitstreamBound(), 0u);
}

TEST(ClipFile, HasNoFrameBehindTheLast) {
    const TestFolder folder;
    WriteTestClip(folder / "a.vrel", TestClip(8, 8), 2);
    const ClipFile clip(folder / "a.vrel");
    std::vector<uint8_t> buffer(clip.BitstreamBound());
    EXPECT_THROW(clip.Read(2, buffer), Failure);
    EXPECT_THROW(clip.Read(UINT64_MAX, buffer), Failure);
}

TEST(ClipFile, ReadsNoFrameIntoABufferThatIsTooSmall) {
    const TestFolder folder;
    WriteTestClip(folder / "a.vrel", TestClip(8, 8), 1);
    const ClipFile clip(folder / "a.vrel");
    std::vector<uint8_t> buffer(clip.BitstreamBound() - 1);
    EXPECT_THROW(clip.Read(0, buffer), Failure);
}

TEST(ClipFile, HasTheTablesThatAreInItAndBesideIt) {
    const TestFolder folder;
    ClipProperties properties = TestClip(8, 8);
    WriteTestClip(folder / "none.vrel", properties, 1);
    properties.table = TestTable(3);
    WriteTestClip(folder / "both.vrel", properties, 1);
    std::ofstream(folder / "both.cube") << "LUT_3D_SIZE 2\n0 0 0\n1 0 0\n0 1 0\n1 1 0\n"
                                           "0 0 1\n1 0 1\n0 1 1\n1 1 1\n";

    const ClipFile none(folder / "none.vrel");
    EXPECT_EQ(none.Table(lutEmbedded), nullptr);
    EXPECT_EQ(none.Table(lutSidecar), nullptr);
    const ClipFile both(folder / "both.vrel");
    ASSERT_NE(both.Table(lutEmbedded), nullptr);
    EXPECT_EQ(both.Table(lutEmbedded)->size, 3u);
    ASSERT_NE(both.Table(lutSidecar), nullptr);
    EXPECT_EQ(both.Table(lutSidecar)->size, 2u);
    EXPECT_EQ(both.Table(lutDisabled), nullptr);
}

TEST(ClipFile, LeavesOutADamagedTableBesideIt) {
    const TestFolder folder;
    WriteTestClip(folder / "a.vrel", TestClip(8, 8), 1);
    std::ofstream(folder / "a.cube") << "LUT_3D_SIZE 2\n0 0 0\n";
    EXPECT_EQ(ClipFile(folder / "a.vrel").Table(lutSidecar), nullptr);
}

TEST(ClipFile, IsNotFoundWhereThereIsNoFile) {
    const TestFolder folder;
    EXPECT_EQ(OpeningResult(folder / "a.vrel"), clipNotFound);
    EXPECT_EQ(OpeningResult(folder / ""), clipNotFound);
    EXPECT_EQ(OpeningResult(""), clipNotFound);
}

TEST(ClipFile, IsDamagedUntilItIsFinished) {
    const TestFolder folder;
    ClipWriter writer(folder / "a.vrel", TestClip(8, 8));
    writer.Add({}, TestSamples(8, 8, 0));
    EXPECT_EQ(OpeningResult(folder / "a.vrel"), damagedClip);
    writer.Finish();
    EXPECT_EQ(OpeningResult(folder / "a.vrel"), S_OK);
}

TEST(ClipWriter, RefusesSizesThatPicturesDoNotHave) {
    const TestFolder folder;
    for (const auto& [width, height] : {std::pair{0u, 8u}, {8u, 3u}, {16385u, 8u}, {16384u, 16384u}})
        EXPECT_THROW(ClipWriter(folder / "a.vrel", TestClip(width, height)), Failure);
}

TEST(ClipWriter, RefusesAnotherNumberOfSamples) {
    const TestFolder folder;
    ClipWriter writer(folder / "a.vrel", TestClip(8, 8));
    EXPECT_THROW(writer.Add({}, TestSamples(8, 7, 0)), Failure);
    EXPECT_THROW(writer.Add({}, TestSamples(8, 9, 0)), Failure);
}

TEST(ClipWriter, SaysIfItCannotWrite) {
    const TestFolder folder;
    EXPECT_THROW(ClipWriter(folder / "no/folder.vrel", TestClip(8, 8)), Failure);
}

TEST(Timecode, IsWrittenWithItsKindOfCounting) {
    EXPECT_EQ(TimecodeText(0x10203004), "10:20:30:04");
    EXPECT_EQ(TimecodeText(0x01595969), "01:59:59;29");
    EXPECT_EQ(TimecodeText(0), "00:00:00:00");
    EXPECT_EQ(TimecodeText(noTimecode), "");
}

} // namespace
