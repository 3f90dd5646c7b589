#include "images/ImageSequence.h"

#include "media/ToolError.h"
#include "tools/Workspace.h"

#include <gtest/gtest.h>

namespace {

void WriteAll(const Workspace& workspace, std::initializer_list<const char*> names) {
    for (const char* name : names)
        workspace.Write(name, "x");
}

std::string CauseOf(const std::string& input) {
    try {
        ImageSequence sequence(input, MissingFrames::Refuse);
    } catch (const ToolError& error) {
        EXPECT_EQ(error.status(), ExitStatus::CannotOpen);
        return error.cause();
    }
    return "none";
}

} // namespace

TEST(ImageSequence, FindsItsFirstNumberAndLength) {
    const Workspace workspace;
    WriteAll(workspace, {"n.0101.png", "n.0102.png", "n.0103.png"});
    for (const char* name : {"n.%04d.png", "n.####.png", "n.0102.png"}) {
        const ImageSequence sequence(workspace.Path(name), MissingFrames::Refuse);
        EXPECT_EQ(sequence.FirstNumber(), 101) << name;
        EXPECT_EQ(sequence.FrameCount(), 3) << name;
        EXPECT_EQ(sequence.FileAt(2), workspace.Path("n.0103.png")) << name;
    }
}

TEST(ImageSequence, IsOneFrameForAStillImage) {
    const Workspace workspace;
    WriteAll(workspace, {"still.png"});
    const ImageSequence sequence(workspace.Path("still.png"), MissingFrames::Refuse);
    EXPECT_EQ(sequence.FrameCount(), 1);
    EXPECT_EQ(sequence.FileAt(0), workspace.Path("still.png"));
}

TEST(ImageSequence, ListsTheNumbersOfItsHoles) {
    const Workspace workspace;
    WriteAll(workspace, {"n1.png", "n3.png", "n7.png", "n8.png"});
    EXPECT_EQ(CauseOf(workspace.Path("n@.png")), "missing frames: 2, 4-6");
}

TEST(ImageSequence, ListsAHugeHoleAtOnce) {
    const Workspace workspace;
    WriteAll(workspace, {"n1.png", "n2000000000.png"});
    EXPECT_EQ(CauseOf(workspace.Path("n@.png")), "missing frames: 2-1999999999");
}

TEST(ImageSequence, HoldsTheImageBeforeAHole) {
    const Workspace workspace;
    WriteAll(workspace, {"n1.png", "n4.png"});
    const ImageSequence sequence(workspace.Path("n@.png"), MissingFrames::Hold);
    EXPECT_EQ(sequence.FrameCount(), 4);
    EXPECT_EQ(sequence.FileAt(2), workspace.Path("n1.png"));
}

TEST(ImageSequence, HasNoFileWhereBlackStands) {
    const Workspace workspace;
    WriteAll(workspace, {"n1.png", "n4.png"});
    const ImageSequence sequence(workspace.Path("n@.png"), MissingFrames::Black);
    EXPECT_EQ(sequence.FileAt(2), "");
    EXPECT_EQ(sequence.FileAt(3), workspace.Path("n4.png"));
}

TEST(ImageSequence, FailsForFilesThatAreNotThere) {
    const Workspace workspace;
    EXPECT_EQ(CauseOf(workspace.Path("n.png")), "no such file");
    EXPECT_EQ(CauseOf(workspace.Path("n.%d.png")), "no file of this sequence is there");
}

TEST(ImageSequence, RefusesMoreFramesThanAMovieCounts) {
    const Workspace workspace;
    WriteAll(workspace, {"n1.png", "n99999999999.png"});
    EXPECT_THROW(ImageSequence(workspace.Path("n@.png"), MissingFrames::Black), ToolError);
}
