// DNxHD and DNxHR movies that the command makes, as ffmpeg reads them.

#include "DNXMovies.h"

namespace {

class EncodeDNX : public testing::TestWithParam<DNXRow> {};

void MakePictures(const Workspace& workspace, const DNXRow& row) {
    Prepare(workspace, DNXPictures(row) + "-pix_fmt rgb48le in.%04d.tif");
}

ProgramRun Encode(const Workspace& workspace, const DNXRow& row, const std::string& options = "") {
    return RunTool(workspace, std::string("encode in.%04d.tif -o out.mov --fps 25 --codec '") + row.codec +
                                  "' " + options);
}

void ExpectTold(const std::string& probe, const std::string& key, const std::string& value) {
    EXPECT_NE(("\n" + probe).find("\n" + key + "=" + value + "\n"), std::string::npos)
        << key << "=" << value << " is not in\n"
        << probe;
}

/// Four bytes of the colour atom of a QuickTime movie: primaries, transfer and matrix.
std::string ColorAtom(const Workspace& workspace) {
    const std::string movie = workspace.Read("out.mov");
    const size_t at = movie.find("colrnclc");
    return at == std::string::npos ? "" : movie.substr(at + 8, 6);
}

} // namespace

TEST_P(EncodeDNX, MoviesTellTheirProperties) {
    const DNXRow& row = GetParam();
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePictures(workspace, row));
    const ProgramRun run = Encode(workspace, row, row.isInterlaced ? "--field-order tff" : "");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const std::string probe =
        workspace
            .Shell("ffprobe -v error -show_entries "
                   "stream=codec_name,profile,codec_tag_string,width,height,pix_fmt,"
                   "color_range,r_frame_rate:frame=interlaced_frame,top_field_first -of default=nw=1 out.mov")
            .out;
    const std::string size(row.size);
    ExpectTold(probe, "codec_name", "dnxhd");
    ExpectTold(probe, "profile", row.profile);
    ExpectTold(probe, "codec_tag_string", row.tag);
    ExpectTold(probe, "width", size.substr(0, size.find('x')));
    ExpectTold(probe, "height", size.substr(size.find('x') + 1));
    ExpectTold(probe, "pix_fmt", row.planes);
    ExpectTold(probe, "color_range", "tv");
    ExpectTold(probe, "r_frame_rate", "25/1");
    ExpectTold(probe, "interlaced_frame", row.isInterlaced ? "1" : "0");
    ExpectTold(probe, "top_field_first", row.isInterlaced ? "1" : "0");
    const char matrix = IsRgb(row.planes) ? '\0' : '\1';
    EXPECT_EQ(ColorAtom(workspace), (std::string{'\0', '\1', '\0', '\1', '\0', matrix}));
}

TEST_P(EncodeDNX, MoviesShowTheirPicturesToFFmpeg) {
    const DNXRow& row = GetParam();
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakePictures(workspace, row));
    ASSERT_EQ(Encode(workspace, row, row.isInterlaced ? "--field-order tff" : "").status, 0);
    const ProgramRun decoding = workspace.Shell("ffmpeg -v error -xerror -i out.mov -f null -");
    EXPECT_EQ(decoding.status, 0);
    EXPECT_EQ(decoding.err, "");
    const Colors pictures = ReadColors(workspace, "-i in.%04d.tif");
    const double psnr = PsnrOf(pictures, PeerColors(workspace, row, row.planes, "out.mov"));
    std::printf("%s: %.1f dB\n", row.name, psnr);
    EXPECT_GE(psnr, 40);
}

TEST(EncodeDNXFieldOrder, ThatTheCompressionDoesNotHaveIsAWarning) {
    struct Case {
        const DNXRow& row;
        const char* order;
        const char* warning;
    };
    for (const Case& wrong : {Case{dnxRows[7], "bff", "codes its frames with the top field first"},
                              Case{dnxRows[11], "tff", "codes its frames as progressive"}}) {
        const Workspace workspace;
        ASSERT_NO_FATAL_FAILURE(MakePictures(workspace, wrong.row));
        const ProgramRun run = Encode(workspace, wrong.row, std::string("--field-order ") + wrong.order);
        EXPECT_EQ(run.status, 0);
        EXPECT_NE(run.err.find(wrong.warning), std::string::npos) << run.err;
    }
}

TEST(EncodeDNXFailures, ASizeThatTheRowDoesNotAllowIsUnsupported) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "in.%04d.tif", 1, 1, "320x240"));
    ExpectFailure(Encode(workspace, dnxRows[0]), 5, "takes pictures of 1280x720 alone");
    EXPECT_FALSE(workspace.Has("out.mov"));
}

TEST(EncodeDNXFailures, PicturesBelow240By120LeaveNoMovie) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "in.%04d.tif", 1, 1, "238x120"));
    ExpectFailure(Encode(workspace, dnxRows[11]), 1, "can't encode a frame");
    EXPECT_FALSE(workspace.Has("out.mov"));
    ExpectNoPartFiles(workspace);
}

TEST(EncodeDNXFailures, AlphaThatTheLibraryLacksLeavesNoMovieAndTheLibrarysWords) {
    const Workspace workspace;
    ASSERT_NO_FATAL_FAILURE(MakeImages(workspace, "in.%04d.tif", 1, 1, "320x240"));
    const ProgramRun run = Encode(workspace, dnxRows[11], "--alpha");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("Error: Alpha is not supported - DNXCodec:241\n"), std::string::npos) << run.err;
    EXPECT_FALSE(workspace.Has("out.mov"));
    ExpectNoPartFiles(workspace);
}

INSTANTIATE_TEST_SUITE_P(OfEachRow, EncodeDNX, testing::ValuesIn(dnxRows),
                         [](const auto& info) { return std::string(info.param.name); });
