// Movies that ffmpeg wrote give the images that ffmpeg gives for them, within one step of 8 bits.

#include "ToolRun.h"

#include <cmath>

namespace {

constexpr int kFrames = 3;
constexpr const char* kSize = "192x108";

/// One movie that ffmpeg writes, and how it reads the same movie.
struct MovieCase {
    const char* name;
    const char* file;
    const char* encoder; ///< ffmpeg's options
    bool isYuv;
    bool hasAlpha;
};

constexpr MovieCase kCases[] = {
    {"v210", "a.mov", "-c:v v210 -pix_fmt yuv422p10le", true, false},
    {"2vuy", "a.mov", "-c:v rawvideo -pix_fmt uyvy422 -tag:v 2vuy", true, false},
    {"uyvy", "a.avi", "-c:v rawvideo -pix_fmt uyvy422 -tag:v UYVY", true, false},
    {"r210", "a.mov", "-c:v r210 -pix_fmt gbrp10le", false, false},
    {"b64a", "a.mov", "-c:v rawvideo -pix_fmt rgba64be -tag:v b64a", false, true},
    {"v408", "a.mov", "-c:v v408 -pix_fmt yuva444p", true, true},
    {"BGRA", "a.mov", "-c:v rawvideo -pix_fmt bgra -tag:v BGRA", false, true},
    {"rgb24", "a.mov", "-c:v rawvideo -pix_fmt rgb24", false, false},
    {"apco", "a.mov", "-c:v prores_ks -profile:v 0 -pix_fmt yuv422p10le", true, false},
    {"apcs", "a.mov", "-c:v prores_aw -profile:v 1 -pix_fmt yuv422p10le", true, false},
    {"apcn", "a.mov", "-c:v prores_ks -profile:v 2 -pix_fmt yuv422p10le", true, false},
    {"apch", "a.mov", "-c:v prores_aw -profile:v 3 -pix_fmt yuv422p10le", true, false},
    {"ap4h", "a.mov", "-c:v prores_ks -profile:v 4 -alpha_bits 16 -pix_fmt yuva444p10le", true, true},
    {"ap4h_alpha8", "a.mov", "-c:v prores_ks -profile:v 4 -alpha_bits 8 -pix_fmt yuva444p10le", true, true},
    {"ap4x", "a.mov", "-c:v prores_aw -profile:v 5 -pix_fmt yuva444p10le", true, true},
    {"apcn_interlaced", "a.mov", "-c:v prores_ks -profile:v 2 -flags +ildct -top 0 -pix_fmt yuv422p10le",
     true, false},
    {"ap4x_interlaced", "a.mov", "-c:v prores_aw -profile:v 5 -flags +ildct -top 1 -pix_fmt yuv444p10le",
     true, false},
};

/// Smooth colours with a little noise, and a ramp of alpha.
std::string MakeClip(const MovieCase& movie) {
    const std::string colours =
        std::string("gradients=s=")
            .append(kSize)
            .append(
                ":r=25:nb_colors=4:seed=5,format=gbrap16le,"
                "geq=r='r(X,Y)':g='g(X,Y)':b='b(X,Y)':a='65535*(X+Y)/(W+H)',noise=alls=4:allf=t:all_seed=7");
    const std::string matrix = movie.isYuv ? " -vf scale=out_color_matrix=bt709:out_range=tv,"
                                             "setparams=colorspace=bt709"
                                             " -colorspace bt709 -color_range tv "
                                           : " ";
    return "ffmpeg -v error -f lavfi -i \"" + colours + "\" -frames:v " + std::to_string(kFrames) + matrix +
           movie.encoder + " " + movie.file;
}

/// ffmpeg's reading of the movie. Chroma is co-sited on the left and interpolated between its samples.
std::string ReadClip(const MovieCase& movie, const char* pixelFormat) {
    const std::string scale = movie.isYuv ? " -vf scale=in_color_matrix=bt709:in_range=tv:in_h_chr_pos=0:"
                                            "flags=bilinear+accurate_rnd+full_chroma_int+full_chroma_inp"
                                          : "";
    return std::string("ffmpeg -v error -i ") + movie.file + scale + " -pix_fmt " + pixelFormat +
           " -f rawvideo peer.raw";
}

/// The peer takes the 10-bit values of r210 for full range; the movie's are video range, 64 to 940.
std::vector<uint8_t> ExpandVideoRange(const std::vector<uint8_t>& rgb48) {
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i + 1 < rgb48.size(); i += 2) {
        const int value = rgb48[i] | rgb48[i + 1] << 8;
        const double code = std::round(value * 1023.0 / 65535.0);
        bytes.push_back(static_cast<uint8_t>(std::lround(std::clamp((code - 64) / 876, 0.0, 1.0) * 255)));
    }
    return bytes;
}

std::vector<uint8_t> PeerImages(const Workspace& workspace, const MovieCase& movie) {
    const bool isR210 = std::string(movie.name) == "r210";
    const char* format = isR210 ? "rgb48le" : movie.hasAlpha ? "rgba" : "rgb24";
    Prepare(workspace, ReadClip(movie, format));
    const std::vector<uint8_t> bytes = workspace.ReadBytes("peer.raw");
    return isR210 ? ExpandVideoRange(bytes) : bytes;
}

std::vector<uint8_t> ToolImages(const Workspace& workspace, const MovieCase& movie) {
    const ProgramRun run =
        RunTool(workspace, std::string("decode ").append(movie.file).append(" -o own.%04d.png --depth 8"));
    EXPECT_EQ(run.status, 0) << run.err;
    Prepare(workspace, std::string("ffmpeg -v error -start_number 0 -i own.%04d.png -pix_fmt ") +
                           (movie.hasAlpha ? "rgba" : "rgb24") + " -f rawvideo own.raw");
    return workspace.ReadBytes("own.raw");
}

class DecodeMovies : public testing::TestWithParam<MovieCase> {};

} // namespace

TEST_P(DecodeMovies, GivesTheImagesOfFFmpegWithinOneStepOfEightBits) {
    const MovieCase& movie = GetParam();
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(Prepare(workspace, MakeClip(movie)));
    const std::vector<uint8_t> own = ToolImages(workspace, movie);
    const std::vector<uint8_t> peer = PeerImages(workspace, movie);
    const size_t channels = movie.hasAlpha ? 4 : 3;
    ASSERT_EQ(own.size(), 192U * 108 * channels * kFrames);
    ASSERT_EQ(peer.size(), own.size());
    int worst = 0;
    size_t different = 0;
    for (size_t i = 0; i < own.size(); ++i) {
        worst = std::max(worst, std::abs(own[i] - peer[i]));
        different += own[i] != peer[i] ? 1 : 0;
    }
    std::printf("%s: worst difference %d of 255, %.3f %% of the values differ\n", movie.name, worst,
                100.0 * static_cast<double>(different) / static_cast<double>(own.size()));
    EXPECT_LE(worst, 1);
}

INSTANTIATE_TEST_SUITE_P(OfFFmpeg, DecodeMovies, testing::ValuesIn(kCases),
                         [](const auto& info) { return "Reads_" + std::string(info.param.name); });
