// Movies that the command writes, read by ffmpeg and compared with a double-precision model of each packing.

#include "ToolRun.h"

#include <cmath>
#include <functional>

namespace {

constexpr int kWidth = 102; // not a multiple of any packing's group of pixels
constexpr int kHeight = 46;
constexpr int kFrames = 4;

/// Source pictures as ffmpeg reads them: R, G, B, A in 16 bits each.
struct Pictures {
    std::vector<uint16_t> values;

    double At(int frame, int x, int y, int channel) const {
        const size_t pixel = (static_cast<size_t>(frame) * kHeight + y) * kWidth + x;
        return values[pixel * 4 + channel] / 65535.0;
    }
};

/// Y, Cb and Cr of BT.709 (ITU-R BT.709-6, 3.2 and 3.3), Y from 0 to 1, the others from -0.5 to 0.5.
struct Yuv {
    double y, cb, cr;
};

Yuv YuvAt(const Pictures& pictures, int frame, int x, int y) {
    const int column = std::clamp(x, 0, kWidth - 1);
    const double r = pictures.At(frame, column, y, 0);
    const double g = pictures.At(frame, column, y, 1);
    const double b = pictures.At(frame, column, y, 2);
    const double luma = 0.2126 * r + 0.7152 * g + 0.0722 * b;
    return {luma, (b - luma) / 1.8556, (r - luma) / 1.5748};
}

/// Chroma of a pair of pixels, co-sited with its left one, filtered with [1 2 1].
double Chroma(const Pictures& pictures, int frame, int x, int y, double Yuv::*component) {
    const int left = x / 2 * 2;
    return (YuvAt(pictures, frame, left - 1, y).*component + 2 * YuvAt(pictures, frame, left, y).*component +
            YuvAt(pictures, frame, left + 1, y).*component) /
           4;
}

/// Value that a component of a pixel should have in a packing. Components 0 to 3 are R, G, B, A; for YUV
/// packings Y, Cb, Cr.
using Model = std::function<double(const Pictures& pictures, int frame, int x, int y, int component)>;

Model RgbModel(double black, double white) {
    return [=](const Pictures& pictures, int frame, int x, int y, int component) {
        return black + (white - black) * pictures.At(frame, x, y, component);
    };
}

/// Video range of `bits` bits (ITU-R BT.709-6, 4.6).
Model YuvModel(int bits) {
    const double step = std::pow(2.0, bits - 8);
    return [=](const Pictures& pictures, int frame, int x, int y, int component) {
        if (component == 0) return (16 + 219 * YuvAt(pictures, frame, x, y).y) * step;
        return (128 + 224 * Chroma(pictures, frame, x, y, component == 1 ? &Yuv::cb : &Yuv::cr)) * step;
    };
}

/// Where a component stands in one frame of raw pixels.
struct Place {
    size_t frameBytes;
    std::function<size_t(int x, int y, int component)> offset;
    int bytes; ///< 1, or 2 with the low byte first
};

/// Interleaved components; `order` gives the place of each of R, G, B, A in a pixel.
Place Interleaved(int components, int bytes, std::array<int, 4> order) {
    return {size_t{kWidth} * kHeight * components * bytes,
            [=](int x, int y, int component) {
                return ((static_cast<size_t>(y) * kWidth + x) * components + order[component]) * bytes;
            },
            bytes};
}

/// Pairs of pixels as Cb, Y, Cr, Y; rows of `rowBytes` bytes.
Place Pairs(int bytes) {
    return {size_t{kWidth} * kHeight * 2 * bytes,
            [=](int x, int y, int component) {
                const size_t pair = (static_cast<size_t>(y) * kWidth + x / 2 * 2) * 2;
                return (pair + (component == 0 ? 1 + x % 2 * 2 : component == 1 ? 0 : 2)) * bytes;
            },
            bytes};
}

/// Planes of 16-bit words; `order` gives the plane of each component, and all but plane 0 are `shrink` times
/// as narrow.
Place Planes(std::array<int, 4> order, int shrink) {
    const size_t first = size_t{kWidth} * kHeight * 2;
    return {first + 2 * first / shrink,
            [=](int x, int y, int component) {
                const int plane = order[component];
                const int narrow = plane == 0 ? 1 : shrink;
                const size_t start = plane == 0 ? 0 : first + (plane - 1) * first / shrink;
                return start + (static_cast<size_t>(y) * (kWidth / narrow) + x / narrow) * 2;
            },
            2};
}

/// One encoder of the registry and what its movies should hold.
struct RowCase {
    std::string test;
    std::string codec;
    std::string tag;     ///< as ffprobe writes it
    std::string options; ///< of ffmpeg, to read the pixels without conversion
    int components;
    Place place;
    Model model;
};

constexpr std::array<int, 4> kRgba = {0, 1, 2, 3};

std::vector<RowCase> AllRows() {
    const std::string raw = " -f rawvideo";
    return {
        {"Rgb8", "Uncompressed RGB 8-bit", "raw ", "-pix_fmt rgb24" + raw, 3, Interleaved(3, 1, kRgba),
         RgbModel(0, 255)},
        {"Argb8", "Uncompressed ARGB 8-bit", "raw ", "-pix_fmt argb" + raw, 4,
         Interleaved(4, 1, {1, 2, 3, 0}), RgbModel(0, 255)},
        {"Yuv8", "Uncompressed YUV 422 8-bit", "2vuy", "-pix_fmt uyvy422" + raw, 3, Pairs(1), YuvModel(8)},
        {"Bgra8", "Uncompressed BGRA 8-bit", "BGRA", "-pix_fmt bgra" + raw, 4,
         Interleaved(4, 1, {2, 1, 0, 3}), RgbModel(0, 255)},
        {"Argb16", "Uncompressed ARGB 16 bit", "b64a", "-pix_fmt rgba64le" + raw, 4, Interleaved(4, 2, kRgba),
         RgbModel(0, 65535)},
        {"Rgb10", "Uncompressed RGB 10-bit", "r210", "-pix_fmt gbrp10le" + raw, 3, Planes({2, 0, 1, 0}, 1),
         RgbModel(64, 940)},
        {"Yuv10", "Uncompressed YUV 422 10-bit", "v210", "-pix_fmt yuv422p10le" + raw, 3, Planes(kRgba, 2),
         YuvModel(10)},
        // ffmpeg has no decoder of v216: its demuxer gives the samples, which are plain words.
        {"Yuv16", "Uncompressed YUV 422 16-bit", "v216", "-map 0:v:0 -c copy -f data", 3, Pairs(2),
         YuvModel(16)},
    };
}

Pictures MakePictures(const Workspace& workspace) {
    const std::string size = std::to_string(kWidth) + "x" + std::to_string(kHeight);
    Prepare(workspace, "ffmpeg -v error -f lavfi -i \"testsrc2=r=25:s=" + size +
                           ",format=rgba64,geq=r='r(X,Y)':g='g(X,Y)':b='b(X,Y)':a='65535*X/W',"
                           "noise=alls=10:allf=t:all_seed=3\" -frames:v " +
                           std::to_string(kFrames) + " -start_number 11 in.%04d.png");
    Prepare(workspace,
            "ffmpeg -v error -start_number 11 -i in.%04d.png -pix_fmt rgba64le -f rawvideo in.raw");
    const std::vector<uint8_t> bytes = workspace.ReadBytes("in.raw");
    Pictures pictures;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2)
        pictures.values.push_back(static_cast<uint16_t>(bytes[i] | bytes[i + 1] << 8));
    return pictures;
}

double WorstDifference(const Pictures& pictures, const std::vector<uint8_t>& pixels, const RowCase& row) {
    double worst = 0;
    for (int i = 0; i < kFrames * kHeight * kWidth * row.components; ++i) {
        const int component = i % row.components;
        const int x = i / row.components % kWidth;
        const int y = i / row.components / kWidth % kHeight;
        const int frame = i / row.components / kWidth / kHeight;
        const size_t at = row.place.frameBytes * frame + row.place.offset(x, y, component);
        const int value = row.place.bytes == 1 ? pixels[at] : pixels[at] | pixels[at + 1] << 8;
        worst = std::max(worst, std::abs(value - row.model(pictures, frame, x, y, component)));
    }
    return worst;
}

class EncodeMovies : public testing::TestWithParam<RowCase> {};

} // namespace

TEST_P(EncodeMovies, AreReadByFFmpegWithTheirPropertiesAndPixels) {
    const RowCase& row = GetParam();
    const Workspace workspace;
    const Pictures pictures = MakePictures(workspace);
    ASSERT_EQ(pictures.values.size(), size_t{kWidth} * kHeight * 4 * kFrames);
    const ProgramRun run =
        RunTool(workspace, "encode in.####.png -o out.mov --fps 23.976 --codec '" + row.codec + "'");
    ASSERT_EQ(run.status, 0) << run.err;

    const ProgramRun probe =
        workspace.Shell("ffprobe -v error -count_packets -select_streams v:0 -show_entries "
                        "stream=codec_tag_string,width,height,r_frame_rate,nb_read_packets "
                        "-of csv=p=0 out.mov");
    EXPECT_EQ(probe.out, row.tag + ",102,46,24000/1001,4\n");

    Prepare(workspace, "ffmpeg -v error -i out.mov " + row.options + " out.raw");
    const std::vector<uint8_t> pixels = workspace.ReadBytes("out.raw");
    ASSERT_EQ(pixels.size(), row.place.frameBytes * kFrames);
    const double worst = WorstDifference(pictures, pixels, row);
    std::printf("%s: worst difference %.3f codes\n", row.codec.c_str(), worst);
    EXPECT_LE(worst, 1.0);
}

INSTANTIATE_TEST_SUITE_P(OfEachRow, EncodeMovies, testing::ValuesIn(AllRows()),
                         [](const auto& info) { return info.param.test; });
