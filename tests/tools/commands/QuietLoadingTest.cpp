// Standard output carries the result alone, whatever it is: the module writes the version of FFmpeg to it
// while it loads.

#include "ToolRun.h"

#include "ffmpeg/StandIns.h"

namespace {

constexpr const char* kList = "'" CORVEXVF_PROGRAM "' list --json";

/// Expects one JSON object with its line end and not a byte besides.
void ExpectOneObject(const std::string& out) {
    ASSERT_FALSE(out.empty());
    EXPECT_EQ(out.front(), '{') << out.substr(0, 100);
    EXPECT_EQ(out.substr(out.size() - 2), "}\n");
    EXPECT_TRUE(nlohmann::json::accept(out));
}

} // namespace

TEST(QuietLoading, AFileHasTheResultAlone) {
    const Workspace workspace;
    const ProgramRun run = RunTool(workspace, "list --json");
    EXPECT_EQ(run.status, 0);
    ExpectOneObject(run.out);
    EXPECT_EQ(run.err, "");
}

TEST(QuietLoading, APipeHasTheResultAlone) {
    const Workspace workspace;
    const ProgramRun run = workspace.Shell(std::string(kList) + " | cat");
    ExpectOneObject(run.out);
    EXPECT_EQ(run.err, "");
}

TEST(QuietLoading, AFileThatIsAppendedToKeepsWhatItHas) {
    const Workspace workspace;
    workspace.Write("a.txt", "before\n");
    EXPECT_EQ(workspace.Shell(std::string(kList) + " >>a.txt").status, 0);
    const std::string text = workspace.Read("a.txt");
    ASSERT_EQ(text.substr(0, 7), "before\n");
    ExpectOneObject(text.substr(7));
}

TEST(QuietLoading, ATerminalShowsTheResultAlone) {
    const Workspace workspace;
    const ProgramRun run = workspace.Shell("script -qec \"'" CORVEXVF_PROGRAM "' list formats\" /dev/null");
    EXPECT_EQ(run.out.find("Formats of the host"), 0U) << run.out;
}

TEST(QuietLoading, AClosedStandardOutputCannotBeWritten) {
    const Workspace workspace;
    ExpectFailure(workspace.Shell(std::string(kList) + " >&-"), 6, "standard output");
    ExpectFailure(workspace.Shell(std::string(kList) + " >&- <&-"), 6, "standard output");
}

TEST(QuietLoading, AClosedStandardInputDoesNotMatter) {
    const Workspace workspace;
    const ProgramRun run = workspace.Shell(std::string(kList) + " <&-");
    EXPECT_EQ(run.status, 0);
    ExpectOneObject(run.out);
}

TEST(QuietLoading, AnFFmpegThatIsRefusedSaysSoOnceOnStandardError) {
    const StandIns libraries;
    const ReportedVersion version(57, 107, 100);
    const EnvironmentVariable directory("CORVEX_FFMPEG_DIR", libraries.Directory().c_str());
    const Workspace workspace;
    const ProgramRun run = RunTool(workspace, "list --json");
    EXPECT_EQ(run.status, 0);
    ExpectOneObject(run.out);
    EXPECT_EQ(run.err, "Ignoring unsupported FFmpeg AVCodec Ver: 57.107.100\n");
}
