// The road through a host format: which one is taken, and which frame it is asked for.

#include "frames/FormatDecoder.h"

#include "ScriptedFormat.h"
#include "frames/HostFormats.h"
#include "images/HostImage.h"
#include "media/ToolError.h"
#include "tools/Workspace.h"

#include <gtest/gtest.h>

namespace {

/// A movie of six frames, 25 a second if they are evenly spaced.
class FormatDecoderOfMovie : public testing::Test {
protected:
    /// Times of the frames, in 25ths of a second, as an expression of ffmpeg in N.
    void MakeMovie(const std::string& times = "N") {
        const ProgramRun run =
            workspace_.Shell("ffmpeg -v error -f lavfi -i testsrc2=rate=25:size=32x16 -frames:v 6 "
                             "-vf 'settb=1/25,setpts=" +
                             times +
                             "' -vsync passthrough -video_track_timescale 25 -c:v r210 "
                             "a.mov");
        ASSERT_EQ(run.status, 0) << run.err;
        source_ = MovieTrackSource::Open(workspace_.Path("a.mov"));
        ASSERT_EQ(source_->GetFrameCount(), 6);
    }

    std::vector<uint32_t> NumbersOfAllFrames(FormatScript& script) {
        const ScriptedFormat format("Scripted", 0, script);
        const auto decoder = OpenFormatDecoder(*source_);
        for (int32_t frame = 0; frame < 6; ++frame)
            decoder->Decode(frame, image_.get());
        return script.frames;
    }

    void ExpectFailure(FormatScript& script, int32_t frame, ExitStatus status, const std::string& cause) {
        const ScriptedFormat format("Scripted", 0, script);
        const auto decoder = OpenFormatDecoder(*source_);
        try {
            decoder->Decode(frame, image_.get());
            FAIL() << "it was decoded";
        } catch (const ToolError& error) {
            EXPECT_EQ(error.status(), status);
            EXPECT_EQ(error.file(), workspace_.Path("a.mov"));
            EXPECT_EQ(error.cause(), "frame " + std::to_string(frame) + ": " + cause);
        }
    }

    Workspace workspace_;
    std::unique_ptr<MovieTrackSource> source_;
    HostImage image_ = NewHostImage(32, 16, ImageData_RGBA8);
};

} // namespace

TEST_F(FormatDecoderOfMovie, TakesTheFirstByPriorityThatOpensTheFile) {
    ASSERT_NO_FATAL_FAILURE(MakeMovie());
    FormatScript refusing;
    FormatScript opening;
    FormatScript last;
    refusing.opens = false;
    const ScriptedFormat third("Third", 1, last);
    const ScriptedFormat first("First", 3, refusing);
    const ScriptedFormat second("Second", 2, opening);
    EXPECT_EQ(OpenFormatDecoder(*source_)->BackEnd(), "Second");
    EXPECT_EQ(refusing.paths.size(), 1U);
    EXPECT_TRUE(last.paths.empty());
}

TEST_F(FormatDecoderOfMovie, PassesOverFormatsThatDoNotLoadOrDoNotStart) {
    ASSERT_NO_FATAL_FAILURE(MakeMovie());
    FormatScript saving;
    FormatScript unable;
    FormatScript opening;
    saving.loads = false;
    unable.starts = false;
    const ScriptedFormat first("Saving", 3, saving);
    const ScriptedFormat second("Unable", 2, unable);
    const ScriptedFormat third("Opening", 1, opening);
    EXPECT_EQ(OpenFormatDecoder(*source_)->BackEnd(), "Opening");
    EXPECT_TRUE(saving.paths.empty());
    EXPECT_TRUE(unable.paths.empty());
}

TEST_F(FormatDecoderOfMovie, OpensTheFileByItsPathFromTheRoot) {
    ASSERT_NO_FATAL_FAILURE(MakeMovie());
    const std::string relative = std::filesystem::relative(workspace_.Path("a.mov")).string();
    source_ = MovieTrackSource::Open(relative);
    FormatScript script;
    const ScriptedFormat format("Scripted", 0, script);
    ASSERT_NE(OpenFormatDecoder(*source_), nullptr);
    ASSERT_EQ(script.paths.size(), 1U);
    EXPECT_EQ(script.paths[0].front(), '/');
}

TEST_F(FormatDecoderOfMovie, AsksForTheFramesOfASteadyRateByTheirIndex) {
    ASSERT_NO_FATAL_FAILURE(MakeMovie());
    FormatScript script;
    EXPECT_EQ(NumbersOfAllFrames(script), (std::vector<uint32_t>{0, 1, 2, 3, 4, 5}));
}

TEST_F(FormatDecoderOfMovie, AsksForFramesThatAreNotEvenlySpacedByTheirTime) {
    ASSERT_NO_FATAL_FAILURE(MakeMovie("N*N"));
    FormatScript script;
    EXPECT_EQ(NumbersOfAllFrames(script), (std::vector<uint32_t>{0, 1, 4, 9, 16, 25}));
}

TEST_F(FormatDecoderOfMovie, AsksAFormatThatCountsFieldsForEverySecondNumber) {
    ASSERT_NO_FATAL_FAILURE(MakeMovie());
    FormatScript script;
    script.frameRate = 50;
    EXPECT_EQ(NumbersOfAllFrames(script), (std::vector<uint32_t>{0, 2, 4, 6, 8, 10}));
}

TEST_F(FormatDecoderOfMovie, CountsFromTheFirstFrame) {
    ASSERT_NO_FATAL_FAILURE(MakeMovie("N+50"));
    FormatScript script;
    EXPECT_EQ(NumbersOfAllFrames(script), (std::vector<uint32_t>{0, 1, 2, 3, 4, 5}));
}

TEST_F(FormatDecoderOfMovie, AsksAFormatWithoutARateByTheIndex) {
    ASSERT_NO_FATAL_FAILURE(MakeMovie("N*N"));
    FormatScript script;
    script.frameRate = 0;
    EXPECT_EQ(NumbersOfAllFrames(script), (std::vector<uint32_t>{0, 1, 2, 3, 4, 5}));
}

TEST_F(FormatDecoderOfMovie, LoadsIntoTheImageThatIsHandedIn) {
    ASSERT_NO_FATAL_FAILURE(MakeMovie());
    FormatScript script;
    NumbersOfAllFrames(script);
    EXPECT_EQ(script.image, image_.get());
}

TEST_F(FormatDecoderOfMovie, RefusesAFrameThatTheFormatsRateDoesNotTellFromTheNext) {
    ASSERT_NO_FATAL_FAILURE(MakeMovie());
    FormatScript script;
    script.frameRate = 5;
    ExpectFailure(script, 1, ExitStatus::Unsupported,
                  "too close to the next frame for the rate of the host format");
    EXPECT_TRUE(script.frames.empty());
}

TEST_F(FormatDecoderOfMovie, RefusesAFrameBeyondTheFormatsNumbers) {
    ASSERT_NO_FATAL_FAILURE(MakeMovie("400000000*N"));
    FormatScript script;
    ExpectFailure(script, 5, ExitStatus::Unsupported, "the host format doesn't count that far");
}

TEST_F(FormatDecoderOfMovie, NamesFileAndFrameThatDoesNotLoad) {
    ASSERT_NO_FATAL_FAILURE(MakeMovie());
    FormatScript script;
    script.lastFrame = 3;
    ExpectFailure(script, 4, ExitStatus::Damaged, "it can't be decoded");
}

TEST_F(FormatDecoderOfMovie, SaysOfEachFormatWhyItDoesNotOpenTheFile) {
    ASSERT_NO_FATAL_FAILURE(MakeMovie());
    FormatScript refusing;
    FormatScript unable;
    refusing.opens = false;
    unable.starts = false;
    const ScriptedFormat first("First", 2, refusing);
    const ScriptedFormat second("Second", 1, unable);
    EXPECT_TRUE(WhyNoFormatOpens(source_->Info().path)
                    .starts_with("no host format: First doesn't open it, Second is not available"))
        << WhyNoFormatOpens(source_->Info().path);
}

TEST_F(FormatDecoderOfMovie, HasNoFormatForAnExtensionThatNoneClaims) {
    ASSERT_NO_FATAL_FAILURE(MakeMovie());
    std::filesystem::rename(workspace_.Path("a.mov"), workspace_.Path("a.other"));
    source_ = MovieTrackSource::Open(workspace_.Path("a.other"));
    EXPECT_EQ(OpenFormatDecoder(*source_), nullptr);
    EXPECT_EQ(WhyNoFormatOpens(source_->Info().path), "no host format of this build loads '.other'");
}
