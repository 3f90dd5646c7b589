#include "images/PngChunks.h"

#include "TestImages.h"
#include "images/ImageFileWriter.h"
#include "tools/Workspace.h"

#include <gtest/gtest.h>

namespace {

std::string MakePng(const Workspace& workspace) {
    WriteImageFile(workspace.Path("a.png"), *MakePattern(40, 30, ImageData_RGBA8), {ImageData_RGBA8, 8},
                   false, {});
    return workspace.Read("a.png");
}

} // namespace

TEST(PngChunks, AreWholeInAPngFile) {
    const Workspace workspace;
    MakePng(workspace);
    EXPECT_TRUE(PngChunksAreWhole(workspace.Path("a.png")));
}

TEST(PngChunks, AreNotWholeWhereverAFileBreaksOff) {
    const Workspace workspace;
    const std::string whole = MakePng(workspace);
    for (size_t size = 0; size < whole.size(); ++size) {
        workspace.Write("cut.png", whole.substr(0, size));
        EXPECT_FALSE(PngChunksAreWhole(workspace.Path("cut.png"))) << size;
    }
}

TEST(PngChunks, AreNotWholeIfALengthPassesTheEnd) {
    const Workspace workspace;
    std::string file = MakePng(workspace);
    file.replace(8, 4, "\xff\xff\xff\xff");
    workspace.Write("long.png", file);
    EXPECT_FALSE(PngChunksAreWhole(workspace.Path("long.png")));
}

TEST(PngChunks, AreNotWholeInOtherFiles) {
    const Workspace workspace;
    workspace.Write("text.png", "this is no image, but it is long enough");
    EXPECT_FALSE(PngChunksAreWhole(workspace.Path("text.png")));
    EXPECT_FALSE(PngChunksAreWhole(workspace.Path("none.png")));
}
