// Loading frames: what is read on, what is sought, and what the cache gives.

#include "ffmpeg/BaseFormatSpy.h"
#include "ffmpeg/FormatTestSupport.h"
#include "pixel/PixelTestSupport.h"

#include <numeric>

namespace {

using CxFFMPEG::FFMPEGFileFormats;

/// A movie on the disk, and a format object that has loaded its header.
class FFMPEGFileFormatsLoad : public testing::Test {
protected:
    const Workspace workspace;
    const std::string movie = WriteMovie(workspace, "movie.mp4", GreyTrack());
    LoadedFormat loaded{movie};
};

/// Loads the frames in an order, and expects each to be the right one.
void ExpectFrames(LoadedFormat& loaded, const std::vector<int32_t>& order) {
    for (const int32_t frame : order)
        EXPECT_EQ(loaded.Load(static_cast<uint32_t>(frame)), frame);
}

std::vector<int32_t> Forward() {
    std::vector<int32_t> order(24);
    std::iota(order.begin(), order.end(), 0);
    return order;
}

TEST_F(FFMPEGFileFormatsLoad, PlaybackSeeksOnce) {
    const SoughtPlaces sought;
    ExpectFrames(loaded, Forward());
    EXPECT_EQ(SoughtPlaces::all, (std::vector<SoughtPlaces::Place>{{0, 0, AVSEEK_FLAG_BACKWARD}}));
}

TEST_F(FFMPEGFileFormatsLoad, PlaybackSeeksOnceWhereTimesAreRounded) {
    for (const char* const name : {"coarse.mkv", "coarse.flv"}) {
        LoadedFormat coarse(WriteMovie(workspace, name, GreyTrack(), {.rate = {24000, 1001}}));
        const SoughtPlaces sought;
        ExpectFrames(coarse, Forward());
        EXPECT_EQ(SoughtPlaces::Count(), 1) << name;
    }
}

TEST_F(FFMPEGFileFormatsLoad, PlaybackOfATransportStreamSeeksForItsFirstFrameOnly) {
    LoadedFormat stream(WriteMovie(workspace, "movie.mts", GreyStreamTrack(), {.rate = {24000, 1001}}));
    ExpectFrames(stream, {0});
    const SoughtPlaces sought;
    ExpectFrames(stream, Forward());
    EXPECT_LE(SoughtPlaces::Count(), 2) << "frame 0 is sought again";
}

TEST_F(FFMPEGFileFormatsLoad, PlaybackGoesOnFromAFrameThatWasSought) {
    ExpectFrames(loaded, {9});
    const SoughtPlaces sought;
    ExpectFrames(loaded, {10, 11, 12, 13});
    EXPECT_EQ(SoughtPlaces::Count(), 0);
}

TEST_F(FFMPEGFileFormatsLoad, AnyOtherFrameIsSoughtAtItsTime) {
    ExpectFrames(loaded, {3});
    const SoughtPlaces sought;
    ExpectFrames(loaded, {20});
    EXPECT_EQ(SoughtPlaces::all,
              (std::vector<SoughtPlaces::Place>{{0, loaded.format.FrameToTime(20), AVSEEK_FLAG_BACKWARD}}));
}

TEST_F(FFMPEGFileFormatsLoad, EveryFrameComesInAnyOrder) {
    std::mt19937 random = MakeRandom();
    std::vector<int32_t> order = Forward();
    for (int i = 0; i < 3; ++i) {
        std::shuffle(order.begin(), order.end(), random);
        ExpectFrames(loaded, order);
    }
    std::ranges::sort(order, std::greater<>());
    ExpectFrames(loaded, order);
}

TEST_F(FFMPEGFileFormatsLoad, AFrameThatWasDecodedOnTheWayIsACacheHitEveryTime) {
    ExpectFrames(loaded, {8});
    const SoughtPlaces sought;
    ExpectFrames(loaded, {5, 5, 7, 0, 5});
    EXPECT_EQ(SoughtPlaces::Count(), 0);
}

TEST_F(FFMPEGFileFormatsLoad, AFrameThatWasGivenIsNotCachedAndSoughtTheSecondTime) {
    ExpectFrames(loaded, {8});
    const SoughtPlaces sought;
    ExpectFrames(loaded, {8});
    EXPECT_EQ(SoughtPlaces::Count(), 1);
}

TEST_F(FFMPEGFileFormatsLoad, CacheHitsDoNotMoveTheDecoder) {
    ExpectFrames(loaded, {8});
    const SoughtPlaces sought;
    ExpectFrames(loaded, {2, 9, 3, 10});
    EXPECT_EQ(SoughtPlaces::Count(), 0);
}

TEST_F(FFMPEGFileFormatsLoad, ASeekForgetsTheCachedFrames) {
    ExpectFrames(loaded, {8, 20});
    const SoughtPlaces sought;
    ExpectFrames(loaded, {5});
    EXPECT_EQ(SoughtPlaces::Count(), 1);
}

TEST_F(FFMPEGFileFormatsLoad, TheStreamNeedNotBeTheFirstOne) {
    LoadedFormat second(WriteMovie(workspace, "second.mov", GreyTrack(), {.soundStreams = 1}));
    const SoughtPlaces sought;
    ExpectFrames(second, Forward());
    EXPECT_EQ(SoughtPlaces::all, (std::vector<SoughtPlaces::Place>{{1, 0, AVSEEK_FLAG_BACKWARD}}));
    EXPECT_EQ(second.Load(24), -1) << "the end of the file ends the search too";
    ExpectFrames(second, {23, 0});
}

TEST_F(FFMPEGFileFormatsLoad, AFramePastTheEndFailsAndLeavesTheImage) {
    const ImagePtr image = MakeImage(64, 48);
    SetPixelAt(*image, 5, 5, Pixel{1, 2, 3, 4});
    const std::vector<uint8_t> before = PixelBytes(*image, ImageData_RGBA16);
    Image* target = image.get();
    for (const uint32_t frame : {24U, 30U, 1000U, 0x7fffffffU}) {
        EXPECT_FALSE(loaded.format.LoadFrameTagList(frame, target, loaded.tags)) << frame;
        EXPECT_EQ(PixelBytes(*image, ImageData_RGBA16), before);
    }
    ExpectFrames(loaded, {23, 0, 1});
}

TEST_F(FFMPEGFileFormatsLoad, ANumberThatNoFrameHasIsNotSought) {
    const SoughtPlaces sought;
    EXPECT_EQ(loaded.Load(0x80000000U), -1);
    EXPECT_EQ(loaded.Load(0xffffffffU), -1);
    EXPECT_EQ(SoughtPlaces::Count(), 0);
}

TEST_F(FFMPEGFileFormatsLoad, AnImageIsMadeWhereThereIsNone) {
    Image* image = nullptr;
    ASSERT_TRUE(loaded.format.LoadFrameTagList(4, image, loaded.tags));
    EXPECT_EQ(image->Width, 64);
    EXPECT_EQ(image->Height, 48);
    EXPECT_EQ(FrameOfImage(*image), 4);
    Image::Free(image);
}

TEST_F(FFMPEGFileFormatsLoad, AnImageOf8BitsIsFilledToo) {
    const ImagePtr image = MakeImage(64, 48, ImageData_RGBA8);
    Image* target = image.get();
    ASSERT_TRUE(loaded.format.LoadFrameTagList(19, target, loaded.tags));
    EXPECT_EQ(target, image.get());
    EXPECT_EQ(FrameOfImage(*image), 19);
}

TEST_F(FFMPEGFileFormatsLoad, TheMetadataNameTheDecoder) {
    const ImagePtr image = MakeImage(64, 48);
    Image* target = image.get();
    ASSERT_TRUE(loaded.format.LoadFrameTagList(0, target, loaded.tags));
    EXPECT_EQ(MetadataOf(*image, "Decoder"), "FFmpeg");
    EXPECT_NE(MetadataOf(*image, "Compression"), "(none)");
    EXPECT_EQ(MetadataOf(*image, "FrameFormat"), "yuv420p");
}

TEST_F(FFMPEGFileFormatsLoad, TheMetadataNameTheDecoderOfAFrameThatFailsToo) {
    const ImagePtr image = MakeImage(64, 48);
    Image* target = image.get();
    EXPECT_FALSE(loaded.format.LoadFrameTagList(99, target, loaded.tags));
    EXPECT_EQ(MetadataOf(*image, "Decoder"), "FFmpeg");
}

TEST_F(FFMPEGFileFormatsLoad, AnImagePreparationOf0ReachesTheBaseAs3) {
    loaded.tags.Set(0x100000d0, 0, false);
    ExpectFrames(loaded, {2});
    EXPECT_EQ(BaseFormatSpy::frame, 2U);
    EXPECT_EQ(BaseFormatSpy::tags.GetLong(0x100000d0, -1), 3);
    EXPECT_EQ(loaded.tags.GetLong(0x100000d0, -1), 0) << "the caller's list stays";
}

TEST_F(FFMPEGFileFormatsLoad, AnyOtherImagePreparationReachesTheBaseAsItIs) {
    ExpectFrames(loaded, {2});
    EXPECT_FALSE(BaseFormatSpy::tags.FindQuery(0x100000d0));
    loaded.tags.Set(0x100000d0, 2, false);
    ExpectFrames(loaded, {3});
    EXPECT_EQ(BaseFormatSpy::tags.GetLong(0x100000d0, -1), 2);
}

TEST_F(FFMPEGFileFormatsLoad, OtherTagsReachTheBaseToo) {
    loaded.tags.Set(FormatTag_DataKind, static_cast<int>(ImageData_RGBAFloat), false);
    Image* image = nullptr;
    ASSERT_TRUE(loaded.format.LoadFrameTagList(1, image, loaded.tags));
    EXPECT_EQ(image->DataFormat->Kind, ImageData_RGBAFloat);
    EXPECT_EQ(FrameOfImage(*image), 1);
    Image::Free(image);
}

TEST_F(FFMPEGFileFormatsLoad, NothingIsDecodedIfTheBaseRefuses) {
    BaseFormatSpy::isRefusing = true;
    const SoughtPlaces sought;
    EXPECT_EQ(loaded.Load(0), -1);
    EXPECT_EQ(SoughtPlaces::Count(), 0);
    BaseFormatSpy::isRefusing = false;
    ExpectFrames(loaded, {0});
}

TEST_F(FFMPEGFileFormatsLoad, AFailedSeekIsSaidInTheConsole) {
    std::vector<std::pair<EventConsoleSubID, std::string>> console;
    CorvexDoc::SetConsoleHook(
        [&](EventConsoleSubID level, const std::string& text) { console.emplace_back(level, text); });
    {
        const SoughtPlaces sought;
        SoughtPlaces::isFailing = true;
        EXPECT_EQ(loaded.Load(0), -1);
        EXPECT_EQ(SoughtPlaces::Count(), 1);
    }
    CorvexDoc::SetConsoleHook({});
    ASSERT_EQ(console.size(), 1U);
    EXPECT_EQ(console[0].first, 60);
    EXPECT_EQ(console[0].second, "Seeking failed\n");
}

TEST_F(FFMPEGFileFormatsLoad, AfterAFailedSeekTheNextFrameIsSought) {
    ExpectFrames(loaded, {5});
    CorvexDoc::SetConsoleHook([](EventConsoleSubID, const std::string&) {});
    const SoughtPlaces sought;
    SoughtPlaces::isFailing = true;
    EXPECT_EQ(loaded.Load(20), -1);
    CorvexDoc::SetConsoleHook({});
    SoughtPlaces::isFailing = false;
    ExpectFrames(loaded, {6});
    EXPECT_EQ(SoughtPlaces::Count(), 2);
}

} // namespace
