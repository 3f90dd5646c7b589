// Movies that the command saves through the host format, read by ffprobe and ffmpeg.

#include "ToolRun.h"

namespace {

using Json = nlohmann::json;

constexpr const char* kH264 = " --container Matroska --encoder 'H.264 [High]'";
constexpr const char* kAvi = " --container 'AVI (Audio Video Interleaved)' --encoder MPEG4";

/// The values that ffprobe finds, in one line.
std::string Probe(const Workspace& workspace, const std::string& entries, const std::string& file) {
    const std::string probe = "ffprobe -v error -count_packets -select_streams v:0 -of default=nk=1:nw=1";
    return workspace.Shell(probe + " -show_entries " + entries + " " + file + " | paste -sd,").out;
}

/// Least PSNR of a movie's pictures beside those of the sequence "in.%04d.png", in dB, in a pixel format.
double LeastPsnr(const Workspace& workspace, const std::string& file, const std::string& pixels) {
    const std::string matrix = pixels == "gbrp" ? "" : "scale=out_color_matrix=bt709:out_range=tv,";
    const std::string number = ",settb=1/24,setpts=N";
    const ProgramRun run = workspace.Shell(
        "ffmpeg -i " + file + " -i in.%04d.png -filter_complex \"[0:v]format=" + pixels + number +
        "[a];[1:v]" + matrix + "format=" + pixels + number + "[b];[a][b]psnr\" -vsync passthrough -f null -");
    const size_t place = run.err.find(" min:");
    EXPECT_NE(place, std::string::npos) << run.err;
    return place == std::string::npos ? 0 : std::atof(run.err.c_str() + place + 5);
}

/// Numbered images of a smooth moving pattern.
void MakePattern(const Workspace& workspace, int frames) {
    Prepare(workspace, "ffmpeg -v error -f lavfi -i \"nullsrc=s=96x64:r=24,format=gbrp,"
                       "geq=r='128+90*sin((X+4*N)/19)':g='128+90*sin((Y-3*N)/15)':"
                       "b='128+90*sin((X+Y+5*N)/27)'\" -frames:v " +
                           std::to_string(frames) + " -pix_fmt rgb24 -start_number 1 in.%04d.png");
}

/// One container with one of its encoders, and what its files hold.
struct SaveCase {
    std::string test;
    std::string container;
    std::string encoder;
    std::string file;
    std::string stream; ///< codec, profile and pixel format
    std::string pixels; ///< format in which they are compared
    double leastPsnr;   ///< dB
};

class SaveMovies : public testing::TestWithParam<SaveCase> {};

} // namespace

TEST_P(SaveMovies, AreReadByFFmpegWithTheirPropertiesAndPictures) {
    const SaveCase& row = GetParam();
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePattern(workspace, 6));
    const std::string names = " --container '" + row.container + "' --encoder '" + row.encoder + "'";
    const ProgramRun run =
        RunTool(workspace, "save in.####.png -o " + row.file + names + " --fps 23.976 --key-frames 4");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, row.file + ": 6 frames 96x64 at 24000/1001 a second, " + row.encoder + " in " +
                           row.container + "\n");
    EXPECT_EQ(run.err, "");
    ExpectNoPartFiles(workspace);

    EXPECT_EQ(Probe(workspace, "stream=codec_name,profile,pix_fmt,nb_read_packets", row.file),
              row.stream + ",6\n");
    EXPECT_EQ(Probe(workspace, "stream=width,height,r_frame_rate", row.file), "96,64,24000/1001\n");
    EXPECT_GE(LeastPsnr(workspace, row.file, row.pixels), row.leastPsnr);
}

INSTANTIATE_TEST_SUITE_P(
    OfSomePairs, SaveMovies,
    testing::Values(
        SaveCase{"H264InMatroska", "Matroska", "H.264 [High]", "a.mkv", "h264,High,yuv420p", "yuv420p", 44},
        SaveCase{"H264Of444InMov", "QuickTime / MOV", "H.264 [High_444]", "a.mov",
                 "h264,High 4:4:4 Predictive,yuv444p", "yuv444p", 44},
        SaveCase{"HevcOf10BitsInMp4", "MP4 (MPEG-4 Part 14)", "HEVC [10Bit]", "a.mp4",
                 "hevc,Rext,yuv422p10le", "yuv422p10le", 44},
        SaveCase{"Mpeg4InAvi", "AVI (Audio Video Interleaved)", "MPEG4", "a.avi",
                 "mpeg4,Advanced Simple Profile,yuv420p", "yuv420p", 44},
        SaveCase{"Mpeg2Of422InAvi", "AVI (Audio Video Interleaved)", "MPEG2 [422]", "b.avi",
                 "mpeg2video,4:2:2,yuv422p", "yuv422p", 44},
        SaveCase{"TheoraInOgg", "Ogg", "Theora [420]", "a.ogg", "theora,unknown,yuv420p", "yuv420p", 44},
        SaveCase{"GifInMov", "QuickTime / MOV", "GIF", "b.mov", "gif,unknown,bgra", "gbrp", 20}),
    [](const auto& info) { return info.param.test; });

TEST(Save, TheFormatIsTheContainersWhateverTheNameOfTheFile) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePattern(workspace, 2));
    ASSERT_EQ(RunTool(workspace, std::string("save in.0001.png -o \"file:of 50%d.mov\"") + kH264).status, 0);
    EXPECT_EQ(workspace
                  .Shell("ffprobe -v error -show_entries format=format_name -of csv=p=0 "
                         "\"file:file:of 50%d.mov\"")
                  .out,
              "\"matroska,webm\"\n");
}

TEST(Save, AnswersInJson) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePattern(workspace, 3));
    const ProgramRun run = RunTool(workspace, std::string("save in.0001.png -o a.mkv --json") + kH264);
    const Json answer = Json::parse(run.out, nullptr, false);
    EXPECT_EQ(answer["ok"], true);
    EXPECT_EQ(answer["warnings"], Json::array());
    EXPECT_EQ(answer["result"], Json::parse(R"({"file": "a.mkv", "container": "Matroska",
        "encoder": "H.264 [High]", "frames": 3, "width": 96, "height": 64, "frameRate": "24/1"})"));
}

TEST(Save, ShowsItsProgressFrameByFrame) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePattern(workspace, 2));
    const ProgramRun run =
        RunTool(workspace, std::string("save in.0001.png -o a.avi --progress json") + kAvi);
    EXPECT_EQ(run.err, "{\"progress\":\"save\",\"done\":1,\"total\":2}\n"
                       "{\"progress\":\"save\",\"done\":2,\"total\":2}\n");
}

TEST(Save, OptionsReachTheEncoderWithOrWithoutALastSeparator) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePattern(workspace, 2));
    for (const char* options :
         {"preset=veryfast,crf=17", "preset=veryfast,crf=17,", "preset=veryfast|crf=17:"}) {
        ASSERT_EQ(
            RunTool(workspace, std::string("save in.0001.png -o a.mkv --options '") + options + "'" + kH264)
                .status,
            0);
        // The encoder writes its settings into the stream.
        const std::string movie = workspace.Read("a.mkv");
        EXPECT_NE(movie.find(" crf=17.0 "), std::string::npos) << options;
        EXPECT_NE(movie.find(" subme=2 "), std::string::npos) << options;
    }
}

TEST(Save, KeyFramesComeAtTheDistanceAskedForOrEachFrameByDefault) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePattern(workspace, 6));
    ASSERT_EQ(RunTool(workspace, std::string("save in.0001.png -o a.mkv") + kH264).status, 0);
    EXPECT_EQ(Probe(workspace, "frame=key_frame", "a.mkv"), "1,1,1,1,1,1\n");
    ASSERT_EQ(RunTool(workspace, std::string("save in.0001.png -o a.mkv --key-frames 4") + kH264).status, 0);
    EXPECT_EQ(Probe(workspace, "frame=key_frame", "a.mkv"), "1,0,0,0,1,0\n");
}

TEST(Save, TheDataRateDecidesTheSize) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "n.%d.png", 1, 4, "320x240"));
    for (const char* arguments : {"-o a.mkv --data-rate 1200", "-o b.mkv --data-rate 10"})
        ASSERT_EQ(RunTool(workspace, std::string("save n.1.png ") + arguments + kH264).status, 0);
    EXPECT_GT(workspace.Read("a.mkv").size(), workspace.Read("b.mkv").size() * 2);
}

TEST(Save, AMovieKeepsItsRateAndItsTimeCode) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "in.mov", "-timecode 01:02:03:04 -c:v r210"));
    ASSERT_EQ(RunTool(workspace, std::string("save in.mov -o a.avi") + kAvi).status, 0);
    EXPECT_EQ(Probe(workspace, "stream=r_frame_rate,nb_read_packets", "a.avi"), "25/1,3\n");
    EXPECT_EQ(Probe(workspace, "format_tags=timecode", "a.avi"), "01:02:03:04\n");
}

TEST(Save, AnInterlacedMovieKeepsTheOrderOfItsFields) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "in.mov", "-vf setfield=tff -c:v r210"));
    ASSERT_EQ(RunTool(workspace, std::string("save in.mov -o a.mkv") + kH264).status, 0);
    EXPECT_EQ(Probe(workspace, "stream=field_order", "a.mkv"), "tb\n");
}

TEST(Save, WarnsOfARateThatTheControlRounds) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePattern(workspace, 2));
    const ProgramRun run =
        RunTool(workspace, std::string("save in.0001.png -o a.avi --fps 48000/1001") + kAvi);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "corvexvf: warning: a.avi: its frame rate is rounded to 5994/125\n");
    EXPECT_EQ(Probe(workspace, "stream=r_frame_rate", "a.avi"), "5994/125\n");
}

TEST(Save, TellsTheRateThatTheControlTakesARateFor) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePattern(workspace, 2));
    const ProgramRun run = RunTool(workspace, std::string("save in.0001.png -o a.avi --fps 2997/125") + kAvi);
    EXPECT_EQ(run.err, "corvexvf: warning: a.avi: its frame rate is rounded to 24000/1001\n");
    EXPECT_EQ(Probe(workspace, "stream=r_frame_rate", "a.avi"), "24000/1001\n");
}

TEST(Save, WarnsOfAKeyFrameDistanceBeyondTheControls) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePattern(workspace, 2));
    const ProgramRun run =
        RunTool(workspace, std::string("save in.0001.png -o a.avi --key-frames 65") + kAvi);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "corvexvf: warning: a.avi: has a key frame every 64 frames, which is the most\n");
}

TEST(Save, WarnsThatPixelsBecomeSquare) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "in.mov", "-vf setsar=16/15 -c:v r210"));
    const ProgramRun run = RunTool(workspace, std::string("save in.mov -o a.mkv") + kH264);
    EXPECT_EQ(run.err, "corvexvf: warning: a.mkv: its pixels are square; those of the input are 16/15\n");
    EXPECT_EQ(Probe(workspace, "stream=sample_aspect_ratio", "a.mkv"), "1:1\n");
}

TEST(Save, WarnsThatSoundIsLeftOut) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(Prepare(
        workspace, "ffmpeg -v error -f lavfi -i testsrc2=s=64x48:r=25 -f lavfi -i sine -t 0.1 -c:v r210 "
                   "-c:a pcm_s16le in.mov"));
    const ProgramRun run = RunTool(workspace, std::string("save in.mov -o a.mkv") + kH264);
    EXPECT_EQ(run.err, "corvexvf: warning: a.mkv: the sound of the input is left out\n");
}
