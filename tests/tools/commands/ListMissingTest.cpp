// The command without a library that stands behind a back-end: that is gone, with the reason told, and all
// else works.

#include "tools/commands/ToolRun.h"

#include <algorithm>

namespace {

using Json = nlohmann::json;

/// Runs the command where a library can't be loaded: a file that is none comes first.
ProgramRun RunWithout(const std::string& library, const Workspace& workspace, const std::string& arguments) {
    workspace.Write(library, "");
    return workspace.Shell("LD_LIBRARY_PATH='" + workspace.Path("") + "' '" CORVEXVF_PROGRAM "' " +
                           arguments);
}

ProgramRun RunWithoutDNX(const Workspace& workspace, const std::string& arguments) {
    return RunWithout("libDNxHR.so", workspace, arguments);
}

/// What `list` tells of a back-end.
Json BackEnd(const ProgramRun& run, const std::string& name) {
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const Json list = Json::parse(run.out, nullptr, false)["result"]["backEnds"];
    const auto row = std::ranges::find_if(list, [&](const Json& entry) { return entry["name"] == name; });
    return row != list.end() ? *row : Json();
}

/// A back-end, and the library that stands behind it.
struct BackEndLibrary {
    std::string backEnd;
    std::string library;
};

void PrintTo(const BackEndLibrary& row, std::ostream* out) { *out << row.backEnd; }

class ListWithout : public testing::TestWithParam<BackEndLibrary> {};

TEST_P(ListWithout, SaysWhyTheBackEndIsMissing) {
    const Workspace workspace;
    const Json row = BackEnd(RunWithout(GetParam().library, workspace, "list --json"), GetParam().backEnd);
    ASSERT_TRUE(row.is_object());
    EXPECT_EQ(row["available"], false);
    EXPECT_NE(row["reason"].get<std::string>().find(GetParam().library), std::string::npos) << row;
}

TEST_P(ListWithout, HasTheBackEndWhereItsLibraryIs) {
    const Workspace workspace;
    const Json row = BackEnd(RunTool(workspace, "list --json"), GetParam().backEnd);
    ASSERT_TRUE(row.is_object());
    EXPECT_EQ(row["available"], true);
    EXPECT_FALSE(row.contains("reason")) << row;
}

INSTANTIATE_TEST_SUITE_P(All, ListWithout,
                         testing::Values(BackEndLibrary{"Avid DNX", "libDNxHR.so"},
                                         BackEndLibrary{"Media Foundation", "libmfplat.so"},
                                         BackEndLibrary{"Ravenlight Raw", "libRavenlightRawAPI.so"}));

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
