#include "frames/SequenceInput.h"

#include "media/ToolError.h"
#include "tools/Workspace.h"
#include "tools/images/TestImages.h"

#include "images/ImageFileWriter.h"

#include <gtest/gtest.h>

namespace {

void WritePng(const Workspace& workspace, const char* name, int32_t width, int32_t height) {
    const ImageStorage storage{ImageData_RGBA8, 8};
    WriteImageFile(workspace.Path(name), *MakePattern(width, height, storage.kind), storage, false, {});
}

} // namespace

TEST(SequenceInput, TakesItsPropertiesFromTheFirstFile) {
    const Workspace workspace;
    WritePng(workspace, "n8.png", 6, 5);
    WritePng(workspace, "n9.png", 6, 5);
    const SequenceInput input(workspace.Path("n@.png"), MissingFrames::Refuse);
    EXPECT_EQ(input.Track().width, 6);
    EXPECT_EQ(input.Track().height, 5);
    EXPECT_EQ(input.Track().firstNumber, 8);
    EXPECT_EQ(input.Track().frameCount, 2);
    EXPECT_EQ(input.Track().kind, ImageData_RGBA8);
    EXPECT_FALSE(input.Track().hasAlpha);
}

TEST(SequenceInput, ConvertsToTheKindThatIsAskedFor) {
    const Workspace workspace;
    WritePng(workspace, "n.png", 6, 5);
    SequenceInput input(workspace.Path("n.png"), MissingFrames::Refuse);
    const HostImage bytes = input.Read(0, ImageData_RGBA8);
    const HostImage floats = input.Read(0, ImageData_RGBAFloat);
    EXPECT_EQ(floats->DataFormat->Kind, static_cast<uint32_t>(ImageData_RGBAFloat));
    EXPECT_EQ(PixelAt(*floats, 5, 4).R, PixelAt(*bytes, 5, 4).R);
}

TEST(SequenceInput, NamesAFileOfAnotherSize) {
    const Workspace workspace;
    WritePng(workspace, "n1.png", 6, 5);
    WritePng(workspace, "n2.png", 600, 500);
    SequenceInput input(workspace.Path("n@.png"), MissingFrames::Refuse);
    try {
        input.Read(1, ImageData_RGBA8);
        FAIL() << "it was read";
    } catch (const ToolError& error) {
        EXPECT_EQ(error.file(), workspace.Path("n2.png"));
        EXPECT_EQ(error.status(), ExitStatus::Damaged);
    }
}

TEST(SequenceInput, ShowsOpaqueBlackInAHole) {
    const Workspace workspace;
    WritePng(workspace, "n1.png", 6, 5);
    WritePng(workspace, "n3.png", 6, 5);
    SequenceInput input(workspace.Path("n@.png"), MissingFrames::Black);
    const HostImage image = input.Read(1, ImageData_RGBA16);
    EXPECT_EQ(PixelAt(*image, 3, 3).G, 0.0f);
    EXPECT_EQ(PixelAt(*image, 3, 3).A, 1.0f);
}
