// Saves that fail: one line, an exit status of their kind, and no part of a file.

#include "ToolRun.h"

#include "ffmpeg/StandIns.h"

namespace {

constexpr const char* kH264 = " --container Matroska --encoder 'H.264 [High]'";

/// Saves a sequence of three images.
ProgramRun SaveSequence(const Workspace& workspace, const std::string& arguments) {
    MakeImages(workspace, "in.%d.png", 1, 3);
    return RunTool(workspace, "save in.1.png " + arguments);
}

/// Expects a failure that leaves nothing of the file.
void ExpectNoFile(const Workspace& workspace, const ProgramRun& run, int status, const std::string& words,
                  const std::string& file) {
    ExpectFailure(run, status, words);
    EXPECT_FALSE(workspace.Has(file));
    ExpectNoPartFiles(workspace);
}

/// No file may grow beyond 16 KiB: what a full disk does to whoever writes.
ProgramRun SaveWithFullDisk(const Workspace& workspace, const std::string& arguments) {
    return workspace.Shell(std::string("ulimit -f 16; '" CORVEXVF_PROGRAM "' save ").append(arguments));
}

} // namespace

TEST(SaveErrors, WrongUsageIsRefusedWithOneLine) {
    const Workspace workspace;
    for (const char* arguments :
         {"save", "save a.mov -o b.mkv", "save a.mov -o b.mkv --container Matroska",
          "save a.mov -o b.mkv --container Matroska --encoder HEVC --fps 0",
          "save a.mov -o b.mkv --container Matroska --encoder HEVC --data-rate -1",
          "save a.mov -o b.mkv --container Matroska --encoder HEVC --key-frames many"})
        ExpectFailure(RunTool(workspace, arguments), 2, "");
}

TEST(SaveErrors, AnUnknownContainerIsWrongUsageAndTheKnownOnesAreNamed) {
    const Workspace workspace;
    const ProgramRun run = SaveSequence(workspace, "-o a.mkv --container matroska --encoder HEVC");
    ExpectNoFile(workspace, run, 2, "--container matroska: no such container; there are '3GP", "a.mkv");
    EXPECT_NE(run.err.find(", 'Matroska', 'NUT', "), std::string::npos) << run.err;
}

TEST(SaveErrors, AnEncoderThatTheContainerLacksIsWrongUsageAndItsOwnAreNamed) {
    const Workspace workspace;
    ExpectNoFile(
        workspace, SaveSequence(workspace, "-o a.ogg --container Ogg --encoder HEVC"), 2,
        "--encoder HEVC: no encoder of 'Ogg', which has 'Theora [420]', 'Theora [422]', 'Theora [444]'",
        "a.ogg");
}

TEST(SaveErrors, WithoutFFmpegASaveIsUnsupportedAndTheReasonIsTold) {
    const Workspace workspace;
    const EnvironmentVariable variable("CORVEX_FFMPEG_DIR", workspace.Path("").c_str());
    ExpectNoFile(workspace, SaveSequence(workspace, std::string("-o a.mkv") + kH264), 5,
                 "libavcodec.so.59 not found in " + workspace.Path(""), "a.mkv");
}

TEST(SaveErrors, ASizeThatTheEncoderRefusesIsUnsupportedAndTheEncodersWordsAreTold) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(
        Prepare(workspace, "ffmpeg -v error -f lavfi -i color=red:s=63x48,format=rgb24 -frames:v 1 n.1.png"));
    const ProgramRun run = RunTool(workspace, std::string("save n.1.png -o a.mkv") + kH264);
    ExpectNoFile(workspace, run, 5, "a.mkv: libx264: width not divisible by 2 (63x48)", "a.mkv");
}

TEST(SaveErrors, OptionsThatTheEncoderRefusesAreUnsupported) {
    const Workspace workspace;
    ExpectNoFile(workspace, SaveSequence(workspace, std::string("-o a.mkv --options preset=best") + kH264), 5,
                 "a.mkv: libx264: Error setting preset/tune best/", "a.mkv");
}

TEST(SaveErrors, AnOptionTextOfSeparatorsIsNoOption) {
    const Workspace workspace;
    EXPECT_EQ(SaveSequence(workspace, std::string("-o a.mkv --options ',;:|,=,,x'") + kH264).status, 0);
}

TEST(SaveErrors, AStreamThatTheContainerRefusesIsUnsupported) {
    const Workspace workspace;
    ExpectNoFile(workspace,
                 SaveSequence(workspace, "-o a.mp4 --container 'PSP MP4 (MPEG-4 Part 14)' --encoder MPEG4"),
                 5, "a.mp4: psp: PSP mode need one video and one audio stream", "a.mp4");
}

TEST(SaveErrors, AContainerOfSeveralFilesIsUnsupported) {
    const Workspace workspace;
    const ProgramRun run =
        SaveSequence(workspace, "-o a.m3u8 --container 'Apple HTTP Live Streaming' --encoder 'H.264 [High]'");
    ExpectNoFile(workspace, run, 5, "Apple HTTP Live Streaming: it doesn't make one file", "a.m3u8");
    EXPECT_EQ(workspace.Shell("ls *.ts").out, "");
}

TEST(SaveErrors, AnInputThatCannotBeReadLeavesNoFile) {
    const Workspace workspace;
    ExpectNoFile(workspace, RunTool(workspace, std::string("save none.mov -o a.mkv") + kH264), 3, "none.mov",
                 "a.mkv");
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "n.%d.png", 1, 2));
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "n.%d.png", 3, 1, "32x32"));
    ExpectNoFile(workspace, RunTool(workspace, std::string("save n.1.png -o a.mkv") + kH264), 4, "n.3.png",
                 "a.mkv");
}

TEST(SaveErrors, AnOutputThatIsADirectoryOrInNoneCannotBeWritten) {
    const Workspace workspace;
    ExpectFailure(SaveSequence(workspace, std::string("-o none/a.mkv") + kH264), 6, "none/a.mkv");
    ExpectFailure(RunTool(workspace, std::string("save in.1.png -o .") + kH264), 6, ".: ");
}

TEST(SaveErrors, AFullDiskLeavesNoMovieUnderItsName) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "in.%d.png", 1, 6, "192x128"));
    for (const char* arguments : {"-o a.mkv --container Matroska --encoder 'H.264 [High]'",
                                  "-o a.mov --container 'QuickTime / MOV' --encoder 'MPEG2 [422]'",
                                  "-o a.avi --container 'AVI (Audio Video Interleaved)' --encoder MPEG4",
                                  "-o a.m2v --container 'raw MPEG-2 video' --encoder MPEG2"}) {
        const ProgramRun run = SaveWithFullDisk(workspace, std::string("in.1.png ") + arguments);
        ExpectNoFile(workspace, run, 6, std::string(arguments, 3, 5) + ": File too large",
                     std::string(arguments, 3, 5));
    }
}

TEST(SaveErrors, AFullDiskKeepsAnOlderFileOfTheSameName) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "in.%d.png", 1, 6, "192x128"));
    workspace.Write("a.mkv", "older");
    ExpectFailure(SaveWithFullDisk(workspace, std::string("in.1.png -o a.mkv") + kH264), 6, "a.mkv");
    EXPECT_EQ(workspace.Read("a.mkv"), "older");
}

TEST(SaveErrors, ACancelledSaveLeavesNoFile) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "in.mov", "-c:v r210", 60, "640x360"));
    // The signal is sent once the first step is done.
    const ProgramRun run =
        workspace.Shell(std::string("mkfifo pipe; '" CORVEXVF_PROGRAM "' save in.mov -o a.mkv") + kH264 +
                        " --progress json 2>pipe & pid=$!; exec 3<pipe; read line <&3; kill -INT $pid; "
                        "cat <&3 >&2; wait $pid");
    EXPECT_EQ(run.status, 130);
    EXPECT_NE(run.err.find("corvexvf: in.mov: cancelled\n"), std::string::npos) << run.err;
    EXPECT_FALSE(workspace.Has("a.mkv"));
    ExpectNoPartFiles(workspace);
}
