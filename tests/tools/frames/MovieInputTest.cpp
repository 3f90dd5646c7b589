// Both roads to the frames of a movie, and what is known of them.

#include "frames/MovieInput.h"

#include "media/ToolError.h"
#include "tools/Workspace.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace {

using Bytes = std::vector<uint8_t>;

constexpr int64_t frameCount = 14;

const std::string longGroups = "-preset ultrafast -bf 2 -g 6 -pix_fmt yuv420p ";

/// Runs ffmpeg on its test picture, 25 frames a second, in colours that change from frame to frame.
void Make(const Workspace& workspace, const std::string& options, int frames = frameCount) {
    const ProgramRun run =
        workspace.Shell("ffmpeg -v error -f lavfi -i testsrc2=rate=25:size=64x48,hue=h=24*n -frames:v " +
                        std::to_string(frames) + " " + options);
    ASSERT_EQ(run.status, 0) << options << "\n" << run.err;
}

/// R, G, B and A of a picture, top row first.
Bytes Pixels(const Image& image) {
    Bytes bytes;
    for (int32_t row = image.Height - 1; row >= 0; --row) {
        const uint8_t* const pixels = image.RowAddress(row);
        bytes.insert(bytes.end(), pixels, pixels + ptrdiff_t{image.Width} * image.PixelStride);
    }
    return bytes;
}

Bytes Frame(MovieInput& input, int64_t index) { return Pixels(*input.Read(index, ImageData_RGBA8)); }

/// Frames as they come one after the other.
std::vector<Bytes> AllFrames(MovieInput& input) {
    std::vector<Bytes> frames;
    for (int64_t index = 0; index < input.Track().frameCount; ++index)
        frames.push_back(Frame(input, index));
    return frames;
}

int WorstDifference(const Bytes& a, const Bytes& b) {
    EXPECT_EQ(a.size(), b.size());
    int worst = 0;
    for (size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        worst = std::max(worst, std::abs(a[i] - b[i]));
    return worst;
}

/// Expects frames that are told apart from each other, and the same ones over both roads in any order.
void ExpectTheSameFrames(const std::string& path) {
    MovieInput registry(path, DecodeRoad::Registry);
    MovieInput format(path, DecodeRoad::Format);
    const std::vector<Bytes> expected = AllFrames(registry);
    ASSERT_GT(expected.size(), 9U);
    for (size_t i = 1; i < expected.size(); ++i)
        ASSERT_GT(WorstDifference(expected[i], expected[i - 1]), 1) << i;
    for (const size_t index : {0U, 1U, 2U, 8U, 7U, 3U, 3U, 9U, 0U})
        EXPECT_LE(WorstDifference(Frame(format, static_cast<int64_t>(index)), expected[index]), 1) << index;
}

struct MovieFile {
    const char* name;
    const char* file;
    std::string options; ///< of ffmpeg
};

void PrintTo(const MovieFile& movie, std::ostream* stream) { *stream << movie.name; }

const MovieFile bothRoads[] = {
    {"H264InMov", "a.mov", "-c:v libx264 " + longGroups},
    {"H264InMkv", "a.mkv", "-c:v libx264 " + longGroups},
    {"H264InAvi", "a.avi", "-c:v libx264 " + longGroups},
    {"H264InFlv", "a.flv", "-c:v libx264 " + longGroups},
    {"H264InMts", "a.mts", "-c:v libx264 " + longGroups},
    {"H264OfFieldsInMts", "a.mts", "-c:v libx264 -flags +ildct+ilme -x264opts tff=1 " + longGroups},
    {"H264WithALaterStart", "a.mts", "-c:v libx264 -output_ts_offset 7.3 " + longGroups},
    {"H264OfOddTimes", "a.mp4",
     "-vf 'setpts=(N+gt(N\\,3)*4+gt(N\\,7)*9)/25/TB' -vsync vfr -c:v libx264 " + longGroups},
    {"HevcInMp4", "a.mp4", "-c:v libx265 -x265-params log-level=none " + longGroups},
    {"Mpeg2InM2ts", "a.m2ts", "-c:v mpeg2video -q:v 2 -bf 2 -g 6"},
    {"Mpeg4InAvi", "a.avi", "-c:v mpeg4 -q:v 2 -bf 2 -g 6"},
    {"MotionJpegInAvi", "a.avi", "-c:v mjpeg -q:v 2"},
    {"Vp9InWebm", "a.webm", "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -g 6"},
    {"ProResInMov", "a.mov",
     "-c:v prores_ks -profile:v 3 -pix_fmt yuv422p10le -vf setparams=colorspace=bt709"},
};

const MovieFile losslessMovies[] = {
    {"Ffv1", "a.mkv", "-c:v ffv1 -pix_fmt bgra"},
    {"Ffv1Of16Bits", "a.mkv", "-c:v ffv1 -pix_fmt rgba64le"},
    {"Png", "a.mov", "-c:v png -pix_fmt rgba"},
    {"Gif", "a.gif", ""},
};

class LosslessMovie : public testing::TestWithParam<MovieFile> {};

class MovieOnBothRoads : public testing::TestWithParam<MovieFile> {};

} // namespace

TEST_P(MovieOnBothRoads, HasTheSameFramesInAnyOrder) {
    const MovieFile& movie = GetParam();
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(Make(workspace, movie.options + " " + movie.file));
    ExpectTheSameFrames(workspace.Path(movie.file));
}

INSTANTIATE_TEST_SUITE_P(Files, MovieOnBothRoads, testing::ValuesIn(bothRoads),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(LosslessMovie, IsGivenByTheHostFormatAsFFmpegConvertsIt) {
    const MovieFile& movie = GetParam();
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(Make(workspace, movie.options + " " + movie.file, 3));
    const ProgramRun run = workspace.Shell("ffmpeg -v error -i " + std::string(movie.file) +
                                           " -vf scale=flags=neighbor+accurate_rnd -vsync passthrough "
                                           "-pix_fmt rgba64le -f rawvideo peer.raw");
    ASSERT_EQ(run.status, 0) << run.err;
    MovieInput input(workspace.Path(movie.file), DecodeRoad::Format);
    Bytes frames;
    for (int64_t index = 0; index < input.Track().frameCount; ++index) {
        const Bytes frame = Pixels(*input.Read(index, ImageData_RGBA16));
        frames.insert(frames.end(), frame.begin(), frame.end());
    }
    EXPECT_TRUE(frames == workspace.ReadBytes("peer.raw"));
}

INSTANTIATE_TEST_SUITE_P(Files, LosslessMovie, testing::ValuesIn(losslessMovies),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(MovieInput, BeginsWithTheFirstPictureOfACutFileThatCanBeDecoded) {
    constexpr const char* openGroups = "-c:v libx264 -preset ultrafast -pix_fmt yuv420p -x264-params "
                                       "keyint=12:min-keyint=12:bframes=3:b-adapt=0:scenecut=0:open-gop=1 ";
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(Make(workspace, openGroups + std::string("whole.mts"), 30));
    const ProgramRun run = workspace.Shell("ffmpeg -v error -copyts -i whole.mts -c copy -copyinkf "
                                           "-bsf:v \"noise=drop='lt(n,9)'\" cut.mts");
    ASSERT_EQ(run.status, 0) << run.err;
    ExpectTheSameFrames(workspace.Path("cut.mts"));
}

TEST(MovieInput, FindsAnyFrameFirstWhereTheContainerTellsALaterStart) {
    constexpr const char* leading = "-c:v libx265 -preset ultrafast -pix_fmt yuv420p -x265-params "
                                    "log-level=none:keyint=12:min-keyint=12:bframes=4:b-adapt=0:scenecut=0:"
                                    "open-gop=0:radl=2 ";
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(Make(workspace, leading + std::string("whole.mts"), 30));
    const ProgramRun run = workspace.Shell("ffmpeg -v error -copyts -i whole.mts -c copy -copyinkf "
                                           "-bsf:v \"noise=drop='lt(n,10)'\" cut.mts");
    ASSERT_EQ(run.status, 0) << run.err;
    MovieInput registry(workspace.Path("cut.mts"), DecodeRoad::Registry);
    MovieInput format(workspace.Path("cut.mts"), DecodeRoad::Format);
    EXPECT_LE(WorstDifference(Frame(format, 6), Frame(registry, 6)), 1);
    EXPECT_LE(WorstDifference(Frame(format, 0), Frame(registry, 0)), 1);
}

TEST(MovieInput, AsksTheRegistryThenTheHostFormatsThenThePixelConversion) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(Make(workspace, "-c:v mjpeg a.mov", 1));
    ASSERT_NO_FATAL_FAILURE(Make(workspace, "-c:v v408 b.mov", 1));
    ASSERT_NO_FATAL_FAILURE(Make(workspace, "-c:v v408 c.nut", 1));
    const auto backEnd = [&](const char* file) {
        return MovieInput(workspace.Path(file), DecodeRoad::Auto).Track().backEnd;
    };
    EXPECT_EQ(backEnd("a.mov"), "FFmpeg");
    EXPECT_EQ(backEnd("b.mov"), "FFMPEG Assorted formats");
    EXPECT_EQ(backEnd("c.nut"), "pixel conversion");
}

TEST(MovieInput, KnowsWhetherTheFramesHaveAlpha) {
    const std::pair<const char*, bool> movies[] = {
        {"-c:v ffv1 -pix_fmt yuva420p a.mkv", true},
        {"-c:v png -pix_fmt rgba b.mov", true},
        {"-pix_fmt rgb8 c.gif", true},
        {"-c:v ffv1 -pix_fmt yuv420p d.mkv", false},
        {"-c:v libvpx-vp9 -pix_fmt yuv420p e.webm", false},
        {"-c:v libx264 -pix_fmt yuv420p f.mp4", false},
    };
    const Workspace workspace;
    for (const auto& [options, hasAlpha] : movies) {
        ASSERT_NO_FATAL_FAILURE(Make(workspace, options, 1));
        const std::string file = std::string(options).substr(std::string(options).rfind(' ') + 1);
        const MovieInput input(workspace.Path(file), DecodeRoad::Auto);
        EXPECT_EQ(input.Track().hasAlpha, hasAlpha) << options;
    }
}

TEST(MovieInput, HasNoAlphaWhereTheDecoderLeavesItOut) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(Make(workspace, "-c:v libvpx-vp9 -pix_fmt yuva420p a.webm", 1));
    EXPECT_FALSE(MovieInput(workspace.Path("a.webm"), DecodeRoad::Auto).Track().hasAlpha);
}

TEST(MovieInput, KeepsTheAlphaOfAHostFormat) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(
        Make(workspace, "-vf \"format=rgba,geq=r='X':g='Y':b='N':a='4*X'\" -c:v png -pix_fmt rgba a.mov", 1));
    MovieInput input(workspace.Path("a.mov"), DecodeRoad::Auto);
    const Bytes pixels = Frame(input, 0);
    EXPECT_EQ(pixels[3], 0);
    EXPECT_EQ(pixels[4 * 63 + 3], 252);
}

TEST(MovieInput, TellsWhetherTheMatrixOfTheTrackWasUsed) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(Make(workspace, "-c:v v210 a.mov", 1));
    ASSERT_NO_FATAL_FAILURE(Make(workspace, "-c:v mjpeg b.mov", 1));
    const auto isBt709 = [&](const char* file, DecodeRoad road) {
        return MovieInput(workspace.Path(file), road).Track().isReadAsBt709;
    };
    EXPECT_TRUE(isBt709("a.mov", DecodeRoad::Registry));
    EXPECT_FALSE(isBt709("a.mov", DecodeRoad::Format));
    EXPECT_FALSE(isBt709("b.mov", DecodeRoad::Registry));
}

TEST(MovieInput, RefusesATrackThatNoRoadDecodes) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(Make(workspace, "-c:v ffv1 a.nut", 1));
    ASSERT_NO_FATAL_FAILURE(Make(workspace, "-c:v ffv1 a.mkv", 1));
    const auto cause = [&](const char* file, DecodeRoad road) {
        try {
            const MovieInput input(workspace.Path(file), road);
            return "read by " + input.Track().backEnd;
        } catch (const ToolError& error) {
            EXPECT_EQ(error.status(), ExitStatus::Unsupported);
            return error.cause();
        }
    };
    EXPECT_EQ(cause("a.nut", DecodeRoad::Auto), "no decoder for track code 'FFV1' (ffv1)");
    EXPECT_EQ(cause("a.mkv", DecodeRoad::Registry), "no decoder for track code 'FFV1' (ffv1)");
    EXPECT_EQ(cause("a.nut", DecodeRoad::Format), "no host format of this build loads '.nut'");
}
