// DNxHD and DNxHR movies that ffmpeg wrote give the images that ffmpeg gives for them.

#include "DNXMovies.h"

namespace {

class DecodeDNX : public testing::TestWithParam<DNXRow> {};

/// Has ffmpeg's encoder make a movie of the test's pictures.
void MakePeerMovie(const Workspace& workspace, const DNXRow& row, const std::string& planes) {
    Prepare(workspace, DNXPictures(row) +
                           (IsRgb(planes) ? "" : "-vf scale=out_color_matrix=bt709:out_range=tv ") +
                           "-c:v dnxhd " + row.options + " -pix_fmt " + planes + " a.mov");
}

void ExpectTheImagesOfFFmpeg(const DNXRow& row, const std::string& planes) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePeerMovie(workspace, row, planes));
    const double psnr = PsnrOf(OwnColors(workspace, "a.mov"), PeerColors(workspace, row, planes, "a.mov"));
    std::printf("%s %s: %.1f dB\n", row.name, planes.c_str(), psnr);
    EXPECT_GE(psnr, 55);
}

} // namespace

TEST_P(DecodeDNX, GivesTheImagesOfFFmpegWithin55dB) {
    ExpectTheImagesOfFFmpeg(GetParam(), GetParam().planes);
}

TEST(DecodeDNX444, OfYCbCrGivesTheImagesOfFFmpegWithin55dB) {
    ExpectTheImagesOfFFmpeg(dnxRows[std::size(dnxRows) - 1], "yuv444p10le");
}

TEST(DecodeDNXFailures, ADamagedFrameFailsAndTheMovieAndTheLineAreNamed) {
    const Workspace workspace;
    const DNXRow& row = dnxRows[std::size(dnxRows) - 2];
    ASSERT_NO_FATAL_FAILURE(MakePeerMovie(workspace, row, row.planes));
    std::string bytes = workspace.Read("a.mov");
    const size_t prefix = bytes.find(std::string("\x00\x00\x02\x80\x03", 5));
    ASSERT_NE(prefix, std::string::npos);
    bytes[prefix] = '\1';
    workspace.Write("b.mov", bytes);
    const ProgramRun run = RunTool(workspace, "decode b.mov -o own.%04d.png --via registry");
    EXPECT_NE(run.status, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("b.mov"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find(" - DNXCodec:309\n"), std::string::npos) << run.err;
}

INSTANTIATE_TEST_SUITE_P(OfFFmpeg, DecodeDNX, testing::ValuesIn(dnxRows),
                         [](const auto& info) { return std::string(info.param.name); });
