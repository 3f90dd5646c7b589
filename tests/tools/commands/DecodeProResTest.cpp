// ProRes movies of awkward sizes, by the back-end of the registry.

#include "ToolRun.h"

namespace {

constexpr const char* kSizes[] = {"17x17", "130x98", "1281x721", "720x486", "1998x1080"};

struct ProResMovie {
    const char* name;
    const char* options; ///< ffmpeg's
};

void PrintTo(const ProResMovie& movie, std::ostream* out) { *out << movie.name; }

constexpr ProResMovie kMovies[] = {
    {"apco", "-c:v prores_ks -profile:v 0 -pix_fmt yuv422p10le"},
    {"apcs", "-c:v prores_ks -profile:v 1 -pix_fmt yuv422p10le -flags +ildct -top 1"},
    {"apcn", "-c:v prores_ks -profile:v 2 -pix_fmt yuv422p10le -flags +ildct -top 0"},
    {"apch", "-c:v prores_ks -profile:v 3 -pix_fmt yuv422p10le"},
    {"ap4h", "-c:v prores_ks -profile:v 4 -pix_fmt yuv444p10le"},
    {"ap4x", "-c:v prores_ks -profile:v 5 -pix_fmt yuv444p10le -flags +ildct -top 1"},
};

/// The test picture, kept in 4:4:4 up to the encoder: it has even sizes only with less chroma.
std::string MakeLine(const ProResMovie& movie, const std::string& size) {
    return "ffmpeg -v error -f lavfi -i testsrc2=rate=25:size=" + size + ",format=yuv444p -frames:v 2 " +
           movie.options + " a.mov";
}

class DecodeProRes : public testing::TestWithParam<ProResMovie> {};

} // namespace

TEST_P(DecodeProRes, GivesImagesOfEverySizeThroughTheRegistry) {
    const ProResMovie& movie = GetParam();
    for (const std::string size : kSizes) {
        const Workspace workspace;
        ASSERT_NO_FATAL_FAILURE(Prepare(workspace, MakeLine(movie, size)));
        const ProgramRun run = RunTool(workspace, "decode a.mov -o own.%04d.png --via registry --json");
        ASSERT_EQ(run.status, 0) << size << run.err;
        EXPECT_NE(run.out.find("Apple ProRes"), std::string::npos) << run.out;
        const std::string probe =
            "ffprobe -v error -show_entries stream=width,height -of csv=p=0:s=x own.0001.png";
        EXPECT_EQ(workspace.Shell(probe).out, size + "\n");
    }
}

TEST(DecodeProResFailures, ADamagedFrameFailsAndTheMovieIsNamed) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov", kMovies[3].options, 1));
    std::string bytes = workspace.Read("a.mov");
    const size_t tag = bytes.find("icpf");
    ASSERT_NE(tag, std::string::npos);
    bytes[tag + 4] = '\0';
    bytes[tag + 5] = '\1'; // a header of one byte
    workspace.Write("b.mov", bytes);
    const ProgramRun run = RunTool(workspace, "decode b.mov -o own.%04d.png");
    EXPECT_NE(run.status, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("b.mov"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("Warning: ProResCodec decode failed\n"), std::string::npos) << run.err;
}

INSTANTIATE_TEST_SUITE_P(OfFFmpeg, DecodeProRes, testing::ValuesIn(kMovies),
                         [](const auto& info) { return std::string(info.param.name); });
