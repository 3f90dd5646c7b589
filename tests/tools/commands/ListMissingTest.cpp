// The command without the library of DNx: the back-end is gone, with the reason told, and all else works.

#include "tools/commands/ToolRun.h"

#include <algorithm>

namespace {

using Json = nlohmann::json;

/// Runs the command where the library can't be loaded: a file that is none comes first.
ProgramRun RunWithoutDNX(const Workspace& workspace, const std::string& arguments) {
    workspace.Write("libDNxHR.so", "");
    return workspace.Shell("LD_LIBRARY_PATH='" + workspace.Path("") + "' '" CORVEXVF_PROGRAM "' " +
                           arguments);
}

TEST(ListWithoutDNX, SaysWhyTheBackEndIsMissing) {
    const Workspace workspace;
    const ProgramRun run = RunWithoutDNX(workspace, "list --json");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const Json result = Json::parse(run.out)["result"];
    const auto row = std::ranges::find_if(result["backEnds"],
                                          [](const Json& entry) { return entry["name"] == "Avid DNX"; });
    ASSERT_NE(row, result["backEnds"].end());
    EXPECT_EQ((*row)["available"], false);
    EXPECT_NE((*row)["reason"].get<std::string>().find("libDNxHR.so"), std::string::npos) << *row;
}

TEST(ListWithoutDNX, HasNoEncoderAndNoDecoderOfDNx) {
    const Workspace workspace;
    const ProgramRun run = RunWithoutDNX(workspace, "list");
    EXPECT_EQ(run.out.find("DNxH"), run.out.find("DNxHR.so")) << run.out;
    EXPECT_EQ(run.out.find("AVdn"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Apple ProRes 422 HQ"), std::string::npos) << run.out;
}

TEST(ListWithoutDNX, EncodingAndDecodingWithAnotherBackEndWorks) {
    const Workspace workspace;
    MakeImages(workspace, "in.%04d.png", 1, 1);
    EXPECT_EQ(RunWithoutDNX(workspace, "encode in.%04d.png -o a.mov --codec 'Apple ProRes 422'").status, 0);
    EXPECT_EQ(RunWithoutDNX(workspace, "decode a.mov -o out.%04d.png").status, 0);
    EXPECT_TRUE(workspace.Has("out.0000.png") || workspace.Has("out.0001.png"));
}

} // namespace
