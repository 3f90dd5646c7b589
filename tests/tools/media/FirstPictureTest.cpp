// Where the frames of a file begin that was cut from a longer one.

#include "MediaFiles.h"
#include "media/MovieTrackSource.h"

#include <gtest/gtest.h>

namespace {

const std::string openGroups = "-pix_fmt yuv420p -c:v libx264 -preset ultrafast -x264-params "
                               "keyint=12:min-keyint=12:bframes=3:b-adapt=0:scenecut=0:open-gop=1";
constexpr int openKey = 9; ///< packet that begins the second group
const std::string leadingGroups =
    "-pix_fmt yuv420p -c:v libx265 -preset ultrafast -x265-params "
    "log-level=none:keyint=12:min-keyint=12:bframes=4:b-adapt=0:scenecut=0:open-gop=0:radl=2";
constexpr int leadingKey = 10;
const std::string closedGroups = "-pix_fmt yuv420p -c:v mpeg2video -bf 2 -g 12";

/// Encodes 30 frames and copies all but the first packets.
std::unique_ptr<MovieTrackSource> OpenCut(const TempFolder& folder, const std::string& encoder,
                                          int packetsCut, const std::string& name) {
    const std::string whole = folder / "whole.mts";
    RunFfmpeg(TestPicture(64, 48, "25", 30) + " " + encoder + " '" + whole + "'");
    RunFfmpeg("-copyts -i '" + whole + "' -c copy -copyinkf -bsf:v \"noise=drop='lt(n," +
              std::to_string(packetsCut) + ")'\" '" + (folder / name) + "'");
    return MovieTrackSource::Open(folder / name);
}

/// Expects the frames of the source to be those that ffprobe gets out of its decoder.
void ExpectFramesOfFfprobe(const MovieTrackSource& source) {
    const auto frames = Probe(source.Info().path, "frame=best_effort_timestamp");
    ASSERT_EQ(static_cast<size_t>(source.GetFrameCount()), frames.size());
    for (int32_t frame = 0; frame < source.GetFrameCount(); ++frame)
        EXPECT_EQ(source.GetFrameTicks(frame), std::stoll(frames[frame][0])) << frame;
}

} // namespace

class FirstPicture : public testing::TestWithParam<const char*> {
protected:
    TempFolder folder;
};

TEST_P(FirstPicture, LeadingPicturesOfAnOpenGroupAreSamplesAndNoFrames) {
    auto source = OpenCut(folder, openGroups, openKey, GetParam());
    EXPECT_EQ(source->GetSampleForFrame(0), 0);
    EXPECT_LT(source->GetFrameCount(), source->GetSampleCount());
    EXPECT_LT(source->GetSampleTime(1), source->GetSampleTime(0));
    ExpectFramesOfFfprobe(*source);
}

TEST_P(FirstPicture, LeadingPicturesThatCanBeDecodedAreFrames) {
    auto source = OpenCut(folder, leadingGroups, leadingKey, GetParam());
    EXPECT_GT(source->GetSampleForFrame(0), 0);
    EXPECT_EQ(source->GetFrameCount(), source->GetSampleCount());
    ExpectFramesOfFfprobe(*source);
}

INSTANTIATE_TEST_SUITE_P(Files, FirstPicture, testing::Values("cut.mts", "cut.mkv"),
                         [](const auto& info) { return info.index == 0 ? "Mts" : "Mkv"; });

TEST(FirstPictureOfAStream, ComesAfterPacketsThatReferToWhatIsCutOff) {
    const TempFolder folder;
    auto source = OpenCut(folder, closedGroups, 5, "cut.mts");
    EXPECT_GT(source->GetSampleForFrame(0), 0);
    EXPECT_LT(source->GetFrameCount(), source->GetSampleCount());
    ExpectFramesOfFfprobe(*source);
}
