// Saves that find too little memory.

#include "ffmpeg/SaveTestSupport.h"
#include "support/HeapSpy.h"

namespace {

using namespace CxFFMPEG;

class StarvedSave : public testing::Test {
protected:
    const Workspace workspace;
    const std::string path = workspace.Path("movie.mkv");
    const ImagePtr image = GreyImage(0);
};

/// Runs a call with memory for no allocation, then for one, for two, until it has enough.
/// @return calls that had not enough
template <typename Call>
int Starve(const Call& call) {
    for (int allocations = 0;; ++allocations) {
        const HeapSpy spy(allocations);
        call();
        if (!spy.RanOut()) return allocations;
    }
}

TEST_F(StarvedSave, AHeaderThatFindsTooLittleMemoryIsRefused) {
    Saver saver;
    saver.SetOptions("nosuch=1,");
    saver.Setup();
    const char* const file = path.c_str();
    bool isStarted = false;
    const std::string words = WordsOf([&] {
        const int starved =
            Starve([&] { isStarted = saver.format.SaveHeaderTagList(file, image.get(), saver.tags); });
        EXPECT_GT(starved, 0);
    });
    EXPECT_TRUE(isStarted);
    EXPECT_TRUE(saver.Save(*image));
    saver.End();
    EXPECT_EQ(LoadGreyMovie(path), Numbers(1));
}

TEST_F(StarvedSave, AFrameThatFindsTooLittleMemoryIsRefused) {
    Saver saver;
    ASSERT_TRUE(saver.Start(path, *image));
    EXPECT_TRUE(saver.Save(*image));
    bool isSaved = false;
    const ImagePtr second = GreyImage(1);
    Starve([&] { isSaved = saver.Save(*second); });
    EXPECT_TRUE(isSaved);
    saver.End();
    EXPECT_FALSE(LoadGreyMovie(path).empty());
}

TEST_F(StarvedSave, WithoutMemoryToFindTheContainerTheSaveThatRunsGoesOn) {
    Saver saver;
    ASSERT_TRUE(saver.Start(path, *image));
    EXPECT_TRUE(saver.Save(*image));
    const std::string second = workspace.Path("second.mkv");
    {
        const HeapSpy none(0);
        EXPECT_FALSE(saver.format.SaveHeaderTagList(second.c_str(), image.get(), saver.tags));
        EXPECT_TRUE(none.RanOut());
    }
    EXPECT_TRUE(saver.Save(*GreyImage(1)));
    saver.End();
    EXPECT_EQ(LoadGreyMovie(path), Numbers(2));
    EXPECT_FALSE(workspace.Has("second.mkv"));
}

TEST_F(StarvedSave, ControlsThatFindTooLittleMemoryThrowNothing) {
    Saver saver("AVI (Audio Video Interleaved)", "MPEG4");
    saver.SetOptions("a long name of an option=and a value,");
    IDParameter container(CxID("Matroska", true));
    Input* const input = saver.tool.FindInput("Container");
    EXPECT_GT(Starve([&] { saver.format.NotifyChangedSave(&saver.tool, input, &container, 0.0); }), 0);
    Request request(0.0);
    EXPECT_GT(Starve([&] { saver.format.SetupSave(&saver.tool, &request); }), 0);
    FFMPEGFileFormats other(nullptr, ScriptVal(), TagList());
    Operator tool(nullptr, &other);
    EXPECT_GT(Starve([&] { other.AddSaveInputs(&tool); }), 0);
}

TEST_F(StarvedSave, AListOfEncodersIsReplacedAsAWholeOrNotAtAll) {
    Saver saver;
    Input& encoders = *saver.tool.FindInput("EncoderProfile");
    const TagList before = encoders.Tags();
    IDParameter container(CxID("CompuServe Graphics Interchange Format (GIF)", true));
    Input* const input = saver.tool.FindInput("Container");
    for (int allocations = 0;; ++allocations) {
        bool isOut = false;
        {
            const HeapSpy spy(allocations);
            saver.format.NotifyChangedSave(&saver.tool, input, &container, 0.0);
            isOut = spy.RanOut();
        }
        const bool isNew = encoders.GetID(0.0) == "GIF";
        EXPECT_EQ(encoders.Tags().GetLong(InputTag_NoChoice, -1), isNew ? 1 : 0) << allocations;
        EXPECT_EQ(std::string(encoders.Tags().GetString(InputTag_EntryText, "")) == "GIF", isNew)
            << allocations;
        if (!isNew) {
            EXPECT_EQ(encoders.Tags().Items().size(), before.Items().size()) << allocations;
        }
        if (!isOut) break;
    }
    EXPECT_TRUE(encoders.GetID(0.0) == "GIF");
}

TEST_F(StarvedSave, ControlsThatFindTooLittleMemoryLeaveNoGroupOpen) {
    bool isOut = true;
    for (int allocations = 0; isOut; ++allocations) {
        FFMPEGFileFormats format(nullptr, ScriptVal(), TagList());
        Operator tool(nullptr, &format);
        {
            const HeapSpy spy(allocations);
            format.AddSaveInputs(&tool);
            isOut = spy.RanOut();
        }
        EXPECT_EQ(tool.AddInput("After", "After", TagList())->Nest(), nullptr) << allocations;
    }
}

TEST_F(StarvedSave, TheEndNeedsNoMemory) {
    Saver saver;
    ASSERT_TRUE(saver.Start(path, *image));
    EXPECT_TRUE(saver.Save(*image));
    {
        const HeapSpy none(0);
        EXPECT_TRUE(saver.format.CloseFile());
    }
    EXPECT_EQ(LoadGreyMovie(path), Numbers(1));
}

TEST_F(StarvedSave, WithoutMemoryForAPacketAFrameIsRefusedAndTheNextOneSaved) {
    Saver saver;
    ASSERT_TRUE(saver.Start(path, *image));
    {
        const ReplacedFunction allocate(&FFmpegFunctions::av_packet_alloc,
                                        []() -> AVPacket* { return nullptr; });
        EXPECT_FALSE(saver.Save(*image));
    }
    EXPECT_TRUE(saver.Save(*image));
    saver.End();
    EXPECT_EQ(LoadGreyMovie(path), Numbers(1));
}

} // namespace
