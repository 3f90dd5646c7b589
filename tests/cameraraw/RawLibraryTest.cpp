// Finding the SDK, as a process does it: once. Each test of a missing one runs a program that has the
// module inside.

#include "cameraraw/RawLibrary.h"

#include "cameraraw/RawTestSupport.h"
#include "support/LibraryFile.h"
#include "support/LibrarySearch.h"
#include "tools/Workspace.h"

#include <fstream>
#include <iterator>

namespace {

const std::string libraryFile = "libRavenlightRawAPI.so";
/// What three clips say without a codec: of the context that is made, which has none, and of its attempt to
/// open the clip.
const std::string withoutCodec = "Vrel NULL pointerVrel NULL pointer"
                                 "Vrel NULL pointerVrel NULL pointer"
                                 "Vrel NULL pointerVrel NULL pointer";

std::string ContentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A place where libraries are looked for first.
class RawLibrary : public testing::Test {
protected:
    /// A copy of the host's library, which comes first then. The copy doesn't tell the system's loader where
    /// the build has its libraries, and has none beside it but those of this place.
    RawLibrary() {
        std::string host = ContentOf(CORVEX_HOST_LIBRARY);
        const std::string directory = CORVEX_LIBRARY_DIR;
        for (size_t at = host.find(directory); at != std::string::npos; at = host.find(directory))
            host[at + 1] = '-';
        place_.Write("libcorvexsystem.so", host);
    }
    /// Nothing of FFmpeg is found: it has lines of its own to say.
    ProgramRun Run() const {
        return place_.Shell("env CORVEX_FFMPEG_DIR=/no/such/directory LD_LIBRARY_PATH='" + place_.Path("") +
                            "' '" CORVEX_RAW_LOADER "'");
    }
    void ExpectRefused() const {
        const ProgramRun run = Run();
        EXPECT_EQ(run.status, 0);
        EXPECT_TRUE(run.out.ends_with("refused\nrefused\nrefused\nothers are there\n")) << run.out;
        EXPECT_EQ(run.err, withoutCodec);
    }

    Workspace place_;
};

TEST_F(RawLibrary, IsFoundWhereLibrariesAreLookedFor) {
    place_.Write(libraryFile, ContentOf(CORVEX_RAW_SCRIPTED));
    const ProgramRun run = Run();
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(run.out.ends_with("opened\nopened\ndecoded\nothers are there\n")) << run.out;
    EXPECT_EQ(run.err, "");
}

TEST_F(RawLibrary, ThatIsNowhereLeavesContextsWithoutACodec) {
    if (programOpensLibraries) GTEST_SKIP() << "the program finds it";
    ExpectRefused();
}

TEST_F(RawLibrary, ThatIsNoLibraryLeavesContextsWithoutACodec) {
    place_.Write(libraryFile, "");
    ExpectRefused();
}

TEST_F(RawLibrary, WithoutItsExportLeavesContextsWithoutACodec) {
    std::string file = ContentOf(CORVEX_RAW_SCRIPTED);
    ASSERT_TRUE(RemoveFunctionName(file, rawFactoryFunctionName));
    place_.Write(libraryFile, file);
    ExpectRefused();
}

class RawLibraryHere : public RawTest {};

TEST_F(RawLibraryHere, IsAskedForByItsBareNameAndItsOneExport) {
    EXPECT_STREQ(rawLibraryName, "RavenlightRawAPI.dll");
    EXPECT_STREQ(rawFactoryFunctionName, "CreateRavenlightRawFactoryInstance");
    std::string failure;
    EXPECT_EQ(FindRawFactoryFunction(&failure), &CreateRavenlightRawFactoryInstance);
    EXPECT_EQ(failure, "");
    EXPECT_EQ(LoadRawFactoryFunction(), &CreateRavenlightRawFactoryInstance);
}

TEST_F(RawLibraryHere, EveryFactoryIsANewReference) {
    const RawPointer<RawFactory> first = CreateRawFactory();
    const RawPointer<RawFactory> second = CreateRawFactory();
    EXPECT_TRUE(first && second);
    EXPECT_EQ(Script().objects, 2);
}

TEST_F(RawLibraryHere, AFactoryThatIsMissingIsReported) {
    Script().hasFactory = false;
    EXPECT_EQ(WordsOf([] { EXPECT_FALSE(CreateRawFactory()); }), "Vrel NULL pointer");
}

} // namespace
