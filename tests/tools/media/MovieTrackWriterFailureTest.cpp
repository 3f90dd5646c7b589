// Movies that can't be written.

#include "FileSizeLimit.h"
#include "SmallMovies.h"
#include "framework/CxAVTypes.h"
#include "media/ToolError.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

ExitStatus StatusOf(const std::function<void()>& job) {
    try {
        job();
    } catch (const ToolError& error) {
        return error.status();
    }
    return ExitStatus::Done;
}

TEST(MovieTrackWriterFailure, WithoutFinishTheOldMovieStays) {
    const TempFolder folder;
    WriteBytes(folder / "a.mov", {1, 2, 3});
    const MovieTrackSettings settings = Settings(folder / "a.mov", FourCC("v210"));
    {
        MovieTrackWriter writer(settings);
        writer.WriteFrame(Frame(0, FrameSize(settings)).data(), FrameSize(settings));
        EXPECT_TRUE(std::filesystem::exists(folder / "a.mov.part"));
    }
    EXPECT_EQ(ReadBytes(folder / "a.mov"), (std::vector<uint8_t>{1, 2, 3}));
    EXPECT_EQ(folder.FileCount(), 1u);
}

TEST(MovieTrackWriterFailure, AFrameOfTheWrongSizeIsRefused) {
    const TempFolder folder;
    const MovieTrackSettings settings = Settings(folder / "a.mov", FourCC("v210"));
    MovieTrackWriter writer(settings);
    const std::vector<uint8_t> frame = Frame(0, FrameSize(settings) - 1);
    EXPECT_EQ(StatusOf([&] { writer.WriteFrame(frame.data(), frame.size()); }), ExitStatus::JobFailed);
    EXPECT_EQ(StatusOf([&] { writer.WriteFrame(frame.data(), 0); }), ExitStatus::JobFailed);
}

TEST(MovieTrackWriterFailure, AnExtensionWithoutAContainerIsUnsupported) {
    const TempFolder folder;
    for (const char* name : {"a.exr", "a", "a.mp3"}) {
        EXPECT_EQ(StatusOf([&] { MovieTrackWriter(Settings(folder / name, FourCC("v210"))); }),
                  ExitStatus::Unsupported);
    }
    EXPECT_EQ(folder.FileCount(), 0u);
}

TEST(MovieTrackWriterFailure, ACodeThatTheContainerCannotHoldIsUnsupported) {
    const TempFolder folder;
    EXPECT_EQ(StatusOf([&] { MovieTrackWriter(Settings(folder / "a.avi", 24)); }), ExitStatus::Unsupported);
    EXPECT_EQ(StatusOf([&] { MovieTrackWriter(Settings(folder / "a.mkv", FourCC("b64a"))); }),
              ExitStatus::Unsupported);
    EXPECT_EQ(StatusOf([&] { MovieTrackWriter(Settings(folder / "a.avi", FourCC("avc1"))); }),
              ExitStatus::Unsupported);
    EXPECT_EQ(StatusOf([&] { MovieTrackWriter(Settings(folder / "a.mov", FourCC("zzzz"))); }),
              ExitStatus::Unsupported);
    EXPECT_EQ(folder.FileCount(), 0u);
}

TEST(MovieTrackWriterFailure, SettingsThatCannotBeAreWrongUsage) {
    const TempFolder folder;
    const auto status = [&](const std::function<void(MovieTrackSettings&)>& change) {
        MovieTrackSettings settings = Settings(folder / "a.mov", FourCC("v210"));
        change(settings);
        return StatusOf([&] { MovieTrackWriter{settings}; });
    };
    EXPECT_EQ(status([](auto& s) { s.width = 0; }), ExitStatus::Usage);
    EXPECT_EQ(status([](auto& s) { s.height = 40000; }), ExitStatus::Usage);
    EXPECT_EQ(status([](auto& s) { s.frameRate = {0, 1}; }), ExitStatus::Usage);
    EXPECT_EQ(status([](auto& s) { s.frameRate = {INT64_MAX, INT64_MAX - 1}; }), ExitStatus::Usage);
    EXPECT_EQ(status([](auto& s) { s.fieldOrder = 4; }), ExitStatus::Usage);
    EXPECT_EQ(status([](auto& s) { s.timeCode = "noon"; }), ExitStatus::Usage);
    EXPECT_EQ(status([](auto& s) { s.timeCode = "00:00:00;00"; }), ExitStatus::Usage); // no drop frame at 24
    EXPECT_EQ(folder.FileCount(), 0u);
}

TEST(MovieTrackWriterFailure, AMissingFolderCannotBeWritten) {
    const TempFolder folder;
    const std::string path = folder / "none/a.mov";
    try {
        MovieTrackWriter writer(Settings(path, FourCC("v210")));
        FAIL() << "opened";
    } catch (const ToolError& error) {
        EXPECT_EQ(error.status(), ExitStatus::CannotWrite);
        EXPECT_EQ(error.what(), path + ": No such file or directory");
    }
}

TEST(MovieTrackWriterFailure, AFullDiskLeavesNoFile) {
    const TempFolder folder;
    // From one that stops the header, over those that stop a frame, to those that stop the index at the end.
    for (const char* name : {"a.mov", "a.avi", "a.mkv"}) {
        WriteMovie(Settings(folder / name, FourCC("v210")));
        const uintmax_t whole = std::filesystem::file_size(folder / name);
        std::filesystem::remove(folder / name);
        for (const uintmax_t limit : {uintmax_t{0}, uintmax_t{10}, whole / 2, whole - 200, whole - 1}) {
            const FileSizeLimit full(limit);
            EXPECT_EQ(StatusOf([&] { WriteMovie(Settings(folder / name, FourCC("v210"))); }),
                      ExitStatus::CannotWrite)
                << name << ' ' << limit << " of " << whole;
            EXPECT_EQ(folder.FileCount(), 0u);
        }
    }
}

TEST(MovieTrackWriterFailure, AFullDiskIsToldInItsOwnWords) {
    const TempFolder folder;
    const FileSizeLimit full(1000);
    try {
        WriteMovie(Settings(folder / "a.mov", FourCC("v210")));
        FAIL() << "written";
    } catch (const ToolError& error) {
        EXPECT_EQ(error.what(), (folder / "a.mov") + ": File too large");
    }
}

} // namespace
