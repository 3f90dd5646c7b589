// The containers that the command lists.

#include "ToolRun.h"

#include "ffmpeg/EncoderCatalogue.h"
#include "ffmpeg/StandIns.h"

namespace {

using Json = nlohmann::json;

Json ListContainers(const Workspace& workspace) {
    const ProgramRun run = RunTool(workspace, "list containers --json");
    EXPECT_EQ(run.status, 0) << run.err;
    return Json::parse(run.out, nullptr, false)["result"]["containers"];
}

} // namespace

TEST(ListContainers, HasEveryContainerOfTheCatalogueWithItsEncodersInOrder) {
    const Workspace workspace;
    const Json list = ListContainers(workspace);
    std::string last;
    for (const Json& row : list) {
        const std::string name = row["name"];
        std::list<std::string> labels = CxFFMPEG::GetEncoderLabels(name);
        labels.sort();
        EXPECT_EQ(row["encoders"], Json(labels)) << name;
        EXPECT_LT(last, name);
        last = name;
    }
    EXPECT_EQ(list.size(), CxFFMPEG::GetContainerNames().size());
    EXPECT_GT(list.size(), 20U);
}

TEST(ListContainers, TellsTheExtensionsOfEach) {
    const Workspace workspace;
    std::map<std::string, Json> extensions;
    for (const Json& row : ListContainers(workspace))
        extensions[row["name"]] = row["extensions"];
    EXPECT_EQ(extensions["Matroska"], Json::array({".mkv"}));
    EXPECT_EQ(extensions["MPEG-TS (MPEG-2 Transport Stream)"], Json::array({".ts", ".m2t", ".m2ts", ".mts"}));
    EXPECT_EQ(extensions["piped image2 sequence"], Json::array());
}

TEST(ListContainers, WritesALineForEachForPeople) {
    const Workspace workspace;
    const ProgramRun run = RunTool(workspace, "list containers");
    EXPECT_EQ(run.out.find("Containers of FFmpeg, with their encoders\n"), 0U) << run.out;
    EXPECT_NE(run.out.find("\n  Ogg\t.ogg\tTheora [420], Theora [422], Theora [444]\n"), std::string::npos)
        << run.out;
    EXPECT_EQ(run.err, "");
}

TEST(ListContainers, HasNoneWithoutFFmpeg) {
    const Workspace workspace;
    const EnvironmentVariable variable("CORVEX_FFMPEG_DIR", workspace.Path("").c_str());
    EXPECT_EQ(ListContainers(workspace), Json::array());
    EXPECT_NE(RunTool(workspace, "list containers").out.find("with their encoders\n  none\n"),
              std::string::npos);
}
