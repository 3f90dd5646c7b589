// What the command says of the back-ends: those that are there, and why others are not.

#include "ToolRun.h"

#include "ffmpeg/DecoderCodes.h"
#include "ffmpeg/StandIns.h"

#include "FourCCText.h"

namespace {

using Json = nlohmann::json;

/// The result of `list`.
Json List(const Workspace& workspace, const std::string& section = "") {
    const ProgramRun run = RunTool(workspace, "list --json " + section);
    EXPECT_EQ(run.status, 0) << run.err;
    return Json::parse(run.out, nullptr, false)["result"];
}

/// The row of a list with this value under a key; null if there is none.
Json Find(const Json& list, const char* key, const std::string& value) {
    const auto found =
        std::find_if(list.begin(), list.end(), [&](const Json& row) { return row[key] == value; });
    return found != list.end() ? *found : Json();
}

/// Why FFmpeg is missing, with the libraries of a directory.
std::string ReasonIn(const std::string& directory) {
    const EnvironmentVariable variable("CORVEX_FFMPEG_DIR", directory.c_str());
    const Workspace workspace;
    const Json row = Find(List(workspace)["backEnds"], "name", "FFmpeg");
    EXPECT_EQ(row["available"], false);
    return row["reason"];
}

} // namespace

TEST(List, NamesEveryCodeThatFFmpegDecodes) {
    const Workspace workspace;
    const Json decoders = List(workspace, "decoders")["decoders"];
    for (const CxFFMPEG::DecoderCode& code : CxFFMPEG::DecoderCodes()) {
        const Json row = Find(decoders, "fourCC", FourCCText(code.fourCC));
        ASSERT_TRUE(row.is_object()) << FourCCText(code.fourCC);
        // Others that decode a code come behind it.
        EXPECT_EQ(row["backEnds"].front(), "FFmpeg") << FourCCText(code.fourCC);
    }
}

TEST(List, HasTheCodesInOrderAndEachOnce) {
    const Workspace workspace;
    const std::string names = RunTool(workspace, "list decoders").out;
    const Json decoders = List(workspace, "decoders")["decoders"];
    std::set<std::string> codes;
    for (const Json& row : decoders) {
        codes.insert(row["fourCC"].get<std::string>());
        EXPECT_NE(names.find("  " + row["fourCC"].get<std::string>() + "\t"), std::string::npos);
    }
    EXPECT_EQ(codes.size(), decoders.size());
}

TEST(List, NamesTheHostFormatOfFFmpegWithExtensionsAndPriority) {
    const Workspace workspace;
    const Json row = Find(List(workspace, "formats")["formats"], "name", "FFMPEGFileFormats");
    EXPECT_EQ(row["extensions"],
              Json::array({".avi", ".mov", ".mp4", ".mkv", ".flv", ".gif", ".mts", ".m2ts", ".webm"}));
    EXPECT_EQ(row["priority"], -120);
    EXPECT_EQ(row["available"], true);
    EXPECT_EQ(row["loads"], true);
}

TEST(List, SaysInWhichDirectoryFFmpegIsMissing) {
    const Workspace nothing;
    EXPECT_EQ(ReasonIn(nothing.Path("")), "libavcodec.so.59 not found in " + nothing.Path(""));
}

TEST(List, SaysWhichLibraryOrFunctionOfFFmpegIsMissing) {
    const StandIns libraries;
    ASSERT_TRUE(libraries.RemoveFunction(FFmpegLibrary::swscale, "sws_scale"));
    EXPECT_EQ(ReasonIn(libraries.Directory()), "libswscale.so.6 has no function sws_scale");
    libraries.Remove(FFmpegLibrary::avutil);
    EXPECT_EQ(ReasonIn(libraries.Directory()), "libavutil.so.57 not found in " + libraries.Directory());
}

TEST(List, SaysThatAnFFmpegIsTooOld) {
    const StandIns libraries;
    const ReportedVersion version(57, 0, 0);
    EXPECT_EQ(ReasonIn(libraries.Directory()), "libavcodec 57 is too old: 58 and higher are bound");
}

TEST(List, TellsPeopleWhyFFmpegAndItsFormatAreNotThere) {
    const Workspace workspace;
    const EnvironmentVariable variable("CORVEX_FFMPEG_DIR", workspace.Path("").c_str());
    const std::string text = RunTool(workspace, "list").out;
    EXPECT_NE(text.find("FFmpeg: libavcodec.so.59 not found in " + workspace.Path("") + "\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("priority -120, not available\n"), std::string::npos) << text;
}

TEST(WithoutFFmpeg, ProResAndUncompressedMoviesDecode) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov", "-c:v prores_ks -pix_fmt yuv422p10le", 1));
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "b.mov", "-c:v v210", 1));
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "c.mov", "-c:v v408", 1));
    const EnvironmentVariable variable("CORVEX_FFMPEG_DIR", workspace.Path("").c_str());
    for (const char* file : {"a.mov", "b.mov", "c.mov"}) {
        const ProgramRun run = RunTool(workspace, std::string("decode ") + file + " -o o.png");
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.err, "");
    }
}

TEST(WithoutFFmpeg, TheHostFormatIsNotAvailable) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, "a.mov", "-c:v mjpeg", 1));
    const EnvironmentVariable variable("CORVEX_FFMPEG_DIR", workspace.Path("").c_str());
    ExpectFailure(RunTool(workspace, "decode a.mov -o o.png --via format"), 5,
                  "FFMPEG Assorted formats is not available");
    ExpectFailure(RunTool(workspace, "decode a.mov -o o.png"), 5, "no decoder for track code 'jpeg'");
}
