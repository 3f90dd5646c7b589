// Finding the library, as a process does it: once, while the module loads. Each test runs a program that
// loads the module.

#include "codecs/DNXLibrary.h"

#include "support/LibraryFile.h"
#include "support/LibrarySearch.h"
#include "tools/Workspace.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace {

const std::string libraryFile = "libDNxHR.so";
const std::string version = "DNX SDK API version 2.10.3-456-R\n";
const std::string present = "16 DNx encoders, 1 and 1 decoders\nothers are there\n";
const std::string missing = "0 DNx encoders, 0 and 0 decoders\nothers are there\n";

constexpr const char* functions[] = {
#define NAMED(name) #name,
    CORVEX_DNX_FUNCTIONS(NAMED)
#undef NAMED
};

std::string ContentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A place where libraries are looked for first.
class DNXLibrary : public testing::Test {
protected:
    void PlaceScripted() const { place_.Write(libraryFile, ContentOf(CORVEX_DNX_SCRIPTED)); }
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
    /// Nothing of FFmpeg is found: it has lines of its own to say.
    ProgramRun Run(const std::string& environment = "") const {
        return place_.Shell("env CORVEX_FFMPEG_DIR=/no/such/directory LD_LIBRARY_PATH='" + place_.Path("") +
                            "' " + environment + " '" CORVEX_DNX_REGISTERED "'");
    }
    static void ExpectMissing(const ProgramRun& run) {
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, missing);
    }

    Workspace place_;
};

TEST_F(DNXLibrary, IsFoundWhereLibrariesAreLookedFor) {
    PlaceScripted();
    const ProgramRun run = Run();
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, version);
    EXPECT_EQ(run.err, present);
}

TEST_F(DNXLibrary, IsEndedOnceWhenTheProcessEnds) {
    PlaceScripted();
    const ProgramRun run = Run("CORVEX_DNX_TELLS=1");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, present + "finalized\n");
}

TEST_F(DNXLibrary, ThatDoesNotEndKeepsTheProcessFromNothing) {
    PlaceScripted();
    const ProgramRun run = Run("CORVEX_DNX_TELLS=1 CORVEX_DNX_FAILING=Finalize");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, version);
    EXPECT_EQ(run.err, present);
}

TEST_F(DNXLibrary, ThatDoesNotStartIsWarnedOfAndLeftOut) {
    PlaceScripted();
    const ProgramRun run = Run("CORVEX_DNX_TELLS=1 CORVEX_DNX_FAILING=Initialize");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "Warning: Failed to initialise DNXCodec\n");
    EXPECT_EQ(run.err, missing);
}

TEST_F(DNXLibrary, ThatIsNowhereIsLeftOutSilently) {
    if (programOpensLibraries) GTEST_SKIP() << "the program finds it";
    PlaceHost();
    ExpectMissing(Run());
}

TEST_F(DNXLibrary, ThatIsNoLibraryIsLeftOutSilently) {
    PlaceHost();
    place_.Write(libraryFile, "");
    ExpectMissing(Run());
}

class DNXFunction : public DNXLibrary, public testing::WithParamInterface<const char*> {};

TEST_P(DNXFunction, ThatIsMissingLeavesTheLibraryOutSilently) {
    std::string file = ContentOf(CORVEX_DNX_SCRIPTED);
    ASSERT_TRUE(RemoveFunctionName(file, std::string("DNX_") + GetParam()));
    place_.Write(libraryFile, file);
    ExpectMissing(Run("CORVEX_DNX_TELLS=1"));
}

INSTANTIATE_TEST_SUITE_P(Twelve, DNXFunction, testing::ValuesIn(functions),
                         [](const auto& name) { return std::string(name.param); });

TEST(DNXFunctions, AreTwelve) { EXPECT_EQ(std::size(functions), 12U); }

TEST(DNXFunctions, AreBoundInThisProcess) {
    ASSERT_TRUE(LoadDNX());
    DNXFunctions found;
    std::string failure;
    EXPECT_TRUE(BindDNXFunctions(found, &failure));
    EXPECT_EQ(failure, "");
    EXPECT_EQ(found.DecodeFrame, DNX().DecodeFrame);
    EXPECT_EQ(found.DeleteEncoder, DNX().DeleteEncoder);
}

} // namespace
