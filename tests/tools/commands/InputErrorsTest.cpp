// What is wrong with an input or an output is told in one line, with an exit status of its kind, and no part
// of a file is left.

#include "ToolRun.h"

namespace {

constexpr const char* kRgb = " --codec 'Uncompressed RGB 8-bit'";
constexpr const char* kYuv = " --codec 'Uncompressed YUV 422 8-bit'";

/// No file may grow beyond 16 KiB: what a full disk does to whoever writes.
ProgramRun RunWithFullDisk(const Workspace& workspace, const std::string& arguments) {
    return workspace.Shell(std::string("ulimit -f 16; '" CORVEXVF_PROGRAM "' ").append(arguments));
}

} // namespace

TEST(InputErrors, AMissingFileCannotBeOpened) {
    const Workspace workspace;
    ExpectFailure(RunTool(workspace, "info none.mov"), 3, "none.mov");
    ExpectFailure(RunTool(workspace, "decode none.mov -o a.%d.png"), 3, "none.mov");
    ExpectFailure(RunTool(workspace, "encode none.mov -o a.mov" + std::string(kRgb)), 3, "none.mov");
    ExpectFailure(RunTool(workspace, "info none.exr"), 3, "none.exr");
    EXPECT_FALSE(workspace.Has("a.mov"));
}

TEST(InputErrors, ADirectoryCannotBeOpened) {
    const Workspace workspace;
    ExpectFailure(RunTool(workspace, "info ."), 3, ".");
}

TEST(InputErrors, AFileThatIsNoMovieIsDamaged) {
    const Workspace workspace;
    workspace.Write("text.mov", "this is no movie");
    ExpectFailure(RunTool(workspace, "decode text.mov -o a.%d.png"), 4, "text.mov");
}

TEST(InputErrors, AnImageThatBreaksOffIsDamaged) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "n.%d.png", 1, 1));
    const std::string whole = workspace.Read("n.1.png");
    workspace.Write("n.1.png", whole.substr(0, whole.size() / 2));
    ExpectFailure(RunTool(workspace, "encode n.1.png -o a.mov" + std::string(kRgb)), 4, "n.1.png");
    EXPECT_FALSE(workspace.Has("a.mov"));
    ExpectNoPartFiles(workspace);
}

TEST(InputErrors, AFileWithoutVideoIsUnsupported) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(Prepare(workspace, "ffmpeg -v error -f lavfi -i sine=duration=0.1 sound.mov"));
    ExpectFailure(RunTool(workspace, "decode sound.mov -o a.%d.png"), 5, "sound.mov");
}

TEST(InputErrors, ATrackThatNobodyDecodesIsUnsupported) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.nut", "-c:v ffv1"));
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov", "-c:v qtrle"));
    ExpectFailure(RunTool(workspace, "decode a.nut -o a.%d.png"), 5, "a.nut");
    ExpectFailure(RunTool(workspace, "decode a.mov -o a.%d.png --via registry"), 5, "rle ");
}

TEST(InputErrors, ATrackThatNoBackEndClaimsIsNotReadThroughTheRegistryAlone) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov", "-c:v v408"));
    ExpectFailure(RunTool(workspace, "decode a.mov -o a.%d.png --via registry"), 5, "v408");
}

TEST(InputErrors, AHostFormatThatIsNotThereIsUnsupported) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.nut", "-c:v ffv1"));
    ExpectFailure(RunTool(workspace, "decode a.nut -o a.%d.png --via format"), 5, "a.nut: no host format");
}

TEST(InputErrors, AHostFormatThatDoesNotOpenTheFileIsNamed) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov"));
    // The decoder of this stand-in for a codec is in no build of FFmpeg.
    std::string bytes = workspace.Read("a.mov");
    bytes.replace(bytes.find("r210"), 4, "zzzz");
    workspace.Write("a.mov", bytes);
    ExpectFailure(RunTool(workspace, "decode a.mov -o a.%d.png --via format"), 5,
                  "FFMPEG Assorted formats doesn't open it");
}

TEST(InputErrors, AnUnknownCodecIsUnsupportedAndCloseNamesAreListed) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov"));
    const ProgramRun run = RunTool(workspace, "encode a.mov -o b.mov --codec 'uncompressed rgb 10 bit'");
    ExpectFailure(run, 5, "'Uncompressed RGB 10-bit'");
    EXPECT_FALSE(workspace.Has("b.mov"));
}

TEST(InputErrors, AHoleInASequenceListsTheMissingNumbers) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "n.%04d.png", 8, 6));
    ASSERT_NO_FATAL_FAILURE(Prepare(workspace, "rm n.0009.png n.0011.png n.0012.png"));
    ExpectFailure(RunTool(workspace, "encode n.####.png -o a.mov" + std::string(kRgb)), 3, "9, 11-12");
    EXPECT_FALSE(workspace.Has("a.mov"));
}

TEST(InputErrors, ASequenceOfDifferingSizesNamesTheFile) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "n.%d.png", 1, 3));
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "n.%d.png", 4, 1, "32x32"));
    ExpectFailure(RunTool(workspace, "encode n.@.png -o a.mov" + std::string(kRgb)), 4, "n.4.png");
    EXPECT_FALSE(workspace.Has("a.mov"));
    ExpectNoPartFiles(workspace);
}

TEST(InputErrors, AnEmptyImageIsDamaged) {
    const Workspace workspace;
    workspace.Write("n.png", "");
    const ProgramRun run = RunTool(workspace, "encode n.png -o a.mov" + std::string(kRgb));
    ExpectFailure(run, 4, "n.png");
}

TEST(InputErrors, AnOutputInADirectoryThatIsNotThereCannotBeWritten) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov"));
    ExpectFailure(RunTool(workspace, "decode a.mov -o none/a.%d.png"), 6, "none/a.");
    ExpectFailure(RunTool(workspace, "encode a.mov -o none/b.mov" + std::string(kRgb)), 6, "none/b.mov");
}

TEST(InputErrors, AFullDiskLeavesNoImageUnderItsName) {
    const Workspace workspace;
    for (const char* extension : {"exr", "png", "tif", "dpx"}) {
        ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov", "-y -c:v r210", 2, "640x480"));
        const std::string output = std::string("o.%d.").append(extension);
        ExpectFailure(RunWithFullDisk(workspace, "decode a.mov -o " + output), 6, extension);
        EXPECT_FALSE(workspace.Has(std::string("o.0.").append(extension)));
        ExpectNoPartFiles(workspace);
    }
}

TEST(InputErrors, AFullDiskLeavesNoMovieUnderItsName) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov", "-c:v r210", 2, "640x480"));
    for (const char* name : {"b.mov", "b.avi", "b.mkv"}) {
        const ProgramRun run =
            RunWithFullDisk(workspace, std::string("encode a.mov -o ").append(name) + kYuv);
        ExpectFailure(run, 6, name);
        EXPECT_FALSE(workspace.Has(name));
        ExpectNoPartFiles(workspace);
    }
}

TEST(InputErrors, AFullDiskKeepsAnOlderFileOfTheSameName) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov", "-c:v r210", 2, "640x480"));
    workspace.Write("b.mov", "older");
    ExpectFailure(RunWithFullDisk(workspace, "encode a.mov -o b.mov" + std::string(kRgb)), 6, "b.mov");
    EXPECT_EQ(workspace.Read("b.mov"), "older");
}

TEST(InputErrors, AMovieThatBreaksOffIsDecodedAsFarAsItGoes) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(
        MakeMovie(workspace, "whole.avi", "-c:v rawvideo -pix_fmt uyvy422 -tag:v UYVY", 6));
    ASSERT_NO_FATAL_FAILURE(Prepare(workspace, "head -c 30000 whole.avi >cut.avi"));
    const ProgramRun run = RunTool(workspace, "decode cut.avi -o a.%d.png");
    EXPECT_TRUE(run.status == 0 || run.status == 4) << run.status << run.err;
    EXPECT_TRUE(workspace.Has("a.0.png"));
    EXPECT_FALSE(workspace.Has("a.5.png"));
    ExpectNoPartFiles(workspace);
}
