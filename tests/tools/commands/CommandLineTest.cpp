// The command line: usage errors, JSON answers, frame numbers, sequences, progress and cancelling.

#include "ToolRun.h"

namespace {

using Json = nlohmann::json;

constexpr const char* kEncode = "encode a.mov -o b.mov --codec 'Uncompressed RGB 10-bit'";

Json JsonOf(const ProgramRun& run) {
    EXPECT_TRUE(Json::accept(run.out)) << run.out << run.err;
    return Json::parse(run.out, nullptr, false);
}

} // namespace

TEST(CommandLine, RefusesWrongUsageWithOneLine) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov"));
    for (const char* arguments :
         {"", "unknown", "info", "list nothing", "decode a.mov", "decode a.mov -o a.%d.png --frames 3-1",
          "decode a.mov -o a.%d.png --depth 12", "decode a.mov -o a.%d.png --via magic",
          "decode a.mov -o a.%d.jpg", "decode a.mov -o a.%d.png --depth half",
          "decode a.mov -o a.%d.png --odd", "decode a.mov -o a.%d.png --frames 9", "encode a.mov -o b.mov",
          "encode a.mov -o b.mov --codec 'Uncompressed RGB 10-bit' --fps zero",
          "encode a.mov -o b.mov --codec 'Uncompressed RGB 10-bit' --field-order odd"}) {
        const ProgramRun run = RunTool(workspace, arguments);
        ExpectFailure(run, 2, "");
    }
}

TEST(CommandLine, RefusesAPatternWithoutANumberForMoreThanOneFrame) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov"));
    ExpectFailure(RunTool(workspace, "decode a.mov -o a.png"), 2, "a.png");
    EXPECT_EQ(RunTool(workspace, "decode a.mov -o a.png --frames 1").status, 0);
    EXPECT_TRUE(workspace.Has("a.png"));
}

TEST(CommandLine, GivesHelpOnStandardOutput) {
    const Workspace workspace;
    const ProgramRun run = RunTool(workspace, "decode --help");
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("no transfer conversion"), std::string::npos);
    EXPECT_EQ(run.err, "");
}

TEST(CommandLine, AnswersAsOneJsonObjectAlsoForAUsageError) {
    const Workspace workspace;
    for (const char* arguments : {"decode --json", "--json", "list nothing --json"}) {
        const ProgramRun run = RunTool(workspace, arguments);
        const Json object = JsonOf(run);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(object["ok"], false);
        EXPECT_EQ(object["errors"].size(), 1U);
        EXPECT_TRUE(object["warnings"].is_array());
    }
}

TEST(CommandLine, AnswersAsOneJsonObjectForAFailureWithTheSameStatus) {
    const Workspace workspace;
    const ProgramRun run = RunTool(workspace, "info none.mov --json");
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(JsonOf(run)["ok"], false);
    EXPECT_NE(run.err.find("none.mov"), std::string::npos);
}

TEST(CommandLine, ListsDecodersEncodersAndTheReasonsOfMissingBackEnds) {
    const Workspace workspace;
    const ProgramRun run = RunTool(workspace, "list --json");
    const Json result = JsonOf(run)["result"];
    const auto claims = [&](const char* fourCC) {
        return std::any_of(result["decoders"].begin(), result["decoders"].end(), [&](const Json& row) {
            return row["fourCC"] == fourCC && row["backEnds"][0] == "Uncompressed";
        });
    };
    for (const char* fourCC :
         {"24", "32", "2Vuy", "2vuy", "BGRA", "b64a", "r210", "raw ", "rgb ", "uyvy", "v210", "v216", "yuv2"})
        EXPECT_TRUE(claims(fourCC)) << fourCC;
    EXPECT_GE(result["encoders"].size(), 8U);
    for (const Json& backEnd : result["backEnds"])
        EXPECT_EQ(backEnd["available"] == false, backEnd.contains("reason")) << backEnd;
}

TEST(CommandLine, ListsOneSectionAlone) {
    const Workspace workspace;
    const Json result = JsonOf(RunTool(workspace, "list encoders --json"))["result"];
    EXPECT_TRUE(result.contains("encoders"));
    EXPECT_FALSE(result.contains("decoders"));
    EXPECT_NE(RunTool(workspace, "list encoders").out.find("Uncompressed ARGB 16 bit"), std::string::npos);
}

TEST(CommandLine, TellsAllOfAMovieWithTheSourceOfEachColourValue) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov",
                                      "-c:v v210 -timecode 01:02:03:04 -colorspace bt709 -color_range tv "
                                      "-color_primaries bt709 -color_trc bt709"));
    const Json result = JsonOf(RunTool(workspace, "info a.mov --json"))["result"];
    EXPECT_EQ(result["fourCC"], "v210");
    EXPECT_EQ(result["width"], 64);
    EXPECT_EQ(result["height"], 48);
    EXPECT_EQ(result["frameCount"], 3);
    EXPECT_EQ(result["frameRate"], "25/1");
    EXPECT_EQ(result["timeCode"], "01:02:03:04");
    EXPECT_EQ(result["decoder"]["backEnds"], Json::array({"Uncompressed"}));
    EXPECT_EQ(result["color"]["matrix"]["source"], "container");
    EXPECT_EQ(result["color"]["matrix"]["value"], 1);
    for (const char* value : {"range", "matrix", "primaries", "transfer"})
        EXPECT_TRUE(result["color"][value].contains("source")) << value;
}

TEST(CommandLine, TellsSizeDepthAndRangeOfImages) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "n.%04d.png", 5, 3));
    const Json result = JsonOf(RunTool(workspace, "info n.####.png --json"))["result"];
    EXPECT_EQ(result["kind"], "images");
    EXPECT_EQ(result["width"], 64);
    EXPECT_EQ(result["channels"], Json::array({"R", "G", "B"}));
    EXPECT_EQ(result["depth"], "8 bits");
    EXPECT_EQ(result["firstNumber"], 5);
    EXPECT_EQ(result["frameCount"], 3);
    EXPECT_EQ(result["range"]["R"].size(), 2U);
}

TEST(CommandLine, NumbersImagesAsTheMoviesFrames) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov", "-c:v r210", 12));
    const ProgramRun run = RunTool(workspace, "decode a.mov -o o.@@@.png --frames 0-1,5,10-");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(workspace.Shell("ls o.*").out, "o.000.png\no.001.png\no.005.png\no.010.png\no.011.png\n");
}

TEST(CommandLine, KeepsTheNumbersOfASequenceThatBecomesAnother) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "n.%04d.png", 1001, 3));
    EXPECT_EQ(RunTool(workspace, "decode n.1002.png -o o.%04d.exr --frames 1002-").status, 0);
    EXPECT_EQ(workspace.Shell("ls o.*").out, "o.1002.exr\no.1003.exr\n");
}

TEST(CommandLine, FillsHolesIfAskedTo) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "n.%d.png", 1, 4));
    ASSERT_NO_FATAL_FAILURE(Prepare(workspace, "rm n.2.png n.3.png"));
    EXPECT_EQ(RunTool(workspace, "decode n.@.png -o held.%d.png --depth 8 --missing hold").status, 0);
    EXPECT_EQ(workspace.Read("held.2.png"), workspace.Read("held.1.png"));
    EXPECT_EQ(RunTool(workspace, "decode n.@.png -o black.%d.png --missing black").status, 0);
    const Json result = JsonOf(RunTool(workspace, "info black.2.png --json"))["result"];
    EXPECT_EQ(JsonOf(RunTool(workspace, "encode n.@.png -o a.mov --missing black --json "
                                        "--codec 'Uncompressed RGB 8-bit'"))["result"]["frames"],
              4);
    EXPECT_EQ(workspace.Shell("ffmpeg -v error -i black.2.png -f rawvideo - | tr -d '\\000' | wc -c").out,
              "0\n");
    EXPECT_EQ(result["width"], 64);
}

TEST(CommandLine, TakesAStillImageForASequenceOfOne) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "n.%d.png", 1, 1));
    ASSERT_NO_FATAL_FAILURE(Prepare(workspace, "mv n.1.png still.png"));
    const Json result = JsonOf(
        RunTool(workspace, "encode still.png -o a.mov --json --codec 'Uncompressed RGB 8-bit'"))["result"];
    EXPECT_EQ(result["frames"], 1);
    EXPECT_EQ(result["frameRate"], "24/1");
}

TEST(CommandLine, CarriesRateColoursTimeCodeAndFieldOrderFromMovieToMovie) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov",
                                      "-c:v v210 -timecode 01:02:03:04 -field_order tt -colorspace smpte170m "
                                      "-color_primaries smpte170m -color_trc bt709"));
    const ProgramRun run = RunTool(workspace, "encode a.mov -o b.mov --codec 'Uncompressed YUV 422 8-bit'");
    ASSERT_EQ(run.status, 0) << run.err;
    const Json before = JsonOf(RunTool(workspace, "info a.mov --json"))["result"];
    const Json after = JsonOf(RunTool(workspace, "info b.mov --json"))["result"];
    for (const char* key : {"frameRate", "timeCode", "fieldOrder", "frameCount"})
        EXPECT_EQ(before[key], after[key]) << key;
    for (const char* key : {"matrix", "primaries", "transfer"})
        EXPECT_EQ(before["color"][key], after["color"][key]) << key;
}

TEST(CommandLine, PrefersTheRateAndFieldOrderThatAreGiven) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov"));
    ASSERT_EQ(RunTool(workspace, std::string(kEncode) + " --fps 29.97 --field-order bff").status, 0);
    const Json result = JsonOf(RunTool(workspace, "info b.mov --json"))["result"];
    EXPECT_EQ(result["frameRate"], "30000/1001");
    EXPECT_EQ(result["fieldOrder"]["value"], 3);
}

TEST(CommandLine, TagsYuvMoviesOfImagesAsBt709InVideoRange) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "n.%d.png", 1, 1));
    ASSERT_EQ(RunTool(workspace, "encode n.1.png -o a.mov --codec 'Uncompressed YUV 422 10-bit'").status, 0);
    const Json color = JsonOf(RunTool(workspace, "info a.mov --json"))["result"]["color"];
    EXPECT_EQ(color["matrix"]["value"], 1);
    EXPECT_EQ(color["matrix"]["source"], "container");
    EXPECT_EQ(color["primaries"]["value"], 1);
    EXPECT_EQ(color["transfer"]["value"], 1);
    EXPECT_EQ(color["range"]["value"], 1);
}

TEST(CommandLine, KeepsEveryBitOfA16BitMovieThatIsEncodedAgain) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov", "-c:v rawvideo -pix_fmt rgba64be -tag:v b64a"));
    ASSERT_EQ(RunTool(workspace, "encode a.mov -o b.mov --codec 'Uncompressed ARGB 16 bit'").status, 0);
    ASSERT_NO_FATAL_FAILURE(
        Prepare(workspace, "for f in a b; do ffmpeg -v error -i $f.mov -c copy -f rawvideo $f.raw; done"));
    EXPECT_GT(workspace.Read("a.raw").size(), 0U);
    EXPECT_TRUE(workspace.Read("a.raw") == workspace.Read("b.raw"));
}

TEST(CommandLine, WarnsThatAnEncoderCarriesNoAlpha) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov"));
    const Json object = JsonOf(RunTool(workspace, std::string(kEncode) + " --alpha --json"));
    EXPECT_EQ(object["ok"], true);
    EXPECT_EQ(object["warnings"].size(), 1U);
}

TEST(CommandLine, GivesOneJsonLinePerStepAndNothingWithoutATerminal) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov"));
    EXPECT_EQ(RunTool(workspace, kEncode).err, "");
    const ProgramRun run = RunTool(workspace, std::string(kEncode) + " --progress json");
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 3);
    EXPECT_EQ(Json::parse(run.err.substr(0, run.err.find('\n')))["total"], 3);
}

TEST(CommandLine, ShowsABarOnATerminal) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov"));
    const ProgramRun run =
        workspace.Shell(std::string("script -qec \"'" CORVEXVF_PROGRAM "' ") + kEncode + "\" /dev/null");
    EXPECT_NE(run.out.find("] 3/3"), std::string::npos) << run.out << run.err;
}

TEST(CommandLine, IsCancelledBySignalsWithoutLeavingParts) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(
        MakeMovie(workspace, "a.mov", "-c:v rawvideo -pix_fmt uyvy422 -tag:v 2vuy", 400, "960x540"));
    const std::string tool = "'" CORVEXVF_PROGRAM "' ";
    for (const char* signal : {"INT", "TERM"}) {
        for (const char* job : {kEncode, "decode a.mov -o o.%d.exr"}) {
            // The signal is sent once the first step is done.
            const ProgramRun run = workspace.Shell("mkfifo pipe; " + tool + job +
                                                   " --progress json 2>pipe & pid=$!; "
                                                   "exec 3<pipe; read line <&3; kill -" +
                                                   signal +
                                                   " $pid; cat <&3 >&2; wait $pid; "
                                                   "status=$?; rm pipe; exit $status");
            EXPECT_EQ(run.status, 130) << job;
            EXPECT_NE(run.err.find("cancelled"), std::string::npos) << run.err;
            EXPECT_FALSE(workspace.Has("b.mov"));
            ExpectNoPartFiles(workspace);
        }
    }
}

TEST(CommandLine, CannotWriteItsResultToAFullDisk) {
    const Workspace workspace;
    EXPECT_EQ(workspace.Shell("'" CORVEXVF_PROGRAM "' list >/dev/full").status, 6);
}
