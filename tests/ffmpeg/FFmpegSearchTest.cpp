#include "ffmpeg/FFmpegSearch.h"

#include "ffmpeg/StandIns.h"
#include "host/Platform.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavcodec/version.h>
#include <libavformat/version.h>
#include <libavutil/version.h>
#include <libswresample/version.h>
#include <libswscale/version.h>
}

namespace {

namespace fs = std::filesystem;

const std::string avcodecFile = FFmpegFileName(FFmpegLibrary::avcodec);

/// The search directories, each mapped to a directory of a workspace, and the environment variable unset.
class FFmpegSearch : public testing::Test {
protected:
    void SetUp() override {
        for (size_t i = 0; i < FFmpegSearchDirectories.size(); ++i)
            SetPathMap(FFmpegSearchDirectories[i], Root(i).c_str());
    }
    void TearDown() override {
        for (const char* const directory : FFmpegSearchDirectories)
            SetPathMap(directory, nullptr);
    }

    std::string Root(size_t index) const { return workspace.Path("root" + std::to_string(index)); }
    /// Puts libavcodec into a directory.
    static void PutLibrary(const std::string& directory) {
        fs::create_directories(directory);
        std::ofstream(directory + "/" + avcodecFile) << "library";
    }

    const Workspace workspace;
    const EnvironmentVariable noVariable{"CORVEX_FFMPEG_DIR", nullptr};
};

TEST_F(FFmpegSearch, FilesAreNamedByTheMajorsOfTheHeaders) {
    const auto name = [](const std::string& library, int major) {
        return "lib" + library + ".so." + std::to_string(major);
    };
    EXPECT_EQ(FFmpegFileName(FFmpegLibrary::avutil), name("avutil", LIBAVUTIL_VERSION_MAJOR));
    EXPECT_EQ(FFmpegFileName(FFmpegLibrary::swscale), name("swscale", LIBSWSCALE_VERSION_MAJOR));
    EXPECT_EQ(FFmpegFileName(FFmpegLibrary::swresample), name("swresample", LIBSWRESAMPLE_VERSION_MAJOR));
    EXPECT_EQ(FFmpegFileName(FFmpegLibrary::avcodec), name("avcodec", LIBAVCODEC_VERSION_MAJOR));
    EXPECT_EQ(FFmpegFileName(FFmpegLibrary::avformat), name("avformat", LIBAVFORMAT_VERSION_MAJOR));
}

TEST_F(FFmpegSearch, TheRootsStandInAFixedOrder) {
    const std::vector<std::string> directories(FFmpegSearchDirectories.begin(),
                                               FFmpegSearchDirectories.end());
    EXPECT_EQ(directories, (std::vector<std::string>{"FFmpeg:", "Corvex:/ffmpeg", "CorvexLibs:/ffmpeg",
                                                     "/opt/ffmpeg", "/usr/local/ffmpeg"}));
}

TEST_F(FFmpegSearch, WithoutAnyLibraryTheDirectoryIsEmptyAndTheNamesAreBare) {
    EXPECT_EQ(FindFFmpegDirectory(), "");
    for (const FFmpegLibrary library : allFFmpegLibraries)
        EXPECT_EQ(FFmpegLibraryPath("", library), FFmpegFileName(library));
}

TEST_F(FFmpegSearch, AVariableThatNamesADirectoryWithoutTheLibrariesHidesTheRoots) {
    PutLibrary(Root(0));
    const EnvironmentVariable variable("CORVEX_FFMPEG_DIR", "/no/such/place/");
    EXPECT_EQ(FindFFmpegDirectory(), "/no/such/place/");
}

TEST_F(FFmpegSearch, TheVariablesValueGetsASeparatorAtItsEnd) {
    const EnvironmentVariable variable("CORVEX_FFMPEG_DIR", "/some/place");
    EXPECT_EQ(FindFFmpegDirectory(), "/some/place/");
}

TEST_F(FFmpegSearch, TheVariablesValueGetsNoSecondSeparator) {
    const EnvironmentVariable variable("CORVEX_FFMPEG_DIR", "some place/");
    EXPECT_EQ(FindFFmpegDirectory(), "some place/");
}

TEST_F(FFmpegSearch, AnEmptyVariableCountsAsNone) {
    PutLibrary(Root(1));
    const EnvironmentVariable variable("CORVEX_FFMPEG_DIR", "");
    EXPECT_EQ(FindFFmpegDirectory(), Root(1) + "/");
}

TEST_F(FFmpegSearch, PathMapsDoNotApplyToTheVariablesValue) {
    const EnvironmentVariable variable("CORVEX_FFMPEG_DIR", "FFmpeg:");
    EXPECT_EQ(FindFFmpegDirectory(), "FFmpeg:/");
}

TEST_F(FFmpegSearch, TheBinFolderWinsOverTheLibFolder) {
    PutLibrary(Root(2) + "/lib");
    PutLibrary(Root(2) + "/bin");
    EXPECT_EQ(FindFFmpegDirectory(), Root(2) + "/bin/");
}

TEST_F(FFmpegSearch, TheLibFolderWinsOverTheRootItself) {
    PutLibrary(Root(2));
    PutLibrary(Root(2) + "/lib");
    EXPECT_EQ(FindFFmpegDirectory(), Root(2) + "/lib/");
}

TEST_F(FFmpegSearch, ALaterRootIsUsedIfTheEarlierOnesLackTheFile) {
    fs::create_directories(Root(0) + "/bin");
    fs::create_directories(Root(1) + "/lib");
    for (size_t i = FFmpegSearchDirectories.size(); i-- > 0;) {
        PutLibrary(Root(i));
        EXPECT_EQ(FindFFmpegDirectory(), Root(i) + "/");
    }
}

TEST_F(FFmpegSearch, TheWalkStopsAtTheFirstHit) {
    PutLibrary(Root(0));
    PutLibrary(Root(1) + "/bin");
    EXPECT_EQ(FindFFmpegDirectory(), Root(0) + "/");
}

TEST_F(FFmpegSearch, ARootWithASeparatorAtItsEndGetsNoSecondOne) {
    PutLibrary(Root(0) + "/lib");
    SetPathMap(FFmpegSearchDirectories[0], (Root(0) + "/").c_str());
    EXPECT_EQ(FindFFmpegDirectory(), Root(0) + "/lib/");
}

TEST_F(FFmpegSearch, OnlyLibavcodecIsProbed) {
    for (const FFmpegLibrary library : allFFmpegLibraries) {
        if (library == FFmpegLibrary::avcodec) continue;
        fs::create_directories(Root(0));
        std::ofstream(Root(0) + "/" + FFmpegFileName(library)) << "library";
    }
    PutLibrary(Root(3));
    EXPECT_EQ(FindFFmpegDirectory(), Root(3) + "/");
}

TEST_F(FFmpegSearch, ADirectoryOfTheLibrarysNameIsNotTheLibrary) {
    fs::create_directories(Root(0) + "/bin/" + avcodecFile);
    PutLibrary(Root(0) + "/lib");
    EXPECT_EQ(FindFFmpegDirectory(), Root(0) + "/lib/");
}

TEST_F(FFmpegSearch, AValueIsCutTo1039BytesWithItsSeparator) {
    const std::string value = "/" + std::string(5000, 'x');
    const EnvironmentVariable variable("CORVEX_FFMPEG_DIR", value.c_str());
    EXPECT_EQ(FindFFmpegDirectory(), value.substr(0, 1038) + "/");
}

TEST_F(FFmpegSearch, APathOfMoreThan1039BytesIsCut) {
    const std::string fits = std::string(1038 - avcodecFile.size(), 'x') + "/";
    EXPECT_EQ(FFmpegLibraryPath(fits, FFmpegLibrary::avcodec), fits + avcodecFile);
    const std::string tooLong = "x" + fits;
    EXPECT_EQ(FFmpegLibraryPath(tooLong, FFmpegLibrary::avcodec), (tooLong + avcodecFile).substr(0, 1039));
}

} // namespace
