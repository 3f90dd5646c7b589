// Where a movie starts, how many frames it has, and frames that a file doesn't lead to at once.

#include "ffmpeg/FormatTestSupport.h"

#include <numeric>

namespace {

constexpr int64_t farFrame = 0x20000000;

class FFMPEGFileFormatsTimes : public testing::Test {
protected:
    const Workspace workspace;
};

/// Expects every frame to be the right one when it is sought, and when it follows the one before it.
void ExpectEveryFrame(LoadedFormat& loaded, int32_t count) {
    std::mt19937 random = MakeRandom();
    std::vector<int32_t> order(static_cast<size_t>(count));
    std::iota(order.begin(), order.end(), 0);
    for (const int32_t frame : order)
        EXPECT_EQ(loaded.Load(static_cast<uint32_t>(frame)), frame % 24);
    std::shuffle(order.begin(), order.end(), random);
    for (const int32_t sought : order)
        for (const int32_t frame : {sought, std::min(sought + 1, count - 1)})
            EXPECT_EQ(loaded.Load(static_cast<uint32_t>(frame)), frame % 24)
                << frame << ", sought " << sought;
}

TEST_F(FFMPEGFileFormatsTimes, FrameZeroIsAtTheStreamsStartTime) {
    LoadedFormat loaded(WriteMovie(workspace, "late.mkv", GreyTrack(), {.firstFrame = 25}));
    EXPECT_EQ(loaded.format.FrameToTime(0), 1000);
    EXPECT_EQ(loaded.format.TimeToFrame(1000), 0);
    EXPECT_EQ(loaded.Count(), 24);
    ExpectEveryFrame(loaded, 24);
}

TEST_F(FFMPEGFileFormatsTimes, AFrameOf2997InA30000thLasts1001Units) {
    LoadedFormat loaded(WriteMovie(workspace, "ntsc.mov", GreyTrack(), {.rate = {30000, 1001}}));
    const int64_t start = loaded.format.FrameToTime(0);
    EXPECT_EQ(loaded.format.FrameToTime(1) - start, 1001);
    EXPECT_EQ(loaded.format.TimeToFrame(start + 500), 0);
    EXPECT_EQ(loaded.format.TimeToFrame(start + 501), 1);
}

TEST_F(FFMPEGFileFormatsTimes, WithoutAStartTimeTheFirstPacketTellsIt) {
    const std::string movie = WriteMovie(workspace, "late.mkv", GreyTrack(), {.firstFrame = 25});
    const ChangedStreams changed([](AVStream& stream) { stream.start_time = AV_NOPTS_VALUE; });
    const SoughtPlaces sought;
    LoadedFormat loaded(movie);
    EXPECT_EQ(loaded.format.FrameToTime(0), 1000);
    ASSERT_FALSE(SoughtPlaces::all.empty());
    EXPECT_EQ(SoughtPlaces::all[0], (SoughtPlaces::Place{0, 0, 0}));
    EXPECT_EQ(loaded.Load(0), 0);
}

TEST_F(FFMPEGFileFormatsTimes, WithoutAnyTimeTheStartIs0) {
    const std::string movie = WriteMovie(workspace, "late.mp4", GreyTrack(), {.firstFrame = 25});
    const ChangedStreams changed([](AVStream& stream) { stream.start_time = AV_NOPTS_VALUE; });
    LoadedFormat withoutTimes;
    {
        const ChangedPackets packets([](AVPacket& packet) {
            packet.pts = AV_NOPTS_VALUE;
            return 0;
        });
        EXPECT_TRUE(withoutTimes.Open(movie));
    }
    EXPECT_EQ(withoutTimes.format.FrameToTime(0), 0);
    LoadedFormat withoutSeek;
    const SoughtPlaces sought;
    SoughtPlaces::isFailing = true;
    EXPECT_TRUE(withoutSeek.Open(movie));
    EXPECT_EQ(withoutSeek.format.FrameToTime(0), 0);
}

TEST_F(FFMPEGFileFormatsTimes, TheContainersNumberOfFramesCounts) {
    const std::string movie = WriteMovie(workspace, "movie.mp4", GreyTrack());
    const ChangedStreams changed([](AVStream& stream) { stream.nb_frames = 1; });
    EXPECT_EQ(LoadedFormat(movie).Count(), 1);
    const ChangedStreams endless([](AVStream& stream) { stream.nb_frames = int64_t{1} << 40; });
    EXPECT_EQ(LoadedFormat(movie).Count(), std::numeric_limits<int32_t>::max());
}

TEST_F(FFMPEGFileFormatsTimes, WithoutANumberOfFramesTheDurationCounts) {
    const std::string movie = WriteMovie(workspace, "movie.mkv", GreyTrack());
    const ChangedStreams changed([](AVStream& stream) { stream.duration = 400; });
    EXPECT_EQ(LoadedFormat(movie).Count(), 10);
}

TEST_F(FFMPEGFileFormatsTimes, ADurationThatIsNotAboveZeroIn32BitsDoesNotCount) {
    const std::string movie = WriteMovie(workspace, "movie.mkv", GreyTrack());
    for (const auto change :
         {+[](AVStream& stream) { stream.duration = -400; }, +[](AVStream& stream) { stream.duration = 0; },
          +[](AVStream& stream) { stream.duration = int64_t{1} << 32; },
          +[](AVStream& stream) { stream.duration = int64_t{1} << 31; }}) {
        const ChangedStreams changed(change);
        EXPECT_EQ(LoadedFormat(movie).Count(), 24);
    }
}

TEST_F(FFMPEGFileFormatsTimes, ADurationOfNoFrameDoesNotCount) {
    const std::string movie = WriteMovie(workspace, "movie.mkv", GreyTrack());
    const ChangedStreams changed([](AVStream& stream) { stream.duration = 19; });
    EXPECT_EQ(LoadedFormat(movie).Count(), 24);
}

TEST_F(FFMPEGFileFormatsTimes, ADurationInRoundedUnitsCountsEveryFrame) {
    const EncodedTrack track({.frames = 50, .groupLength = 12, .bFrames = 2, .hasConfiguration = false});
    LoadedFormat loaded(WriteMovie(workspace, "movie.mts", track, {.rate = {24000, 1001}}));
    EXPECT_EQ(loaded.Count(), 50);
}

TEST_F(FFMPEGFileFormatsTimes, WithoutEitherTheLastTimeFromTheFarEndOnCounts) {
    const std::string movie = WriteMovie(workspace, "movie.mkv", GreyTrack(), {.isIndexed = false});
    const SoughtPlaces sought;
    LoadedFormat loaded(movie);
    EXPECT_EQ(loaded.Count(), 24);
    EXPECT_EQ(SoughtPlaces::all, (std::vector<SoughtPlaces::Place>{
                                     {0, loaded.format.FrameToTime(farFrame), AVSEEK_FLAG_BACKWARD}}));
}

TEST_F(FFMPEGFileFormatsTimes, WhereTheFarEndHasNoPacketsAllOfThemCount) {
    LoadedFormat loaded(WriteMovie(workspace, "movie.flv", GreyTrack()));
    EXPECT_EQ(loaded.Count(), 24);
    ExpectEveryFrame(loaded, 24);
}

TEST_F(FFMPEGFileFormatsTimes, AnEndThatCantBeSoughtIsReadUpTo) {
    const std::string movie = WriteMovie(workspace, "movie.mkv", GreyTrack());
    const SoughtPlaces sought;
    SoughtPlaces::isFailing = true;
    EXPECT_EQ(LoadedFormat(movie).Count(), 24);
}

TEST_F(FFMPEGFileFormatsTimes, WithoutAPacketTheCountIs1) {
    const std::string movie = WriteMovie(workspace, "movie.mkv", GreyTrack());
    const ChangedPackets noPackets([](AVPacket&) { return AVERROR_EOF; });
    EXPECT_EQ(LoadedFormat(movie).Count(), 1);
}

TEST_F(FFMPEGFileFormatsTimes, PacketsWithoutATimeDoNotCount) {
    const std::string movie = WriteMovie(workspace, "movie.mkv", GreyTrack());
    const ChangedPackets packets([](AVPacket& packet) {
        if (packet.pts > 400) packet.pts = AV_NOPTS_VALUE;
        return 0;
    });
    EXPECT_EQ(LoadedFormat(movie).Count(), 11);
}

TEST_F(FFMPEGFileFormatsTimes, AFrameBeforeTheStartMovesTheStart) {
    const std::string movie = WriteMovie(workspace, "late.mkv", GreyTrack(), {.firstFrame = 25});
    const ChangedStreams changed([](AVStream& stream) { stream.start_time = 1120; });
    LoadedFormat loaded(movie);
    EXPECT_EQ(loaded.format.FrameToTime(0), 1120);
    const int32_t count = loaded.Count();
    // The first frame that is decoded shows the true start, and the numbers are right from then on.
    EXPECT_EQ(loaded.Load(2), 2);
    EXPECT_EQ(loaded.format.FrameToTime(0), 1000);
    EXPECT_EQ(loaded.Count(), count);
    ExpectEveryFrame(loaded, 24);
}

TEST_F(FFMPEGFileFormatsTimes, AFrameAtZeroDoesNotMoveTheStart) {
    const std::string movie = WriteMovie(workspace, "movie.mkv", GreyTrack());
    const ChangedStreams changed([](AVStream& stream) { stream.start_time = 40; });
    LoadedFormat loaded(movie);
    EXPECT_EQ(loaded.Load(0), 1);
    EXPECT_EQ(loaded.format.FrameToTime(0), 40);
}

TEST_F(FFMPEGFileFormatsTimes, FramesThatWereCachedBeforeTheStartMovedAreForgotten) {
    const EncodedTrack oneGroup({.frames = 24});
    LoadedFormat loaded(WriteMovie(workspace, "late.mkv", oneGroup, {.firstFrame = 25}));
    // The third picture comes to lie before the first.
    const ChangedPackets moved([](AVPacket& packet) {
        if (packet.pts == 1080) packet.pts = packet.dts = 960;
        return 0;
    });
    EXPECT_EQ(loaded.Load(5), 4);
    EXPECT_EQ(loaded.format.FrameToTime(0), 960);
    EXPECT_EQ(loaded.Load(1), 0);
}

TEST_F(FFMPEGFileFormatsTimes, EveryFrameOfATransportStreamIsFound) {
    for (const char* const name : {"movie.mts", "movie.m2ts"}) {
        LoadedFormat loaded(WriteMovie(workspace, name, GreyStreamTrack(), {.rate = {24000, 1001}}));
        ExpectEveryFrame(loaded, 24);
    }
}

TEST_F(FFMPEGFileFormatsTimes, ADecoderThatWouldBeginAnywhereBeginsAtAKeyPicture) {
    const EncodedTrack track({.encoder = "libx265",
                              .frames = 48,
                              .groupLength = 16,
                              .bFrames = 3,
                              .hasConfiguration = false,
                              .options = "x265-params=log-level=none"});
    LoadedFormat loaded(WriteMovie(workspace, "hevc.mts", track));
    ExpectEveryFrame(loaded, 48);
}

TEST_F(FFMPEGFileFormatsTimes, EveryFrameOfOpenGroupsIsFound) {
    const EncodedTrack track(
        {.frames = 54, .groupLength = 12, .bFrames = 3, .options = "x264-params=open-gop=1"});
    for (const char* const name : {"open.mp4", "open.mkv"}) {
        LoadedFormat loaded(WriteMovie(workspace, name, track));
        ExpectEveryFrame(loaded, 54);
    }
}

TEST_F(FFMPEGFileFormatsTimes, AviWithoutTimesOfPresentationHasEveryFrame) {
    LoadedFormat h264(WriteMovie(workspace, "h264.avi", GreyTrack()));
    EXPECT_EQ(h264.Count(), 24);
    ExpectEveryFrame(h264, 24);
    const EncodedTrack track({.encoder = "mpeg4", .frames = 30, .groupLength = 12, .bFrames = 2});
    LoadedFormat mpeg4(WriteMovie(workspace, "mpeg4.avi", track));
    EXPECT_EQ(mpeg4.Count(), 30);
    ExpectEveryFrame(mpeg4, 30);
}

TEST_F(FFMPEGFileFormatsTimes, AFrameThatTheFileLeavesOutFailsAndTheOthersLoad) {
    const MovieSpec everySecond = {.change = [](AVPacket& packet) {
        packet.pts *= 2;
        packet.dts *= 2;
    }};
    const ChangedStreams changed([](AVStream& stream) { stream.r_frame_rate = {25, 1}; });
    LoadedFormat loaded(WriteMovie(workspace, "holes.mkv", GreyTrack(), everySecond));
    for (const uint32_t frame : {0U, 1U, 2U, 3U, 4U, 20U, 19U, 18U, 41U, 42U, 46U, 47U, 6U})
        EXPECT_EQ(loaded.Load(frame), frame % 2 == 0 ? static_cast<int32_t>(frame) / 2 : -1) << frame;
}

/// The first place that is sought is one past the frame, and the second one can't be had.
int SeekPastAndFail(AVFormatContext* file, int stream, int64_t time, int flags) {
    static int count;
    if (flags == 0) return av_seek_frame(file, stream, time, flags);
    constexpr int64_t groupLength = 4 * 40; // milliseconds
    return ++count % 2 == 1 ? av_seek_frame(file, stream, time + groupLength, flags) : AVERROR(EIO);
}

TEST_F(FFMPEGFileFormatsTimes, AFrameIsReadFromTheFirstOnIfASeekFurtherBackFails) {
    const EncodedTrack track({.frames = 24, .groupLength = 4, .bFrames = 2});
    LoadedFormat loaded(WriteMovie(workspace, "movie.mkv", track));
    const ReplacedFunction seek(&FFmpegFunctions::av_seek_frame, SeekPastAndFail);
    CorvexDoc::SetConsoleHook([](EventConsoleSubID, const std::string&) {});
    EXPECT_EQ(loaded.Load(17), 17);
    EXPECT_EQ(loaded.Load(18), 18);
    CorvexDoc::SetConsoleHook({});
}

} // namespace
