// Finding the library, as a process does it: once, while the module loads. Each test runs a program that
// loads the module.

#include "codecs/WMFLibrary.h"

#include "support/LibraryFile.h"
#include "tools/Workspace.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace {

const std::string libraryFile = "libmfplat.so";
const std::string present = "avc1: DXVA\navci: DXVA\n1 encoders of H.264\n";
const std::string missing = "avc1:\navci:\n0 encoders of H.264\n";

constexpr const char* functions[] = {"MFTEnumEx",      "MFCreateMemoryBuffer", "MFCreateSample",
                                     "CoInitializeEx", "CoUninitialize",       "CoTaskMemFree"};

std::string ContentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A place where libraries are looked for first.
class WMFLibrary : public testing::Test {
protected:
    void PlaceScripted() const { place_.Write(libraryFile, ContentOf(CORVEX_MF_SCRIPTED)); }
    /// A copy of the host's library, which comes first then. The copy doesn't tell the system's loader where
    /// the build has its libraries, and has none beside it but those of this place.
    void PlaceHost() const {
        std::string host = ContentOf(CORVEX_HOST_LIBRARY);
        const std::string directory = CORVEX_LIBRARY_DIR;
        ASSERT_NE(host.find(directory), std::string::npos);
        for (size_t at = host.find(directory); at != std::string::npos; at = host.find(directory))
            host[at + 1] = '-';
        place_.Write("libcorvexsystem.so", host);
    }
    ProgramRun Run(const std::string& ffmpegDirectory = "/no/such/directory") const {
        return place_.Shell("env CORVEX_FFMPEG_DIR='" + ffmpegDirectory + "' LD_LIBRARY_PATH='" +
                            place_.Path("") + "' '" CORVEX_MF_REGISTERED "'");
    }
    static void ExpectSaid(const ProgramRun& run, const std::string& words) {
        EXPECT_EQ(run.status, 0);
        // FFmpeg's absence and other back-ends have lines of their own.
        EXPECT_TRUE(run.err.ends_with(words)) << run.err;
    }

    Workspace place_;
};

TEST_F(WMFLibrary, WithoutFFmpegServesH264Alone) {
    PlaceScripted();
    ExpectSaid(Run(), present);
}

TEST_F(WMFLibrary, StandsBehindFFmpegWhereBothAreThere) {
    PlaceScripted();
    ExpectSaid(Run(""), "avc1: FFmpeg DXVA\navci: FFmpeg DXVA\n1 encoders of H.264\n");
}

TEST_F(WMFLibrary, ThatIsNowhereIsLeftOutSilently) {
    PlaceHost();
    const ProgramRun run = Run();
    ExpectSaid(run, missing);
    EXPECT_EQ(run.err.find("mfplat"), std::string::npos);
}

TEST_F(WMFLibrary, ThatIsNoLibraryIsLeftOut) {
    PlaceHost();
    place_.Write(libraryFile, "");
    ExpectSaid(Run(), missing);
}

class WMFFunction : public WMFLibrary, public testing::WithParamInterface<const char*> {};

TEST_P(WMFFunction, ThatIsMissingLeavesTheLibraryOut) {
    std::string file = ContentOf(CORVEX_MF_SCRIPTED);
    ASSERT_TRUE(RemoveFunctionName(file, GetParam()));
    place_.Write(libraryFile, file);
    ExpectSaid(Run(), missing);
}

INSTANTIATE_TEST_SUITE_P(Six, WMFFunction, testing::ValuesIn(functions),
                         [](const auto& name) { return std::string(name.param); });

TEST(WMFFunctions, AreBoundInThisProcess) {
    ASSERT_TRUE(CxWMF::LoadMediaFoundation());
    CxWMF::MediaFoundationFunctions found;
    std::string failure;
    EXPECT_TRUE(CxWMF::BindMediaFoundation(found, &failure));
    EXPECT_EQ(failure, "");
    EXPECT_EQ(found.MFTEnumEx, CxWMF::MediaFoundation().MFTEnumEx);
    EXPECT_EQ(found.CoTaskMemFree, CxWMF::MediaFoundation().CoTaskMemFree);
}

} // namespace
