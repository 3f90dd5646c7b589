// What `corvexvf info` learns from the parameter sets of H.264 and HEVC tracks.

#include "ToolRun.h"

namespace {

using Json = nlohmann::ordered_json;

Json ParameterSetsOf(const Workspace& workspace, const std::string& movie) {
    const ProgramRun run = RunTool(workspace, std::string("info --json ").append(movie));
    EXPECT_EQ(run.status, 0) << run.err;
    const Json result = Json::parse(run.out)["result"];
    return result.contains("parameterSets") ? result["parameterSets"] : Json();
}

void ExpectValue(const Json& parameterSets, const char* name, const Json& value) {
    EXPECT_EQ(parameterSets[name]["value"], value) << name;
    EXPECT_EQ(parameterSets[name]["differs"], false) << name << parameterSets[name];
}

const std::string mainProfile = "-c:v libx264 -profile:v main -pix_fmt yuv420p -bf 2 -color_primaries bt709 "
                                "-color_trc smpte170m -colorspace smpte240m -color_range pc ";

TEST(InfoParameterSets, TellsAllThatAnH264RecordAndTheFirstSamplesHold) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(
        MakeMovie(workspace, "a.mp4",
                  mainProfile + "-level 3 -x264-params ref=2:b-pyramid=none:no-mixed-refs=1 -aspect 64:33", 5,
                  "120x90"));
    const Json sets = ParameterSetsOf(workspace, "a.mp4");
    EXPECT_EQ(sets["source"], "avcC");
    EXPECT_EQ(sets["lengthSize"], 4);
    ExpectValue(sets, "profile", 77);
    ExpectValue(sets, "level", 30);
    ExpectValue(sets, "width", 120);
    ExpectValue(sets, "height", 90);
    ExpectValue(sets, "codedWidth", 128);
    ExpectValue(sets, "codedHeight", 96);
    ExpectValue(sets, "crop", {{"left", 0}, {"right", 8}, {"top", 0}, {"bottom", 6}});
    ExpectValue(sets, "chromaFormat", 420);
    ExpectValue(sets, "bitDepth", 8);
    ExpectValue(sets, "pixelAspect", 1.454545);
    ExpectValue(sets, "frameRate", "25/1");
    ExpectValue(sets, "range", 2);
    ExpectValue(sets, "primaries", 1);
    ExpectValue(sets, "transfer", 6);
    ExpectValue(sets, "matrix", 7);
    ExpectValue(sets, "fieldOrder", "progressive");
    ExpectValue(sets, "referenceFrames", 2);
    EXPECT_EQ(sets["frameTypes"].size(), 5U);
    EXPECT_EQ(sets["frameTypes"][0], "intra");
    EXPECT_EQ(sets["frameTypes"][1], "predicted");
}

TEST(InfoParameterSets, ReadsByteStreamsToo) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mts", mainProfile + "-g 1", 3));
    const Json sets = ParameterSetsOf(workspace, "a.mts");
    EXPECT_EQ(sets["source"], "Annex B");
    EXPECT_EQ(sets["lengthSize"], 0);
    ExpectValue(sets, "width", 64);
    EXPECT_EQ(sets["frameTypes"], (Json{"intra", "intra", "intra"}));
}

TEST(InfoParameterSets, TellsTheFieldOrderOfInterlacedStreams) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(
        MakeMovie(workspace, "a.mp4", mainProfile + "-flags +ildct+ilme -x264-params tff=1", 2, "64x64"));
    ExpectValue(ParameterSetsOf(workspace, "a.mp4"), "fieldOrder", "top first");
}

TEST(InfoParameterSets, TellsWhatAnHEVCRecordHoldsAndNoFrameTypes) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(
        workspace, "a.mp4", "-c:v libx265 -x265-params log-level=none -pix_fmt yuv420p10le", 2, "128x90"));
    const Json sets = ParameterSetsOf(workspace, "a.mp4");
    EXPECT_EQ(sets["source"], "hvcC");
    ExpectValue(sets, "profile", 2);
    ExpectValue(sets, "width", 128);
    ExpectValue(sets, "height", 90);
    ExpectValue(sets, "codedHeight", 96);
    ExpectValue(sets, "bitDepth", 10);
    ExpectValue(sets, "frameRate", "25/1");
    EXPECT_FALSE(sets.contains("referenceFrames"));
    EXPECT_EQ(sets["frameTypes"], (Json{"unknown", "unknown"}));
}

TEST(InfoParameterSets, ReadsSamplesBehindARecordWithoutSets) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mp4",
                                      "-c:v libx265 -tag:v hev1 -x265-params log-level=none:repeat-headers=1",
                                      2, "128x90"));
    std::string movie = workspace.Read("a.mp4");
    constexpr size_t arrayCount = 22;
    const size_t record = movie.find("hvcC") + 4;
    movie.at(record + arrayCount) = 0;
    workspace.Write("a.mp4", movie);
    const Json sets = ParameterSetsOf(workspace, "a.mp4");
    EXPECT_EQ(sets["source"], "hvcC");
    EXPECT_EQ(sets["lengthSize"], 4);
    ExpectValue(sets, "width", 128);
    ExpectValue(sets, "height", 90);
}

TEST(InfoParameterSets, ShowsADifferenceFromTheTrackAsSuch) {
    const Workspace workspace;
    // aspect_ratio_idc 7 ends the analysis of the VUI parameters before any of them is kept.
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mp4", mainProfile + "-vf setsar=20/11", 2));
    const Json result = Json::parse(RunTool(workspace, "info a.mp4 --json").out)["result"];
    const Json aspect = result["parameterSets"]["pixelAspect"];
    EXPECT_EQ(aspect["value"], 1.0);
    EXPECT_EQ(aspect["track"], 1.818182);
    EXPECT_EQ(aspect["differs"], true);
    EXPECT_EQ(result["pixelAspect"], "20/11") << "the track's own fact stays";
    EXPECT_EQ(result["parameterSets"]["frameRate"]["value"], nullptr) << "not told";
    EXPECT_EQ(result["parameterSets"]["frameRate"]["differs"], true);
    const std::string text = RunTool(workspace, "info a.mp4").out;
    EXPECT_NE(text.find("  aspect        1.0 (differs: the track has 1.818182)\n"), std::string::npos)
        << text;
    EXPECT_NE(text.find("  rate          not told (differs: the track has 25/1)\n"), std::string::npos)
        << text;
}

TEST(InfoParameterSets, HaveAHeadingOfTheirOwn) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mp4", mainProfile, 2, "120x90"));
    const std::string text = RunTool(workspace, "info a.mp4").out;
    const size_t heading = text.find("\nparameter sets  avcC, length fields of 4 bytes\n  profile ");
    ASSERT_NE(heading, std::string::npos) << text;
    EXPECT_NE(text.find("  crop          left 0, right 8, top 0, bottom 6\n", heading), std::string::npos)
        << text;
    EXPECT_NE(text.find("  first frames  intra, predicted\n", heading), std::string::npos) << text;
}

TEST(InfoParameterSets, AreNotThereForOtherCodecs) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov"));
    EXPECT_TRUE(ParameterSetsOf(workspace, "a.mov").is_null());
    EXPECT_EQ(RunTool(workspace, "info a.mov").out.find("parameter sets"), std::string::npos);
}

} // namespace
