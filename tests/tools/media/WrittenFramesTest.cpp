// Counting what can be read of a file that was written.

#include "media/WrittenFrames.h"

#include "MediaFiles.h"

#include <gtest/gtest.h>

namespace {

/// Makes a movie of ten frames.
std::string MakeMovie(const TempFolder& folder, const std::string& name, const std::string& codec) {
    RunFfmpeg(TestPicture(64, 48, "24", 10) + " " + codec + " '" + (folder / name) + "'");
    return folder / name;
}

TEST(WrittenFrames, AreCountedInAnyContainer) {
    const TempFolder folder;
    EXPECT_EQ(CountWrittenFrames(MakeMovie(folder, "a.mkv", "-c:v libx264 -bf 2")), 10);
    EXPECT_EQ(CountWrittenFrames(MakeMovie(folder, "a.avi", "-c:v mpeg4 -bf 1")), 10);
    EXPECT_EQ(CountWrittenFrames(MakeMovie(folder, "a.m2v", "-c:v mpeg2video")), 10);
    EXPECT_EQ(CountWrittenFrames(MakeMovie(folder, "a.gif", "")), 10);
}

TEST(WrittenFrames, AreFewerInAFileThatWasCut) {
    const TempFolder folder;
    const std::string path = MakeMovie(folder, "a.avi", "-c:v mpeg4 -g 1");
    std::vector<uint8_t> bytes = ReadBytes(path);
    bytes.resize(bytes.size() / 2);
    WriteBytes(path, bytes);
    EXPECT_GT(CountWrittenFrames(path), 0);
    EXPECT_LT(CountWrittenFrames(path), 10);
}

TEST(WrittenFrames, AreNoneInAFileThatCannotBeReadOrHasNoVideo) {
    const TempFolder folder;
    EXPECT_EQ(CountWrittenFrames(folder / "none.mov"), 0);
    WriteBytes(folder / "text.mov", {'n', 'o', ' ', 'm', 'o', 'v', 'i', 'e'});
    EXPECT_EQ(CountWrittenFrames(folder / "text.mov"), 0);
    RunFfmpeg("-f lavfi -i sine -t 0.1 '" + (folder / "a.wav") + "'");
    EXPECT_EQ(CountWrittenFrames(folder / "a.wav"), 0);
}

TEST(WrittenFrames, AreNoneWhereTheFirstPictureCannotBeDecoded) {
    const TempFolder folder;
    // The parameter sets are nowhere.
    const std::string path = MakeMovie(folder, "a.h264", "-c:v libx264 -flags +global_header");
    EXPECT_EQ(CountWrittenFrames(path), 0);
}

} // namespace
