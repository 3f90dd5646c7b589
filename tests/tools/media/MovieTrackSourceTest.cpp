// The frame table of real files, against ffprobe.

#include "media/MovieTrackSource.h"

#include "MediaFiles.h"
#include "media/ToolError.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <numeric>
#include <random>
#include <utility>

namespace {

/// One kind of file: its name and the ffmpeg arguments that make it.
struct FileKind {
    const char* name;
    const char* file;
    const char* arguments;
};

void PrintTo(const FileKind& kind, std::ostream* stream) { *stream << kind.name; }

const char* const picture = "-f lavfi -i 'testsrc=s=128x96:r=24000/1001' -f lavfi -i sine -t 2 ";
const char* const longGroups = "-pix_fmt yuv420p -bf 3 -g 12 ";

const FileKind fileKinds[] = {
    {"H264InMp4", "a.mp4", "-c:v libx264"},
    {"H264InMov", "a.mov", "-c:v libx264"},
    {"H264InMkv", "a.mkv", "-c:v libx264"},
    {"H264InTransportStream", "a.mts", "-c:v libx264"},
    {"H264InAvi", "a.avi", "-c:v libx264"},
    {"H264InFragments", "a.mp4", "-c:v libx264 -movflags frag_keyframe+empty_moov"},
    {"HevcInMp4", "a.mp4", "-c:v libx265 -x265-params log-level=none"},
    {"Mpeg4InAvi", "a.avi", "-c:v mpeg4 -bf 2"},
    {"Mpeg2InTransportStream", "a.m2ts", "-c:v mpeg2video -bf 2"},
    {"MotionJpegInAvi", "a.avi", "-c:v mjpeg -strict -1 -bf 0"},
    {"AudioFirst", "a.mp4", "-map 1 -map 0 -c:v libx264"},
    {"UncompressedInMov", "a.mov", "-c:v v210 -pix_fmt yuv422p10le"},
    {"UncompressedInAvi", "a.avi", "-c:v rawvideo -pix_fmt uyvy422"},
    {"UncompressedInMkv", "a.mkv", "-c:v rawvideo -pix_fmt uyvy422"},
};

class MovieTrackKinds : public testing::TestWithParam<FileKind> {
protected:
    void SetUp() override {
        path = folder / GetParam().file;
        RunFfmpeg(std::string(picture) + longGroups + GetParam().arguments + " '" + path + "'");
        source = MovieTrackSource::Open(path);
    }

    TempFolder folder;
    std::string path;
    std::unique_ptr<MovieTrackSource> source;
};

std::string Name(const testing::TestParamInfo<FileKind>& info) { return info.param.name; }
INSTANTIATE_TEST_SUITE_P(Files, MovieTrackKinds, testing::ValuesIn(fileKinds), Name);

std::vector<std::vector<uint8_t>> ReadAll(MovieTrackSource& source) {
    std::vector<std::vector<uint8_t>> samples;
    for (int32_t i = 0; i < source.GetSampleCount(); ++i) {
        int32_t size = 0;
        const uint8_t* data = source.ReadSample(i, nullptr, size);
        samples.emplace_back();
        if (data != nullptr) samples.back().assign(data, data + size);
    }
    return samples;
}

TEST_P(MovieTrackKinds, ListsThePacketsThatFfprobeLists) {
    const auto packets = Probe(path, "packet=size,flags");
    ASSERT_EQ(static_cast<size_t>(source->GetSampleCount()), packets.size());
    for (int32_t i = 0; i < source->GetSampleCount(); ++i) {
        int32_t size = 0;
        ASSERT_NE(source->ReadSample(i, nullptr, size), nullptr) << i;
        EXPECT_EQ(size, std::stoi(packets[i][0])) << i;
        EXPECT_LE(size, source->GetMaxSampleSize());
    }
}

TEST_P(MovieTrackKinds, KeySamplesAreThoseOfFfprobeFromWhichOnTheSampleCanBeDecoded) {
    const auto packets = Probe(path, "packet=flags");
    ASSERT_EQ(static_cast<size_t>(source->GetSampleCount()), packets.size());
    int32_t key = 0;
    int32_t keyBefore = 0;
    for (int32_t i = 0; i < source->GetSampleCount(); ++i) {
        if (packets[i][0][0] == 'K') keyBefore = std::exchange(key, i);
        const bool isLeading = source->GetSampleTime(i) < source->GetSampleTime(key);
        EXPECT_EQ(source->GetKeySample(i), isLeading ? keyBefore : key) << i;
    }
}

TEST_P(MovieTrackKinds, FramesAreThosePacketsThatFfprobeShowsInItsOrder) {
    std::map<std::string, int32_t> sampleAt;
    for (const auto& packet : Probe(path, "packet=pos")) {
        const auto sample = static_cast<int32_t>(sampleAt.size());
        sampleAt[packet[0]] = sample;
    }
    const auto frames = Probe(path, "frame=pkt_pos");
    ASSERT_EQ(static_cast<size_t>(source->GetFrameCount()), frames.size());
    for (int32_t frame = 0; frame < source->GetFrameCount(); ++frame) {
        EXPECT_EQ(source->GetSampleForFrame(frame), sampleAt.at(frames[frame][0])) << frame;
    }
}

TEST_P(MovieTrackKinds, TimesAreThoseOfFfprobe) {
    const auto frames = Probe(path, "frame=best_effort_timestamp");
    ASSERT_EQ(static_cast<size_t>(source->GetFrameCount()), frames.size());
    // AVI leaves presentation times out. There ffprobe's start depends on how long its decoder waits, and the
    // frames that come out at the very end have no time.
    const bool isAvi = source->Info().container == "avi";
    const int64_t move = isAvi ? source->GetFrameTicks(0) - std::stoll(frames[0][0]) : 0;
    const int32_t compared = source->GetFrameCount() - (isAvi ? 3 : 0);
    for (int32_t frame = 0; frame < compared; ++frame) {
        EXPECT_EQ(source->GetFrameTicks(frame), std::stoll(frames[frame][0]) + move) << frame;
    }
}

TEST_P(MovieTrackKinds, MillisecondsAreRoundedFromTheTicks) {
    const Rational base = source->GetTimeBase();
    const auto rounded = [&](int32_t frame) {
        return std::llround(static_cast<double>(source->GetFrameTicks(frame)) * 1000 *
                            static_cast<double>(base.num) / static_cast<double>(base.den));
    };
    const int64_t shift = source->GetSampleTime(source->GetSampleForFrame(0)) - rounded(0);
    for (int32_t frame = 0; frame < source->GetFrameCount(); ++frame) {
        EXPECT_EQ(source->GetSampleTime(source->GetSampleForFrame(frame)), rounded(frame) + shift) << frame;
    }
}

TEST_P(MovieTrackKinds, EveryTimeIsAboveZero) {
    for (int32_t i = 0; i < source->GetSampleCount(); ++i) {
        EXPECT_GT(source->GetSampleTime(i), 0);
        EXPECT_GT(source->GetDecodeTime(i), 0);
    }
}

TEST_P(MovieTrackKinds, TheFrameOfAFramesTimeIsThatFrame) {
    for (int32_t frame = 0; frame < source->GetFrameCount(); ++frame) {
        EXPECT_EQ(source->GetFrameForTime(source->GetSampleTime(source->GetSampleForFrame(frame))), frame);
    }
}

TEST_P(MovieTrackKinds, TimesPastTheEndAreLaterThanEverySample) {
    int64_t latest = 0;
    for (int32_t i = 0; i < source->GetSampleCount(); ++i)
        latest = std::max(latest, source->GetSampleTime(i));
    for (int32_t i = 0; i < 32; ++i) {
        const int64_t time = source->GetSampleTime(source->GetSampleCount() + i);
        EXPECT_GT(time, latest);
        latest = time;
    }
}

TEST_P(MovieTrackKinds, TheRateIsExactAndConstant) {
    EXPECT_EQ(source->Info().frameRate, (Rational{24000, 1001}));
    EXPECT_TRUE(source->Info().constantFrameRate);
    EXPECT_EQ(source->Info().frameCount, source->GetFrameCount());
    EXPECT_EQ(source->Info().damage, "");
}

TEST_P(MovieTrackKinds, SamplesReadInAnyOrderAreThoseReadInOrder) {
    const auto inOrder = ReadAll(*source);
    std::vector<int32_t> order(inOrder.size());
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), MakeRandom());
    for (const int32_t i : order) {
        int32_t size = 0;
        const uint8_t* data = source->ReadSample(i, nullptr, size);
        ASSERT_NE(data, nullptr) << i;
        ASSERT_EQ(std::vector<uint8_t>(data, data + size), inOrder[i]) << i;
    }
}

TEST_P(MovieTrackKinds, SamplesReadBackwardsAreThoseReadInOrder) {
    const auto inOrder = ReadAll(*source);
    for (int32_t i = source->GetSampleCount() - 1; i >= 0; --i) {
        int32_t size = 0;
        const uint8_t* data = source->ReadSample(i, nullptr, size);
        ASSERT_NE(data, nullptr) << i;
        ASSERT_EQ(std::vector<uint8_t>(data, data + size), inOrder[i]) << i;
    }
}

TEST_P(MovieTrackKinds, SamplesOutsideTheTrackAreNull) {
    int32_t size = 99;
    EXPECT_EQ(source->ReadSample(-1, nullptr, size), nullptr);
    EXPECT_EQ(source->ReadSample(source->GetSampleCount(), nullptr, size), nullptr);
    EXPECT_EQ(size, 0);
    EXPECT_NE(source->ReadSample(0, nullptr, size), nullptr); // and the source goes on
}

TEST(MovieTrackSource, SamplesHiddenByAnEditListAreNoFrames) {
    const TempFolder folder;
    RunFfmpeg(std::string(picture) + longGroups + "-c:v libx264 '" + (folder / "whole.mp4") + "'");
    RunFfmpeg("-ss 0.7 -i '" + (folder / "whole.mp4") + "' -c copy '" + (folder / "cut.mp4") + "'");
    const auto source = MovieTrackSource::Open(folder / "cut.mp4");
    const auto packets = Probe(folder / "cut.mp4", "packet=pts,flags");
    ASSERT_EQ(static_cast<size_t>(source->GetSampleCount()), packets.size());
    std::vector<int64_t> shown;
    for (const auto& packet : packets) {
        if (packet[1].find('D') == std::string::npos) shown.push_back(std::stoll(packet[0]));
    }
    std::sort(shown.begin(), shown.end());
    ASSERT_LT(shown.size(), packets.size()) << "the file hides nothing";
    ASSERT_EQ(static_cast<size_t>(source->GetFrameCount()), shown.size());
    for (int32_t frame = 0; frame < source->GetFrameCount(); ++frame) {
        EXPECT_EQ(source->GetFrameTicks(frame), shown[frame]);
    }
    EXPECT_EQ(source->Info().damage, "");
}

TEST(MovieTrackSource, AVariableRateIsToldAsSuch) {
    const TempFolder folder;
    RunFfmpeg(TestPicture(64, 48, "25", 20) +
              " -vf 'select=not(eq(n\\,3)),select=not(eq(n\\,9))' -vsync vfr" + " -c:v libx264 '" +
              (folder / "a.mp4") + "'");
    const auto source = MovieTrackSource::Open(folder / "a.mp4");
    EXPECT_FALSE(source->Info().constantFrameRate);
    EXPECT_GT(source->Info().frameRate.num, 0);
}

TEST(MovieTrackSource, AMovieOfOneFrameHasItsRate) {
    const TempFolder folder;
    RunFfmpeg(TestPicture(64, 48, "30000/1001", 1) + " -c:v v210 '" + (folder / "a.mov") + "'");
    const auto source = MovieTrackSource::Open(folder / "a.mov");
    EXPECT_EQ(source->GetFrameCount(), 1);
    EXPECT_EQ(source->Info().frameRate, (Rational{30000, 1001}));
    EXPECT_EQ(source->Info().duration, (Rational{1001, 30000}));
}

TEST(MovieTrackSource, HighRatesKeepATimeForEveryFrame) {
    const TempFolder folder;
    RunFfmpeg(TestPicture(64, 48, "4000", 100) + " -c:v mjpeg '" + (folder / "a.mov") + "'");
    const auto source = MovieTrackSource::Open(folder / "a.mov");
    ASSERT_EQ(source->GetFrameCount(), 100);
    for (int32_t frame = 0; frame < 100; ++frame) {
        EXPECT_EQ(source->GetFrameForTime(source->GetSampleTime(source->GetSampleForFrame(frame))), frame);
    }
}

} // namespace
