// Want of memory: an operation fails, nothing is thrown, and the object stays usable.

#include "cameraraw/FormatTestSupport.h"
#include "cameraraw/MetadataValues.h"
#include "support/HeapSpy.h"

namespace {

class VrelFileFormatMemory : public RawTest {
protected:
    VrelFileFormatMemory() {
        Script().clipMetadata = {{u"a key that takes memory", TextValue(u"a text that takes memory")}};
        Script().finish = Finish::InsideSubmit;
    }

    /// Runs `operation` with memory for 0, 1, 2 and more objects, until that is enough.
    template <typename Operation>
    static void RunShortOfMemory(const Operation& operation) {
        bool ranOut = true;
        for (int allocations = 0; ranOut; ++allocations) {
            ASSERT_LT(allocations, 2000);
            const HeapSpy heap(allocations);
            operation();
            ranOut = heap.RanOut();
        }
    }
};

TEST_F(VrelFileFormatMemory, AClipOpensOrFailsAndOpensLater) {
    testing::internal::CaptureStderr();
    LoadedClip clip;
    RunShortOfMemory([&] {
        EXPECT_NO_THROW(clip.format.LoadHeaderTagList("clip.vrel", clip.tags));
        clip.format.CloseFile();
    });
    EXPECT_TRUE(clip.Open());
    EXPECT_TRUE(clip.Load(0));
    testing::internal::GetCapturedStderr();
}

TEST_F(VrelFileFormatMemory, AFrameLoadsOrFailsAndLoadsLater) {
    testing::internal::CaptureStderr();
    LoadedClip clip;
    ASSERT_TRUE(clip.Open());
    const ImagePtr image = MakeImage(4, 2);
    Image* target = image.get();
    RunShortOfMemory([&] { EXPECT_NO_THROW(clip.format.LoadFrameTagList(1, target, clip.tags)); });
    EXPECT_TRUE(clip.Load(0));
    testing::internal::GetCapturedStderr();
}

} // namespace
