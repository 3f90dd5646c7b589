// Files that get their name when they are whole.

#include "media/OutputFile.h"

#include "FileSizeLimit.h"
#include "MediaFiles.h"
#include "media/ToolError.h"

#include <gtest/gtest.h>

namespace {

const std::vector<uint8_t> content{1, 2, 3, 4};

TEST(OutputFile, TakesItsNameOnCommit) {
    const TempFolder folder;
    OutputFile file(folder / "a.bin");
    EXPECT_TRUE(file.Write(content.data(), content.size()));
    EXPECT_FALSE(std::filesystem::exists(folder / "a.bin"));
    EXPECT_TRUE(std::filesystem::exists(folder / "a.bin.part"));
    file.Commit();
    EXPECT_EQ(ReadBytes(folder / "a.bin"), content);
    EXPECT_EQ(folder.FileCount(), 1u);
}

TEST(OutputFile, WithoutACommitTheOldFileStays) {
    const TempFolder folder;
    WriteBytes(folder / "a.bin", {9});
    {
        OutputFile file(folder / "a.bin");
        file.Write(content.data(), content.size());
    }
    EXPECT_EQ(ReadBytes(folder / "a.bin"), std::vector<uint8_t>{9});
    EXPECT_EQ(folder.FileCount(), 1u);
}

TEST(OutputFile, SeeksAndTellsItsSize) {
    const TempFolder folder;
    OutputFile file(folder / "a.bin");
    file.Write(content.data(), content.size());
    EXPECT_EQ(file.Seek(1, SEEK_SET), 1);
    const uint8_t changed = 7;
    file.Write(&changed, 1);
    EXPECT_EQ(file.Size(), 4);
    file.Commit();
    EXPECT_EQ(ReadBytes(folder / "a.bin"), (std::vector<uint8_t>{1, 7, 3, 4}));
}

TEST(OutputFile, AFolderUnderTheNameIsRefusedAtOnce) {
    const TempFolder folder;
    std::filesystem::create_directory(folder / "a.bin");
    try {
        OutputFile file(folder / "a.bin");
        FAIL() << "opened";
    } catch (const ToolError& error) {
        EXPECT_EQ(error.status(), ExitStatus::CannotWrite);
        EXPECT_STREQ(error.what(), ((folder / "a.bin") + ": Is a directory").c_str());
    }
    EXPECT_EQ(folder.FileCount(), 1u);
}

TEST(OutputFile, AnErrorIsKeptUntilCommit) {
    const TempFolder folder;
    OutputFile file(folder / "a.bin");
    EXPECT_EQ(file.Seek(-5, SEEK_SET), -1);
    EXPECT_EQ(file.Error(), EINVAL);
    EXPECT_THROW(file.Commit(), ToolError);
    EXPECT_FALSE(std::filesystem::exists(folder / "a.bin"));
}

TEST(OutputFile, AFileOnADiskWithRoomIsTheSameAfterTheCheck) {
    const TempFolder folder;
    OutputFile file(folder / "a.bin");
    WriteBytes(file.PartPath(), content);
    file.CheckRoom();
    file.Commit();
    EXPECT_EQ(ReadBytes(folder / "a.bin"), content);
}

TEST(OutputFile, AFullDiskIsFoundByTheCheckForRoom) {
    const TempFolder folder;
    OutputFile file(folder / "a.bin");
    WriteBytes(file.PartPath(), std::vector<uint8_t>(5000));
    const FileSizeLimit full(5000);
    EXPECT_THROW(file.CheckRoom(), ToolError);
    EXPECT_EQ(file.Error(), EFBIG);
}

} // namespace
