// The command and raw camera clips.

#include "support/RawClips.h"
#include "tools/commands/ToolRun.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

using Json = nlohmann::json;

/// How far a 16-bit sample may be from what the clip was made of.
constexpr int kMostError = 200;

class RawClipsCommand : public testing::Test {
protected:
    RawClipsCommand() { WriteRawClip(workspace_.Path("a.vrel"), recipe_); }

    Json Info(const std::string& file) const {
        const ProgramRun run = RunTool(workspace_, "info --json " + file);
        EXPECT_EQ(run.status, 0) << run.err;
        return Json::parse(run.out)["result"];
    }

    Workspace workspace_;
    RawClipRecipe recipe_ = {.frames = 4, .frameRate = 23.976F};
};

/// The worst distance of an image, which ffmpeg reads, from a frame of the clip.
int ErrorOf(const Workspace& workspace, const std::string& image, const RawPicture& picture, uint64_t frame) {
    Prepare(workspace, "ffmpeg -v error -y -i " + image + " -f rawvideo -pix_fmt rgb48le pixels");
    const std::string pixels = workspace.Shell("cat pixels").out;
    EXPECT_EQ(pixels.size(), size_t{6} * picture.width * picture.height);
    int most = 0;
    for (size_t i = 0; i < pixels.size() / 2; ++i) {
        uint16_t value = 0;
        std::memcpy(&value, pixels.data() + 2 * i, sizeof(value));
        const auto pixel = static_cast<uint32_t>(i / 3);
        const uint16_t expected = picture.At(frame, i % 3, pixel % picture.width, pixel / picture.width);
        most = std::max(most, std::abs(value - expected));
    }
    return most;
}

TEST_F(RawClipsCommand, InfoTellsTheClipAndItsMetadata) {
    const Json info = Info("a.vrel");
    EXPECT_EQ(info["kind"], "movie");
    EXPECT_EQ(info["container"], "Ravenlight Raw");
    EXPECT_EQ(info["width"], 64);
    EXPECT_EQ(info["height"], 48);
    EXPECT_EQ(info["frameCount"], 4);
    EXPECT_EQ(info["frameRate"], "24000/1001");
    EXPECT_EQ(info["timeCode"], "01:00:00:00");
    EXPECT_EQ(info["metadata"]["camera"], "Größe A");
    EXPECT_EQ(info["decoder"]["formats"], Json::array({"Ravenlight Raw"}));
}

TEST_F(RawClipsCommand, InfoReadsAsTextToo) {
    const ProgramRun run = RunTool(workspace_, "info a.vrel");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_NE(run.out.find("64x48"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("01:00:00:00"), std::string::npos) << run.out;
}

TEST_F(RawClipsCommand, DecodeWritesThePictures) {
    const ProgramRun run = RunTool(workspace_, "decode a.vrel -o out.%04d.png --frames 3,0-1 --depth 16");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("Ravenlight Raw"), std::string::npos) << run.out;
    for (const uint64_t frame : {0, 1, 3}) {
        const std::string image = "out.000" + std::to_string(frame) + ".png";
        ASSERT_TRUE(workspace_.Has(image));
        EXPECT_LE(ErrorOf(workspace_, image, recipe_.picture, frame), kMostError) << frame;
    }
    EXPECT_FALSE(workspace_.Has("out.0002.png"));
}

TEST_F(RawClipsCommand, DecodeGoesByTheFormatAndNotByTheRegistry) {
    EXPECT_EQ(RunTool(workspace_, "decode a.vrel -o out.%04d.png --via format").status, 0);
    ExpectFailure(RunTool(workspace_, "decode a.vrel -o out.%04d.png --via registry"), 5, "a.vrel");
}

TEST_F(RawClipsCommand, AProResMovieOfItCarriesTheClipsTimeCodeAndRate) {
    const ProgramRun run = RunTool(workspace_, "encode a.vrel -o a.mov --codec 'Apple ProRes 422 HQ'");
    ASSERT_EQ(run.status, 0) << run.err;
    const Json info = Info("a.mov");
    EXPECT_EQ(info["fourCC"], "apch");
    EXPECT_EQ(info["frameCount"], 4);
    EXPECT_EQ(info["frameRate"], "24000/1001");
    EXPECT_EQ(info["timeCode"], "01:00:00:00");
}

TEST_F(RawClipsCommand, AMovieSavedByTheHostsFormatCarriesTheTimeCodeToo) {
    WriteRawClip(workspace_.Path("whole.vrel"), {.frameRate = 24});
    const ProgramRun run =
        RunTool(workspace_, "save whole.vrel -o a.mkv --container Matroska --encoder MPEG4");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(Info("a.mkv")["timeCode"], "01:00:00:00");
}

TEST_F(RawClipsCommand, AFileThatIsNoClipIsDamaged) {
    workspace_.Write("none.vrel", "no clip");
    for (const char* const command : {"info none.vrel", "decode none.vrel -o out.%04d.png"})
        ExpectFailure(RunTool(workspace_, command), 4, "none.vrel");
}

TEST_F(RawClipsCommand, AMissingFileCantBeOpened) {
    ExpectFailure(RunTool(workspace_, "info missing.vrel"), 3, "missing.vrel");
}

TEST_F(RawClipsCommand, WithoutTheSdkClipsAreUnsupportedAndItIsNamed) {
    workspace_.Write("libRavenlightRawAPI.so", "");
    const ProgramRun run =
        workspace_.Shell("LD_LIBRARY_PATH='" + workspace_.Path("") + "' '" CORVEXVF_PROGRAM "' info a.vrel");
    ExpectFailure(run, 5, "libRavenlightRawAPI.so");
}

} // namespace
