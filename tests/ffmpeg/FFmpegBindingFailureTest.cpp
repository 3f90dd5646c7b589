// Why an attempt to bind FFmpeg failed, in words.

#include "ffmpeg/FFmpegBinding.h"
#include "ffmpeg/StandIns.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

/// Binds what a directory has and gives the reason that is told.
std::string ReasonIn(const std::string& directory) {
    std::string reason = "what an earlier attempt told";
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const bool bound = FFmpegBinding().BindFFmpegFunctions(directory, &reason);
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(bound, reason.empty()) << reason;
    return reason;
}

TEST(FFmpegBindingFailure, AWholeSetHasNone) {
    const StandIns libraries;
    EXPECT_EQ(ReasonIn(libraries.Directory()), "");
}

TEST(FFmpegBindingFailure, AnEmptyDirectoryLacksLibavcodec) {
    const Workspace nothing;
    const std::string directory = nothing.Path("");
    EXPECT_EQ(ReasonIn(directory),
              std::string(FFmpegFileName(FFmpegLibrary::avcodec)) + " not found in " + directory);
}

TEST(FFmpegBindingFailure, EachMissingLibraryIsNamedWithItsDirectory) {
    for (const FFmpegLibrary library : allFFmpegLibraries) {
        const StandIns libraries;
        libraries.Remove(library);
        EXPECT_EQ(ReasonIn(libraries.Directory()),
                  std::string(FFmpegFileName(library)) + " not found in " + libraries.Directory());
    }
}

TEST(FFmpegBindingFailure, AFileThatIsNoLibraryIsTheLoadersToExplain) {
    const StandIns libraries;
    std::ofstream(libraries.Path(FFmpegLibrary::swscale)) << "no library";
    const std::string reason = ReasonIn(libraries.Directory());
    EXPECT_NE(reason.find(libraries.Path(FFmpegLibrary::swscale)), std::string::npos) << reason;
    EXPECT_EQ(reason.find("not found in"), std::string::npos) << reason;
}

TEST(FFmpegBindingFailure, AMissingFunctionIsNamedWithItsLibrary) {
    const StandIns libraries;
    ASSERT_TRUE(libraries.RemoveFunction(FFmpegLibrary::avutil, "av_mallocz"));
    EXPECT_EQ(ReasonIn(libraries.Directory()),
              std::string(FFmpegFileName(FFmpegLibrary::avutil)) + " has no function av_mallocz");
}

TEST(FFmpegBindingFailure, AVersionThatIsTooLowIsTold) {
    const StandIns libraries;
    const ReportedVersion version(57, 107, 100);
    EXPECT_EQ(ReasonIn(libraries.Directory()), "libavcodec 57 is too old: 58 and higher are bound");
}

} // namespace
