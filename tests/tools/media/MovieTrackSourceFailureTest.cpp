// Files that are missing, broken, or no movies.

#include "MediaFiles.h"
#include "media/MovieTrackSource.h"
#include "media/ToolError.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

namespace {

const std::string clip = "-c:v libx264 -pix_fmt yuv420p -bf 2 -g 10 ";

ExitStatus OpenStatus(const std::string& path) {
    try {
        MovieTrackSource::Open(path);
    } catch (const ToolError& error) {
        EXPECT_EQ(error.file(), path);
        EXPECT_EQ(error.what(), path + ": " + error.cause());
        EXPECT_EQ(error.cause().find('\n'), std::string::npos);
        return error.status();
    }
    return ExitStatus::Done;
}

void Truncate(const std::string& path, double part) {
    std::filesystem::resize_file(
        path, static_cast<uintmax_t>(static_cast<double>(std::filesystem::file_size(path)) * part));
}

TEST(MovieTrackSourceFailure, AMissingFileCannotBeOpened) {
    const TempFolder folder;
    EXPECT_EQ(OpenStatus(folder / "none.mov"), ExitStatus::CannotOpen);
}

TEST(MovieTrackSourceFailure, AFolderCannotBeOpened) {
    const TempFolder folder;
    std::filesystem::create_directory(folder / "a.mov");
    EXPECT_EQ(OpenStatus(folder / "a.mov"), ExitStatus::CannotOpen);
}

TEST(MovieTrackSourceFailure, ADeviceCannotBeOpened) {
    EXPECT_EQ(OpenStatus("/dev/zero"), ExitStatus::CannotOpen);
}

TEST(MovieTrackSourceFailure, AnEmptyFileIsDamaged) {
    const TempFolder folder;
    WriteBytes(folder / "a.mov", {});
    EXPECT_EQ(OpenStatus(folder / "a.mov"), ExitStatus::Damaged);
}

TEST(MovieTrackSourceFailure, ATextFileIsDamagedWhateverItsName) {
    const TempFolder folder;
    const std::string text = "Frames are counted from nought.\n";
    for (const char* name : {"a.mov", "a.txt", "a.avi", "a"}) {
        WriteBytes(folder / name, {text.begin(), text.end()});
        EXPECT_EQ(OpenStatus(folder / name), ExitStatus::Damaged) << name;
    }
}

TEST(MovieTrackSourceFailure, SoundAloneIsUnsupported) {
    const TempFolder folder;
    RunFfmpeg("-f lavfi -i sine -t 1 '" + (folder / "a.wav") + "'");
    RunFfmpeg("-f lavfi -i sine -t 1 '" + (folder / "a.mp4") + "'");
    EXPECT_EQ(OpenStatus(folder / "a.wav"), ExitStatus::Unsupported);
    EXPECT_EQ(OpenStatus(folder / "a.mp4"), ExitStatus::Unsupported);
}

TEST(MovieTrackSourceFailure, AStillImageIsUnsupported) {
    const TempFolder folder;
    RunFfmpeg(TestPicture(64, 48, "25", 1) + " '" + (folder / "a.png") + "'");
    EXPECT_EQ(OpenStatus(folder / "a.png"), ExitStatus::Unsupported);
}

TEST(MovieTrackSourceFailure, APlaylistThatNamesOtherFilesIsNotFollowed) {
    const TempFolder folder;
    RunFfmpeg(TestPicture(64, 48, "25", 10) + " -c:v libx264 -f hls '" + (folder / "a.m3u8") + "'");
    EXPECT_EQ(OpenStatus(folder / "a.m3u8"), ExitStatus::Unsupported);
}

TEST(MovieTrackSourceFailure, NamesWithAColonAreFiles) {
    const TempFolder folder;
    RunFfmpeg(TestPicture(64, 48, "25", 2) + " -c:v mjpeg '" + (folder / "a.mov") + "'");
    std::filesystem::rename(folder / "a.mov", folder / "http:a.mov");
    EXPECT_EQ(MovieTrackSource::Open(folder / "http:a.mov")->GetFrameCount(), 2);
}

TEST(MovieTrackSourceFailure, AMovieWithoutItsHeaderIsDamaged) {
    const TempFolder folder;
    RunFfmpeg(TestPicture(64, 48, "25", 20) + " " + clip + "'" + (folder / "a.mov") + "'");
    Truncate(folder / "a.mov", 0.5);
    EXPECT_EQ(OpenStatus(folder / "a.mov"), ExitStatus::Damaged);
}

class TruncatedFiles : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Containers, TruncatedFiles, testing::Values("mov", "avi", "mkv", "mts"),
                         [](const auto& info) { return std::string(info.param); });

TEST_P(TruncatedFiles, HoldTheSamplesThatAreThere) {
    const TempFolder folder;
    const std::string path = folder / (std::string("a.") + GetParam());
    RunFfmpeg(TestPicture(128, 96, "25", 60) + " " + clip + "-movflags faststart '" + path + "'");
    Truncate(path, 0.6);
    const auto source = MovieTrackSource::Open(path);
    EXPECT_GT(source->GetFrameCount(), 5);
    EXPECT_LT(source->GetFrameCount(), 60);
    int32_t size = 0;
    for (int32_t i = source->GetSampleCount() - 1; i >= 0; --i) {
        EXPECT_NE(source->ReadSample(i, nullptr, size), nullptr) << i;
    }
    EXPECT_EQ(source->ReadSample(source->GetSampleCount(), nullptr, size), nullptr);
}

TEST(MovieTrackSourceFailure, AFileThatBreaksOffSaysSo) {
    const TempFolder folder;
    for (const char* name : {"a.mov", "a.avi"}) {
        const std::string path = folder / name;
        RunFfmpeg(TestPicture(128, 96, "25", 60) + " " + clip + "-movflags faststart '" + path + "'");
        Truncate(path, 0.6);
        EXPECT_NE(MovieTrackSource::Open(path)->Info().damage.find("of 60 can be read"), std::string::npos)
            << name;
    }
}

TEST(MovieTrackSourceFailure, AFileThatShrinksWhileItIsOpenGivesNull) {
    const TempFolder folder;
    const std::string path = folder / "a.mov";
    RunFfmpeg(TestPicture(128, 96, "25", 30) + " -c:v v210 '" + path + "'");
    const auto source = MovieTrackSource::Open(path);
    Truncate(path, 0.1);
    int32_t size = 0;
    EXPECT_EQ(source->ReadSample(29, nullptr, size), nullptr);
    EXPECT_EQ(source->ReadSample(15, nullptr, size), nullptr);
    EXPECT_EQ(size, 0);
}

TEST(MovieTrackSourceFailure, AFileThatIsReplacedWhileItIsOpenGivesItsOwnSamplesOrNull) {
    const TempFolder folder;
    const std::string path = folder / "a.mov";
    RunFfmpeg(TestPicture(128, 96, "25", 30) + " -c:v mjpeg '" + path + "'");
    const auto source = MovieTrackSource::Open(path);
    RunFfmpeg(TestPicture(64, 48, "25", 30) + " -c:v libx264 '" + (folder / "b.mov") + "'");
    WriteBytes(path, ReadBytes(folder / "b.mov"));
    const int32_t lastPossible = source->GetMaxSampleSize();
    for (int32_t i = 0; i < 30; ++i) {
        int32_t size = 0;
        source->ReadSample(i, nullptr, size);
        EXPECT_LE(size, lastPossible);
    }
}

/// Opens and reads whatever a file gives; what it must not do shows under the sanitizers.
size_t ReadWhatIsThere(const std::string& path) {
    size_t bytes = 0;
    try {
        const auto source = MovieTrackSource::Open(path);
        for (int32_t i = source->GetSampleCount() - 1; i >= 0; i -= 3) {
            int32_t size = 0;
            if (source->ReadSample(i, nullptr, size) != nullptr) bytes += size;
            EXPECT_LE(size, source->GetMaxSampleSize());
        }
    } catch (const ToolError& error) {
        EXPECT_NE(error.status(), ExitStatus::Done);
    }
    return bytes;
}

TEST(MovieTrackSourceFailure, BytesThatWereChangedAtRandomDoNoHarm) {
    std::mt19937 random = MakeRandom();
    const TempFolder folder;
    for (const char* name : {"a.mov", "a.avi", "a.mkv", "a.mts"}) {
        const std::string path = folder / name;
        RunFfmpeg(TestPicture(64, 48, "25", 12) + " " + clip + "-movflags faststart '" + path + "'");
        const std::vector<uint8_t> whole = ReadBytes(path);
        EXPECT_GT(ReadWhatIsThere(path), 0u);
        for (int round = 0; round < 40; ++round) {
            std::vector<uint8_t> bytes = whole;
            for (int i = 0; i < 8; ++i)
                bytes[random() % (i < 4 ? 1500 : bytes.size())] = random() & 0xFF;
            WriteBytes(path, bytes);
            ReadWhatIsThere(path);
        }
    }
}

TEST(MovieTrackSourceFailure, AFileThatDisappearsIsStillRead) {
    const TempFolder folder;
    const std::string path = folder / "a.mov";
    RunFfmpeg(TestPicture(128, 96, "25", 5) + " -c:v v210 '" + path + "'");
    const auto source = MovieTrackSource::Open(path);
    std::filesystem::remove(path);
    int32_t size = 0;
    EXPECT_NE(source->ReadSample(3, nullptr, size), nullptr);
}

} // namespace
