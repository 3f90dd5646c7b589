// Saving through the host format of FFmpeg.

#include "frames/FormatSaver.h"

#include "images/HostImage.h"
#include "media/ToolError.h"
#include "tools/Workspace.h"

#include <gtest/gtest.h>

namespace {

SaveControls Controls() { return {"Matroska", "MPEG4", {25, 1}, std::nullopt, std::nullopt, ""}; }

} // namespace

TEST(FormatSaver, TellsTheRateThatTheControlsGive) {
    const Workspace workspace;
    SaveControls controls = Controls();
    controls.frameRate = {24000, 1001};
    EXPECT_DOUBLE_EQ(FormatSaver(workspace.Path("a.mkv"), controls).FrameRate(), 24000.0 / 1001.0);
    controls.frameRate = {48000, 1001};
    EXPECT_DOUBLE_EQ(FormatSaver(workspace.Path("a.mkv"), controls).FrameRate(), 47.952);
}

TEST(FormatSaver, TheFileHasItsNameOnceItIsFinished) {
    const Workspace workspace;
    FormatSaver saver(workspace.Path("a.mkv"), Controls());
    const HostImage image = NewHostImage(64, 48, ImageData_RGBA16);
    saver.Save(image.get());
    saver.Save(image.get());
    EXPECT_FALSE(workspace.Has("a.mkv"));
    EXPECT_TRUE(workspace.Has("a.mkv.part"));
    saver.Finish();
    EXPECT_TRUE(workspace.Has("a.mkv"));
    EXPECT_FALSE(workspace.Has("a.mkv.part"));
}

TEST(FormatSaver, WithoutAFinishTheOldFileStays) {
    const Workspace workspace;
    workspace.Write("a.mkv", "older");
    const HostImage image = NewHostImage(64, 48, ImageData_RGBA16);
    FormatSaver(workspace.Path("a.mkv"), Controls()).Save(image.get());
    EXPECT_EQ(workspace.Read("a.mkv"), "older");
    EXPECT_FALSE(workspace.Has("a.mkv.part"));
}

TEST(FormatSaver, AnImageOfAnotherSizeFailsWithItsNumber) {
    const Workspace workspace;
    FormatSaver saver(workspace.Path("a.mkv"), Controls());
    saver.Save(NewHostImage(64, 48, ImageData_RGBA16).get());
    try {
        saver.Save(NewHostImage(32, 48, ImageData_RGBA16).get());
        FAIL() << "saved";
    } catch (const ToolError& error) {
        EXPECT_EQ(error.status(), ExitStatus::JobFailed);
        EXPECT_EQ(error.cause(), "frame 1: it can't be encoded");
    }
}

TEST(FormatSaver, WithoutAFrameThereIsNoFile) {
    const Workspace workspace;
    FormatSaver saver(workspace.Path("a.mkv"), Controls());
    EXPECT_THROW(saver.Finish(), ToolError);
}
