// Files that a host format alone reads.

#include "frames/ClipInput.h"

#include "ScriptedFormat.h"
#include "media/ToolError.h"
#include "tools/Workspace.h"

#include <gtest/gtest.h>

namespace {

class ClipInputTest : public testing::Test {
protected:
    ClipInputTest() {
        workspace_.Write("a.clip", "clip");
        script_.frameCount = 3;
    }

    ClipInput Open(DecodeRoad road = DecodeRoad::Auto) const { return {workspace_.Path("a.clip"), road}; }
    MovieTrackInfo Info() const { return *Open().Track().movie; }
    /// Expects that the file doesn't open.
    void ExpectRefused(const std::string& name, DecodeRoad road, ExitStatus status,
                       const std::string& cause) const {
        try {
            const ClipInput input(workspace_.Path(name), road);
            FAIL() << "it opened";
        } catch (const ToolError& error) {
            EXPECT_EQ(error.status(), status);
            EXPECT_EQ(error.file(), workspace_.Path(name));
            EXPECT_EQ(error.cause(), cause);
        }
    }

    Workspace workspace_;
    FormatScript script_;
    ScriptedFormat format_{"Scripted", 0, script_, ".clip"};
};

TEST_F(ClipInputTest, AClipIsWhatAHostFormatClaimsAndThatOfMoviesDoesNot) {
    EXPECT_TRUE(ClipInput::IsClip("a.clip"));
    EXPECT_TRUE(ClipInput::IsClip("a.CLIP"));
    EXPECT_TRUE(ClipInput::IsClip("a.vrel"));
    EXPECT_FALSE(ClipInput::IsClip("a.mov"));
    EXPECT_FALSE(ClipInput::IsClip("a.other"));
    EXPECT_FALSE(ClipInput::IsClip("clip"));
}

TEST_F(ClipInputTest, AnInputByNameIsAClip) {
    const std::unique_ptr<FrameInput> input = OpenFrameInput(workspace_.Path("a.clip"), {});
    EXPECT_EQ(input->Track().backEnd, "Scripted");
    EXPECT_EQ(input->Track().frameCount, 3);
    EXPECT_EQ(script_.paths.size(), 1U);
}

TEST_F(ClipInputTest, TheTrackIsWhatTheFormatTells) {
    const ClipInput input = Open();
    const FrameTrack& track = input.Track();
    EXPECT_EQ(track.name, workspace_.Path("a.clip"));
    EXPECT_EQ(track.width, 32);
    EXPECT_EQ(track.height, 16);
    EXPECT_EQ(track.firstNumber, 0);
    EXPECT_EQ(track.frameCount, 3);
    EXPECT_FALSE(track.hasAlpha);
    EXPECT_EQ(track.movie->container, "Scripted");
    EXPECT_EQ(track.movie->displayWidth, 32);
    EXPECT_EQ(track.movie->fieldOrder.text, "progressive");
    EXPECT_EQ(track.movie->damage, "");
}

TEST_F(ClipInputTest, ARateThatStandsForAFractionIsThatFraction) {
    struct Row {
        double told;
        Rational rate;
    };
    for (const Row& row :
         {Row{24.0, {24, 1}}, Row{static_cast<double>(23.976F), {24000, 1001}},
          Row{30000.0 / 1001.0, {30000, 1001}}, Row{12.5, {25, 2}}, Row{0.0, {0, 1}}, Row{-24.0, {0, 1}}}) {
        script_.frameRate = row.told;
        EXPECT_EQ(Info().frameRate, row.rate) << row.told;
    }
    script_.frameRate = 12.5;
    EXPECT_EQ(Info().duration, (Rational{6, 25}));
}

TEST_F(ClipInputTest, TheFirstFramesMetadataAreTheClips) {
    script_.metadata = {{"TimeCode", "01:02:03:04"}, {"camera", "A"}};
    EXPECT_EQ(Info().metadata, script_.metadata);
    EXPECT_EQ(Info().timeCode, "01:02:03:04");
    EXPECT_EQ(script_.frames.front(), 0U);
}

TEST_F(ClipInputTest, ATimeCodeOfAnotherFormIsMetadataAlone) {
    for (const char* const text : {"", "1:02:03:04", "01:02:03:0x", "01;02;03;04", "01:02:03:04:05"}) {
        script_.metadata = {{"TimeCode", text}};
        EXPECT_EQ(Info().timeCode, "") << text;
    }
    script_.metadata = {{"TimeCode", "01:02:03;04"}};
    EXPECT_EQ(Info().timeCode, "01:02:03;04");
}

TEST_F(ClipInputTest, FramesAreAskedForByTheirIndexAndKind) {
    ClipInput input = Open();
    const HostImage image = input.Read(2, ImageData_RGBAHalf);
    EXPECT_EQ(script_.frames, (std::vector<uint32_t>{0, 2}));
    EXPECT_EQ(image->Width, 32);
    EXPECT_EQ(image->Height, 16);
}

TEST_F(ClipInputTest, AFrameThatFailsIsNamed) {
    ClipInput input = Open();
    script_.lastFrame = 1;
    try {
        input.Read(2, ImageData_RGBA8);
        FAIL() << "it was read";
    } catch (const ToolError& error) {
        EXPECT_EQ(error.status(), ExitStatus::Damaged);
        EXPECT_EQ(error.cause(), "frame 2: it can't be decoded");
    }
}

TEST_F(ClipInputTest, AFileThatIsMissingOrNoFileCantBeOpened) {
    ExpectRefused("missing.clip", DecodeRoad::Auto, ExitStatus::CannotOpen, "No such file or directory");
    workspace_.Shell("mkdir folder.clip");
    ExpectRefused("folder.clip", DecodeRoad::Auto, ExitStatus::CannotOpen, "not a regular file");
}

TEST_F(ClipInputTest, AFileThatNoFormatOpensIsDamaged) {
    script_.opens = false;
    ExpectRefused("a.clip", DecodeRoad::Auto, ExitStatus::Damaged,
                  "no host format: Scripted doesn't open it");
}

TEST_F(ClipInputTest, AFormatThatDoesNotStartIsUnsupported) {
    script_.starts = false;
    ExpectRefused("a.clip", DecodeRoad::Format, ExitStatus::Unsupported,
                  "no host format: Scripted is not available");
}

TEST_F(ClipInputTest, TheRegistrysRoadLeadsNowhere) {
    ExpectRefused("a.clip", DecodeRoad::Registry, ExitStatus::Unsupported,
                  "no track for a decoder of the registry");
}

} // namespace
