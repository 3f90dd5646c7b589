// Binding as a process does it: once. Each test but the last runs a program that binds.

#include "ffmpeg/FFmpegBinding.h"
#include "ffmpeg/StandIns.h"

#include <gtest/gtest.h>

namespace {

/// Runs the program with its steps; the environment names no directory unless a step does.
ProgramRun Load(const std::string& steps, const std::string& environment = "") {
    const Workspace workspace;
    return workspace.Shell("env -u CORVEX_FFMPEG_DIR " + environment + " '" CORVEX_FFMPEG_LOADER "' " +
                           steps);
}

std::string From(const StandIns& libraries) { return "CORVEX_FFMPEG_DIR=" + libraries.Directory() + " "; }

TEST(LoadFFmpeg, TheVariableNamesTheDirectory) {
    const StandIns libraries;
    const ReportedVersion version(58, 54, 100);
    const ProgramRun run = Load(From(libraries) + "load");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "FFmpeg AVCodec Ver: 58.54.100\n");
    EXPECT_EQ(run.err, "bound\n");
}

TEST(LoadFFmpeg, AVariableThatNamesADirectoryWithoutTheLibrariesFailsSilently) {
    const ProgramRun run = Load("CORVEX_FFMPEG_DIR=/no/such/directory load");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "failed\n");
}

TEST(LoadFFmpeg, LaterCallsGiveTheOutcomeOfTheFirst) {
    const StandIns libraries;
    const ReportedVersion version(60, 0, 0);
    const ProgramRun run = Load(From(libraries) + "load CORVEX_FFMPEG_DIR=/no/such/directory load load");
    EXPECT_EQ(run.out, "FFmpeg AVCodec Ver: 60.0.0\n");
    EXPECT_EQ(run.err, "bound\nbound\nbound\n");
}

TEST(LoadFFmpeg, AFailedBindingIsNotTriedAgain) {
    const StandIns libraries;
    const ProgramRun run = Load("CORVEX_FFMPEG_DIR=/no/such/directory load " + From(libraries) + "load");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "failed\nfailed\n");
}

TEST(LoadFFmpeg, ARefusedVersionIsSaidOnce) {
    const StandIns libraries;
    const ReportedVersion version(57, 107, 100);
    const ProgramRun run = Load(From(libraries) + "load load");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "Ignoring unsupported FFmpeg AVCodec Ver: 57.107.100\nfailed\nfailed\n");
}

TEST(LoadFFmpeg, ThreadsThatCallItAtOncePrintTheVersionLineOnce) {
    const StandIns libraries;
    const ReportedVersion version(59, 0, 1);
    const ProgramRun run = Load(From(libraries) + "together");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "FFmpeg AVCodec Ver: 59.0.1\n");
    EXPECT_EQ(run.err, "bound\nbound\nbound\nbound\n");
}

TEST(LoadFFmpeg, AnExceptionLeavesTheNextCallerToTryAgain) {
    const StandIns libraries;
    const ReportedVersion version(59, 0, 2);
    const ProgramRun run = Load(From(libraries) + "starved load");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "FFmpeg AVCodec Ver: 59.0.2\n");
    EXPECT_TRUE(run.err.starts_with("out of memory\n")) << run.err;
    EXPECT_TRUE(run.err.ends_with("out of memory\nbound\nbound\n")) << run.err;
}

TEST(LoadFFmpeg, WithoutADirectoryTheSystemsOwnSearchDecides) {
    const StandIns libraries;
    const ReportedVersion version(59, 0, 3);
    const ProgramRun run = Load("load", "LD_LIBRARY_PATH=" + libraries.Directory());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "FFmpeg AVCodec Ver: 59.0.3\n");
    EXPECT_EQ(run.err, "bound\n");
}

TEST(LoadFFmpeg, TheInstalledFFmpegBindsAndItsFunctionsRun) {
    ASSERT_TRUE(LoadFFmpeg());
    EXPECT_EQ(FFmpeg().avcodec_version() >> 16, static_cast<unsigned>(LIBAVCODEC_VERSION_MAJOR));
    EXPECT_STREQ(FFmpeg().avcodec_get_name(AV_CODEC_ID_PRORES), "prores");
    AVFrame* frame = FFmpeg().av_frame_alloc();
    ASSERT_NE(frame, nullptr);
    FFmpeg().av_frame_free(&frame);
    EXPECT_EQ(frame, nullptr);
}

} // namespace
