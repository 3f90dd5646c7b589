// Movies of every container and codec that FFmpeg brings: what is told of them, and how each road decodes
// them.

#include "ToolRun.h"

namespace {

using Json = nlohmann::json;

struct MovieFile {
    const char* name;
    const char* file;
    const char* options; ///< of ffmpeg
    const char* fourCC;  ///< under which the registry is asked; "0": the track has none
    bool inRegistry;
};

void PrintTo(const MovieFile& movie, std::ostream* stream) { *stream << movie.name; }

constexpr MovieFile kMovies[] = {
    {"H264InMov", "a.mov", "-c:v libx264", "avc1", true},
    {"H264InMp4", "a.mp4", "-c:v libx264", "avc1", true},
    {"H264InMkv", "a.mkv", "-c:v libx264", "avc1", true},
    {"H264InAvi", "a.avi", "-c:v libx264", "avc1", true},
    {"H264InMts", "a.mts", "-c:v libx264", "avc1", true},
    {"H264InFlv", "a.flv", "-c:v libx264", "avc1", true},
    {"HevcInMp4", "a.mp4", "-c:v libx265 -x265-params log-level=none", "hev1", true},
    {"HevcInMkv", "a.mkv", "-c:v libx265 -x265-params log-level=none", "hvc1", true},
    {"Mpeg2InMov", "a.mov", "-c:v mpeg2video", "m2v1", true},
    {"Mpeg2InM2ts", "a.m2ts", "-c:v mpeg2video", "mp2v", true},
    {"Mpeg4InMp4", "a.mp4", "-c:v mpeg4", "mp4v", true},
    {"Mpeg4InAvi", "a.avi", "-c:v mpeg4 -tag:v XVID", "mp4v", true},
    {"MotionJpegInMov", "a.mov", "-c:v mjpeg", "jpeg", true},
    {"MotionJpegInAvi", "a.avi", "-c:v mjpeg", "jpeg", true},
    {"Vp9InWebm", "a.webm", "-c:v libvpx-vp9 -deadline realtime", "VP90", true},
    {"DvInAvi", "a.avi", "-s 720x576 -c:v dvvideo", "dvsd", true},
    {"DvInMov", "a.mov", "-s 720x576 -c:v dvvideo", "dvcp", true},
    {"ProResInMov", "a.mov", "-c:v prores_ks", "apch", true},
    {"Ffv1InMkv", "a.mkv", "-c:v ffv1", "FFV1", false},
    {"Gif", "a.gif", "", "0", false},
};

class MovieContainers : public testing::TestWithParam<MovieFile> {
protected:
    void SetUp() override {
        const std::string chroma = std::string(GetParam().options).empty() ? "" : " -pix_fmt yuv420p";
        const bool isProRes = std::string(GetParam().fourCC) == "apch";
        MakeMovie(workspace_, GetParam().file, GetParam().options + (isProRes ? "" : chroma));
    }
    ProgramRun Decode(const std::string& road) const {
        return RunTool(workspace_, std::string("decode ") + GetParam().file + " -o " + road +
                                       ".%d.png --depth 8 --via " + road);
    }

    Workspace workspace_;
};

} // namespace

TEST_P(MovieContainers, AreTold) {
    const ProgramRun run = RunTool(workspace_, std::string("info --json ") + GetParam().file);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const Json movie = Json::parse(run.out)["result"];
    EXPECT_EQ(movie["fourCC"], GetParam().fourCC);
    EXPECT_EQ(movie["frameCount"], 3);
    EXPECT_EQ(movie["decoder"]["available"], GetParam().inRegistry);
    EXPECT_EQ(movie["decoder"]["formats"], Json::array({"FFMPEG Assorted formats"}));
}

TEST_P(MovieContainers, AreDecodedByEachRoad) {
    EXPECT_EQ(Decode("registry").status, GetParam().inRegistry ? 0 : 5);
    for (const char* road : {"format", "auto"}) {
        const ProgramRun run = Decode(road);
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.err, "");
        EXPECT_TRUE(workspace_.Has(std::string(road) + ".2.png"));
    }
    const char* const first = GetParam().inRegistry ? "registry" : "format";
    EXPECT_EQ(workspace_.Read("auto.2.png"), workspace_.Read(std::string(first) + ".2.png"));
}

INSTANTIATE_TEST_SUITE_P(OfFFmpeg, MovieContainers, testing::ValuesIn(kMovies),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(MoviesThatBreakOff, AreDecodedByTheHostFormatAsFarAsTheyGo) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "whole.mts", "-c:v libx264 -g 5", 20));
    const size_t size = workspace.Read("whole.mts").size();
    workspace.Write("cut.mts", workspace.Read("whole.mts").substr(0, size / 2));
    const ProgramRun run = RunTool(workspace, "decode cut.mts -o o.%d.png --frames 0-4 --via format");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(workspace.Has("o.4.png"));
}
