// ProRes movies that the command makes, as FFmpeg reads them.

#include "ToolRun.h"

#include <cmath>
#include <functional>

namespace {

constexpr int kFrames = 3;
constexpr const char* kSize = "131x67";
constexpr const char* kFieldOrders[] = {"progressive", "tff", "bff"};

struct Codec {
    const char* tag;
    const char* name;
    const char* profile; ///< as ffprobe writes it
    bool is444;
    double leastPsnr; ///< dB of the colours, at the small size of the test
};

void PrintTo(const Codec& codec, std::ostream* out) { *out << codec.tag; }

constexpr Codec kCodecs[] = {
    {"apco", "Apple ProRes 422 Proxy", "Proxy", false, 34}, {"apcs", "Apple ProRes 422 LT", "LT", false, 36},
    {"apcn", "Apple ProRes 422", "Standard", false, 36},    {"apch", "Apple ProRes 422 HQ", "HQ", false, 36},
    {"ap4h", "Apple ProRes 4444", "4444", true, 50},        {"ap4x", "Apple ProRes 4444 XQ", "XQ", true, 50},
};

std::string ShortFieldOrder(const std::string& order) {
    return order == "progressive" ? order : (order == "tff" ? "tt" : "bb");
}

/// Images with alpha, and colours that chroma of half the width doesn't do much harm.
void MakePictures(const Workspace& workspace) {
    const std::string size(kSize);
    Prepare(workspace, "ffmpeg -v error -f lavfi -i \"testsrc2=r=25:s=" + size +
                           ",format=yuv444p,gblur=4,noise=alls=4:allf=t:all_seed=3,format=rgba64,"
                           "geq=r='r(X,Y)':g='g(X,Y)':b='b(X,Y)':a='65535*X/W'\" -frames:v " +
                           std::to_string(kFrames) + " in.%04d.png");
}

/// What ffprobe says of a movie's track.
std::string Probe(const Workspace& workspace, const std::string& movie) {
    return workspace
        .Shell("ffprobe -v error -count_frames -select_streams v:0 -show_entries stream=codec_name,profile,"
               "codec_tag_string,width,height,pix_fmt,field_order,color_range,color_space,color_transfer,"
               "color_primaries,r_frame_rate,nb_read_frames -of default=nw=1 " +
               movie)
        .out;
}

void ExpectTold(const std::string& probe, const std::string& key, const std::string& value) {
    EXPECT_NE(("\n" + probe).find("\n" + key + "=" + value + "\n"), std::string::npos)
        << key << "=" << value << " is not in\n"
        << probe;
}

void ExpectDecodesWithoutAWord(const Workspace& workspace, const std::string& movie) {
    const ProgramRun run = workspace.Shell("ffmpeg -v error -xerror -i " + movie + " -f null -");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
}

/// Average PSNR of the movie against the pictures, after `filter` for each of the two.
double Psnr(const Workspace& workspace, const std::string& movie, const std::string& movieFilter,
            const std::string& pictureFilter) {
    const ProgramRun run =
        workspace.Shell("ffmpeg -v info -i " + movie + " -r 25 -i in.%04d.png -lavfi \"[0:v]" + movieFilter +
                        "[a];[1:v]" + pictureFilter + "[b];[a][b]psnr\" -f null -");
    const size_t at = run.err.rfind("average:");
    if (at == std::string::npos) throw std::runtime_error(run.err);
    return std::strtod(run.err.c_str() + at + 8, nullptr);
}

double ColorPsnr(const Workspace& workspace, const std::string& movie) {
    return Psnr(workspace, movie, "scale=in_color_matrix=bt601:in_range=tv,format=gbrp16", "format=gbrp16");
}

std::string EncodeLine(const Codec& codec, const std::string& from, const std::string& to) {
    return "encode " + from + " -o " + to + " --codec '" + codec.name + "' ";
}

/// Makes a movie of the pictures.
void MakeMovie(const Workspace& workspace, const Codec& codec, const std::string& movie,
               const std::string& options) {
    const ProgramRun run =
        RunTool(workspace, EncodeLine(codec, "in.%04d.png", movie) + "--fps 25 " + options);
    ASSERT_EQ(run.status, 0) << run.err;
}

/// Runs `check` with a movie "out.mov" of the pictures in each field order.
void ForEachFieldOrder(
    const Codec& codec, const std::string& options,
    const std::function<void(const Workspace& workspace, const std::string& order)>& check) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePictures(workspace));
    for (const std::string order : kFieldOrders) {
        SCOPED_TRACE(order);
        ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, codec, "out.mov", options + " --field-order " + order));
        check(workspace, order);
    }
}

class EncodeProRes : public testing::TestWithParam<Codec> {};
class EncodeProRes444 : public EncodeProRes {};
class EncodeProResFamilies : public EncodeProRes {};

} // namespace

TEST_P(EncodeProRes, MoviesOfImagesTellTheirPropertiesInEveryFieldOrder) {
    const Codec& codec = GetParam();
    ForEachFieldOrder(codec, "", [&](const Workspace& workspace, const std::string& order) {
        const std::string probe = Probe(workspace, "out.mov");
        ExpectTold(probe, "codec_name", "prores");
        ExpectTold(probe, "profile", codec.profile);
        ExpectTold(probe, "codec_tag_string", codec.tag);
        ExpectTold(probe, "width", "131");
        ExpectTold(probe, "height", "67");
        ExpectTold(probe, "pix_fmt", codec.is444 ? "yuv444p12le" : "yuv422p10le");
        ExpectTold(probe, "field_order", ShortFieldOrder(order));
        ExpectTold(probe, "color_range", "tv");
        ExpectTold(probe, "color_space", "smpte170m");
        ExpectTold(probe, "color_transfer", "bt709");
        ExpectTold(probe, "color_primaries", "bt709");
        ExpectTold(probe, "r_frame_rate", "25/1");
        ExpectTold(probe, "nb_read_frames", std::to_string(kFrames));
    });
}

TEST_P(EncodeProRes, MoviesOfImagesShowThemInEveryFieldOrder) {
    const Codec& codec = GetParam();
    ForEachFieldOrder(codec, "", [&](const Workspace& workspace, const std::string& order) {
        ExpectDecodesWithoutAWord(workspace, "out.mov");
        const double psnr = ColorPsnr(workspace, "out.mov");
        std::printf("%s %s: %.1f dB\n", codec.tag, order.c_str(), psnr);
        EXPECT_GE(psnr, codec.leastPsnr);
    });
}

TEST_P(EncodeProRes, MoviesOfMoviesKeepFieldOrderRateTimeCodeAndColorTags) {
    const Codec& codec = GetParam();
    const Workspace workspace;
    Prepare(workspace, "ffmpeg -v error -f lavfi -i testsrc2=r=30000/1001:s=64x720 -frames:v 2 -c:v v210 "
                       "-field_order bb -timecode '01:00:00;00' -color_primaries bt2020 -color_trc smpte2084 "
                       "-colorspace bt709 -color_range tv in.mov");
    const ProgramRun run = RunTool(workspace, EncodeLine(codec, "in.mov", "out.mov"));
    ASSERT_EQ(run.status, 0) << run.err;
    ExpectDecodesWithoutAWord(workspace, "out.mov");
    const std::string probe = Probe(workspace, "out.mov");
    ExpectTold(probe, "field_order", "bb");
    ExpectTold(probe, "r_frame_rate", "30000/1001");
    ExpectTold(probe, "color_space", "bt709");
    ExpectTold(probe, "color_transfer", "smpte2084");
    ExpectTold(probe, "color_primaries", "bt2020");
    ExpectTold(probe, "nb_read_frames", "2");
    const std::string line = "ffprobe -v error -select_streams v:0 -show_entries stream_tags=timecode "
                             "-of csv=p=0 out.mov";
    EXPECT_EQ(workspace.Shell(line).out, "01:00:00;00\n");
}

TEST_P(EncodeProResFamilies, AreHeldByMatroskaToo) {
    const Codec& codec = GetParam();
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePictures(workspace));
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, codec, "out.mkv", ""));
    ExpectDecodesWithoutAWord(workspace, "out.mkv");
    const std::string probe = Probe(workspace, "out.mkv");
    ExpectTold(probe, "profile", codec.profile);
    ExpectTold(probe, "nb_read_frames", std::to_string(kFrames));
}

TEST_P(EncodeProResFamilies, MoviesDecodeAgainByTheCommand) {
    const Codec& codec = GetParam();
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePictures(workspace));
    ASSERT_NO_FATAL_FAILURE(MakeMovie(workspace, codec, "out.mov", ""));
    const ProgramRun run = RunTool(workspace, "decode out.mov -o back.%04d.png --via registry");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_GE(Psnr(workspace, "back.%04d.png", "format=gbrp16", "format=gbrp16"), codec.leastPsnr);
}

TEST_P(EncodeProRes444, AlphaComesWithTheMovieIfItIsAskedFor) {
    ForEachFieldOrder(GetParam(), "--alpha", [](const Workspace& workspace, const std::string& order) {
        ExpectDecodesWithoutAWord(workspace, "out.mov");
        const std::string probe = Probe(workspace, "out.mov");
        ExpectTold(probe, "pix_fmt", "yuva444p12le");
        ExpectTold(probe, "field_order", ShortFieldOrder(order));
        const std::string alpha = "alphaextract,format=gray12le";
        // The same to the rounding from 16 to 12 bits.
        EXPECT_GE(Psnr(workspace, "out.mov", alpha, alpha), 70);
    });
}

TEST(EncodeProResFailures, AlphaThatTheCodecLacksIsAWarning) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePictures(workspace));
    const ProgramRun run = RunTool(workspace, EncodeLine(kCodecs[3], "in.%04d.png", "out.mov") + "--alpha");
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.err.find("carries no alpha"), std::string::npos) << run.err;
}

TEST(EncodeProResFailures, AviHoldsNoProRes) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePictures(workspace));
    const ProgramRun run = RunTool(workspace, EncodeLine(kCodecs[3], "in.%04d.png", "out.avi"));
    ExpectFailure(run, 5, "out.avi");
    EXPECT_FALSE(workspace.Has("out.avi"));
    ExpectNoPartFiles(workspace);
}

INSTANTIATE_TEST_SUITE_P(OfEachCodec, EncodeProRes, testing::ValuesIn(kCodecs),
                         [](const auto& info) { return std::string(info.param.tag); });
INSTANTIATE_TEST_SUITE_P(OfEachCodec, EncodeProRes444, testing::Values(kCodecs[4], kCodecs[5]),
                         [](const auto& info) { return std::string(info.param.tag); });
INSTANTIATE_TEST_SUITE_P(OfOneCodec, EncodeProResFamilies, testing::Values(kCodecs[3], kCodecs[4]),
                         [](const auto& info) { return std::string(info.param.tag); });
