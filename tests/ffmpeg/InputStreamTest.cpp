#include "ffmpeg/InputStream.h"

#include "ffmpeg/FormatTestSupport.h"

namespace {

using CxFFMPEG::InputStream;
using CxFFMPEG::PacketPointer;

class OpenInputStream : public testing::Test {
protected:
    /// Opens a movie and chooses its pictures.
    bool Open(const std::string& path) { return input.Open(path.c_str()) && input.ChooseVideo(); }

    /// Times of presentation of the packets up to the end.
    std::vector<int64_t> ReadTimes() {
        std::vector<int64_t> times;
        while (input.Read(*packet))
            times.push_back(packet->pts);
        return times;
    }

    const Workspace workspace;
    const PacketPointer packet{FFmpeg().av_packet_alloc()};
    InputStream input;
};

TEST_F(OpenInputStream, OnlyTheChosenStreamIsRead) {
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.mov", GreyTrack(), {.soundStreams = 2})));
    EXPECT_EQ(input.Stream()->index, 2);
    int count = 0;
    for (; input.Read(*packet); ++count)
        EXPECT_EQ(packet->stream_index, 2);
    EXPECT_EQ(count, 24);
}

TEST_F(OpenInputStream, AtTheEndThePacketIsEmptyAndStaysSoUntilASeek) {
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.mkv", GreyTrack())));
    EXPECT_EQ(ReadTimes().size(), 24U);
    EXPECT_EQ(packet->data, nullptr);
    EXPECT_EQ(packet->size, 0);
    EXPECT_EQ(packet->pts, AV_NOPTS_VALUE);
    EXPECT_FALSE(input.Read(*packet));
    EXPECT_TRUE(input.Seek(0, AVSEEK_FLAG_BACKWARD));
    EXPECT_TRUE(input.Read(*packet));
}

TEST_F(OpenInputStream, AFailureIsTheEnd) {
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.mkv", GreyTrack())));
    {
        const ChangedPackets failing([](AVPacket&) { return AVERROR(EAGAIN); });
        EXPECT_FALSE(input.Read(*packet));
        EXPECT_EQ(packet->data, nullptr);
    }
    EXPECT_FALSE(input.Read(*packet));
    EXPECT_TRUE(input.Seek(0, AVSEEK_FLAG_BACKWARD));
    EXPECT_EQ(ReadTimes().size(), 24U);
}

TEST_F(OpenInputStream, PacketsWithoutDataArePassedOver) {
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.mkv", GreyTrack())));
    const ChangedPackets emptied([](AVPacket& changed) {
        if (ChangedPackets::count % 2 == 0) av_shrink_packet(&changed, 0);
        return 0;
    });
    EXPECT_EQ(ReadTimes().size(), 12U);
}

TEST_F(OpenInputStream, KeyPicturesCanBeWaitedForOnce) {
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.mkv", GreyTrack())));
    ASSERT_TRUE(input.Read(*packet));
    input.PassToKeyPicture();
    ASSERT_TRUE(input.Read(*packet));
    EXPECT_EQ(packet->pts, 480);
    EXPECT_NE(packet->flags & AV_PKT_FLAG_KEY, 0);
    ASSERT_TRUE(input.Read(*packet));
    EXPECT_EQ(packet->flags & AV_PKT_FLAG_KEY, 0);
}

TEST_F(OpenInputStream, ASeekEndsTheWaitForAKeyPicture) {
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.mts", GreyStreamTrack())));
    input.PassToKeyPicture();
    ASSERT_TRUE(input.Seek(input.Stream()->start_time, AVSEEK_FLAG_BACKWARD));
    ASSERT_TRUE(input.Read(*packet));
    EXPECT_EQ(packet->flags & AV_PKT_FLAG_KEY, 0);
}

TEST_F(OpenInputStream, TheLastTimeIsTheHighestFromThePlaceOn) {
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.mkv", GreyTrack())));
    EXPECT_EQ(input.FindLastTime(0, 0), 920);
    EXPECT_EQ(input.FindLastTime(0, 5000), 5000);
}

TEST_F(OpenInputStream, TheFirstTimeIsTheContainers) {
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.mkv", GreyTrack(), {.firstFrame = 3})));
    EXPECT_EQ(input.FindFirstTime(), 120);
    input.Stream()->start_time = 7;
    EXPECT_EQ(input.FindFirstTime(), 7);
}

TEST_F(OpenInputStream, TheFirstTimeOfAnAviIsThatOfItsPackets) {
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.avi", GreyTrack())));
    EXPECT_EQ(input.Stream()->start_time, 0);
    EXPECT_EQ(input.FindFirstTime(), 1);
    EXPECT_TRUE(input.HasDecodingTimes());
}

TEST_F(OpenInputStream, AnAviWhoseOrderOfPresentationIsKnownHasNoDecodingTimes) {
    const EncodedTrack track({.encoder = "mpeg4", .bFrames = 2});
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.avi", track)));
    EXPECT_EQ(input.FindFirstTime(), 1);
    EXPECT_FALSE(input.HasDecodingTimes());
}

TEST_F(OpenInputStream, AnAviInOrderStartsWhereItSays) {
    const EncodedTrack track({.encoder = "mjpeg", .format = AV_PIX_FMT_YUVJ420P});
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.avi", track)));
    EXPECT_EQ(input.FindFirstTime(), 0);
    EXPECT_FALSE(input.HasDecodingTimes());
}

TEST_F(OpenInputStream, AnAviWithoutPacketsStartsWhereItSays) {
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.avi", GreyTrack())));
    const ChangedPackets noPackets([](AVPacket&) { return AVERROR_EOF; });
    EXPECT_EQ(input.FindFirstTime(), 0);
}

TEST_F(OpenInputStream, AnotherFileIsReadFromItsBeginning) {
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.avi", GreyTrack())));
    input.FindFirstTime();
    ReadTimes();
    input.PassToKeyPicture();
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.mkv", GreyTrack())));
    EXPECT_FALSE(input.HasDecodingTimes());
    EXPECT_EQ(ReadTimes().size(), 24U);
}

TEST_F(OpenInputStream, AClosedFileHasNoStream) {
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.mkv", GreyTrack())));
    EXPECT_TRUE(input.IsOpen());
    input.Close();
    EXPECT_FALSE(input.IsOpen());
    EXPECT_EQ(input.Stream(), nullptr);
    input.Close();
    EXPECT_FALSE(input.Open(workspace.Path("missing.mkv").c_str()));
    EXPECT_FALSE(input.IsOpen());
}

TEST_F(OpenInputStream, WithoutMemoryForAPacketTimesAreUnknown) {
    ASSERT_TRUE(Open(WriteMovie(workspace, "movie.avi", GreyTrack())));
    const ReplacedFunction allocate(&FFmpegFunctions::av_packet_alloc, []() -> AVPacket* { return nullptr; });
    EXPECT_EQ(input.FindFirstTime(), 0);
    EXPECT_EQ(input.FindLastTime(0, 12), 12);
}

} // namespace
