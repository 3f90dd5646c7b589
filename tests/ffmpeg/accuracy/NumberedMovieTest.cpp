// The material of the tests: FFmpeg's own program reads the numbers back in order.

#include "ffmpeg/accuracy/MovieList.h"

#include <gtest/gtest.h>

namespace {

std::vector<int> NumbersByFfmpeg(const NumberedMovie& movie) {
    const Workspace workspace;
    MakeMovie(movie, workspace);
    const ProgramRun run =
        workspace.Shell("ffmpeg -nostdin -v error -i " + movie.file +
                        " -map 0:v:0 -vsync passthrough -pix_fmt gray -f rawvideo pictures.gray");
    EXPECT_EQ(run.status, 0) << run.err;
    const std::vector<uint8_t> bytes = workspace.ReadBytes("pictures.gray");
    const size_t pictureBytes = static_cast<size_t>(movie.size.width) * movie.size.height;
    std::vector<int> numbers;
    for (size_t at = 0; at + pictureBytes <= bytes.size(); at += pictureBytes) {
        const auto brightness = [&](int x, int y) { return bytes[at + y * movie.size.width + x] * 257; };
        numbers.push_back(ReadNumber(movie.size, brightness).value_or(-1));
    }
    return numbers;
}

class NumberedMovies : public testing::TestWithParam<const char*> {};

TEST_P(NumberedMovies, ShowTheirNumbersInOrder) {
    const NumberedMovie movie = FindMovie(GetParam());
    std::vector<int> expected;
    for (int number = movie.firstNumber; number < movie.pictureCount; ++number)
        expected.push_back(number);
    EXPECT_EQ(NumbersByFfmpeg(movie), expected);
}

// One for each codec and each way in which a file is made.
INSTANTIATE_TEST_SUITE_P(Movies, NumberedMovies,
                         testing::Values("H264PyramidMovAt29_97", "H264FieldsMtsAt25", "H264AfterSoundFlv",
                                         "H264OpenTrimmedMp4", "HevcOpenMkvAt59_94", "Mpeg2FieldsMtsAt25",
                                         "Mpeg4AviAt23_976", "Vp9PipedWebmAt23_976",
                                         "Vp9AlternateWebmAt59_94", "MjpegAviAt29_97", "DvMovAt29_97",
                                         "ProResMovAt23_976", "Ffv1GroupsAviAt29_97", "GifAt25"),
                         [](const auto& info) { return std::string(info.param); });

} // namespace
