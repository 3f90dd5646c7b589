#include "images/ImageWriteQueue.h"

#include "TestImages.h"
#include "images/ImageFileReader.h"
#include "media/ToolError.h"
#include "tools/Workspace.h"

#include <gtest/gtest.h>

namespace {

constexpr ImageStorage kStorage{ImageData_RGBA8, 8};

std::string Name(int number) { return std::to_string(number).append(".png"); }

} // namespace

TEST(ImageWriteQueue, WritesEveryImageUnderItsOwnName) {
    const Workspace workspace;
    ImageWriteQueue queue(kStorage, false);
    for (int i = 1; i <= 20; ++i)
        queue.Push(workspace.Path(Name(i)), MakePattern(i, 8, kStorage.kind), {});
    queue.Finish();
    for (int i = 1; i <= 20; ++i)
        EXPECT_EQ(ImageFileReader(workspace.Path(Name(i))).Info().width, i);
}

TEST(ImageWriteQueue, TellsOfAFailureAtTheEnd) {
    ImageWriteQueue queue(kStorage, false);
    queue.Push("/no/such/directory/a.png", MakePattern(8, 8, kStorage.kind), {});
    EXPECT_THROW(queue.Finish(), ToolError);
}

TEST(ImageWriteQueue, TakesNoMoreImagesAfterAFailure) {
    const Workspace workspace;
    ImageWriteQueue queue(kStorage, false);
    const auto pushMany = [&] {
        for (int i = 0; i < 1000; ++i)
            queue.Push("/no/such/directory/a.png", MakePattern(8, 8, kStorage.kind), {});
    };
    EXPECT_THROW(pushMany(), ToolError);
}

TEST(ImageWriteQueue, DropsWaitingImagesIfItIsGivenUp) {
    const Workspace workspace;
    {
        ImageWriteQueue queue(kStorage, false);
        for (int i = 1; i <= 3; ++i)
            queue.Push(workspace.Path(Name(i)), MakePattern(64, 64, kStorage.kind), {});
    }
    for (int i = 1; i <= 3; ++i)
        EXPECT_FALSE(workspace.Has(Name(i) + ".part"));
}
