// H.264 through Media Foundation, where FFmpeg is hidden from the module.

#include "ToolRun.h"

#include <array>
#include <sstream>

namespace {

constexpr size_t width = 96;
constexpr size_t height = 80;

class H264Movies : public testing::Test {
protected:
    void SetUp() override { Prepare(workspace_, "mkdir empty"); }

    void MakeMovie(const std::string& profile, const std::string& parameters) {
        Prepare(workspace_, "ffmpeg -v error -f lavfi -i testsrc2=rate=25:size=96x80 -frames:v 30 "
                            "-pix_fmt yuv420p -c:v libx264 -profile:v " +
                                profile + " -x264-params keyint=12:" + parameters + " a.mp4");
    }
    /// Runs the command where the module finds no FFmpeg.
    ProgramRun RunHidden(const std::string& arguments) {
        return workspace_.Shell("CORVEX_FFMPEG_DIR=empty '" CORVEXVF_PROGRAM "' " + arguments);
    }
    /// Has the pictures as ffmpeg decodes them, each row of chroma twice as in YUY2, taken for `2vuy` as the
    /// back-end takes them, converted to peer.NNNN.png.
    void MakePeerImages() {
        Prepare(workspace_, "ffmpeg -v error -i a.mp4 -pix_fmt yuv420p -f rawvideo planes.raw");
        workspace_.Write("packed.raw", Packed(workspace_.Read("planes.raw")));
        Prepare(workspace_,
                "ffmpeg -v error -f rawvideo -pix_fmt uyvy422 -s 96x80 -r 25 -i packed.raw -c copy b.mov");
        Prepare(workspace_, "'" CORVEXVF_PROGRAM "' decode b.mov -o peer.%04d.png --via registry");
    }
    void ExpectPeerImage(int frame) {
        std::array<char, 16> number = {};
        std::snprintf(number.data(), number.size(), ".%04d.png", frame);
        const std::string own = workspace_.Read(std::string("own") + number.data());
        EXPECT_FALSE(own.empty()) << frame;
        EXPECT_TRUE(own == workspace_.Read(std::string("peer") + number.data())) << frame;
    }
    void ExpectPeerImages() {
        const ProgramRun run = RunHidden("decode a.mp4 -o own.%04d.png --via registry");
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out, "own.0000.png - own.0029.png: 30 frames 96x80, decoded by DXVA\n");
        MakePeerImages();
        for (int frame = 0; frame < 30; ++frame)
            ExpectPeerImage(frame);
    }
    static std::string Packed(const std::string& planes) {
        constexpr size_t luma = width * height;
        constexpr size_t chroma = luma / 4;
        std::string packed;
        for (size_t frame = 0; frame + luma + 2 * chroma <= planes.size(); frame += luma + 2 * chroma)
            for (size_t pixel = 0; pixel < luma; ++pixel) {
                const size_t x = pixel % width;
                const size_t at = frame + luma + pixel / width / 2 * (width / 2) + x / 2;
                packed.push_back(planes[frame + pixel]);
                packed.push_back(planes[x % 2 == 0 ? at : at + chroma]);
            }
        return packed;
    }

    const Workspace workspace_;
};

/// The fields of a line.
std::vector<std::string> Fields(const std::string& line) {
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

/// The back-ends of a code in the list of decoders.
std::vector<std::string> BackEndsOf(const std::string& list, const std::string& code) {
    std::istringstream lines(list);
    for (std::string line; std::getline(lines, line);) {
        std::vector<std::string> fields = Fields(line);
        if (fields.empty() || fields.front() != code) continue;
        fields.erase(fields.begin());
        return fields;
    }
    return {};
}

} // namespace

TEST_F(H264Movies, GoToFFmpegFirstAndToMediaFoundationWhereItIsMissing) {
    using Names = std::vector<std::string>;
    const std::string all = RunTool(workspace_, "list decoders").out;
    const std::string hidden = RunHidden("list decoders").out;
    for (const char* const code : {"avc1", "avci"}) {
        EXPECT_EQ(BackEndsOf(all, code), (Names{"FFmpeg,", "DXVA"}));
        EXPECT_EQ(BackEndsOf(hidden, code), Names{"DXVA"});
    }
}

TEST_F(H264Movies, OfTheBaselineProfileAreDecodedAsByThePeer) {
    MakeMovie("baseline", "scenecut=0");
    ExpectPeerImages();
}

TEST_F(H264Movies, OfTheMainProfileAreDecodedAsByThePeer) {
    MakeMovie("main", "bframes=3:b-adapt=0:partitions=none");
    ExpectPeerImages();
}

TEST_F(H264Movies, OfTheHighProfileAreDecodedAsByThePeer) {
    MakeMovie("high", "bframes=3:b-adapt=0:partitions=i4x4,i8x8");
    ExpectPeerImages();
}

TEST_F(H264Movies, GiveAnyFrameAlone) {
    MakeMovie("high", "bframes=3:b-adapt=0:partitions=none");
    MakePeerImages();
    for (const int frame : {29, 12, 11}) {
        const ProgramRun run =
            RunHidden("decode a.mp4 -o own.%04d.png --via registry --frames " + std::to_string(frame));
        EXPECT_EQ(run.status, 0) << run.err;
        ExpectPeerImage(frame);
    }
}

TEST_F(H264Movies, AreEncodedWithTimesAndKeyFramesThatThePeerReads) {
    MakeImages(workspace_, "in.%04d.png", 0, 40, "96x80");
    const ProgramRun run = RunHidden("encode in.%04d.png -o out.mov --codec H.264 --fps 25");
    ASSERT_EQ(run.status, 0) << run.err;
    const ProgramRun probe =
        workspace_.Shell("ffprobe -v error -show_entries packet=pts_time,flags -of csv=p=0 out.mov && "
                         "ffmpeg -v error -i out.mov -f null -");
    EXPECT_EQ(probe.err, "");
    std::istringstream lines(probe.out);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_DOUBLE_EQ(std::stod(line), count / 25.0);
        EXPECT_EQ(line.find(",K") != std::string::npos, count % 30 == 0) << line;
    }
    EXPECT_EQ(count, 40);
}
