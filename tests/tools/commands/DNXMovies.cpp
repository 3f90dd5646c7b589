#include "DNXMovies.h"

#include <algorithm>
#include <cmath>

namespace {

/// Planes of a movie's frames, one after the other, as ffmpeg gives them without conversion.
class Planes {
public:
    Planes(std::vector<uint8_t> bytes, const DNXRow& row, const std::string& format)
        : bytes_(std::move(bytes)), is422_(format.starts_with("yuv422")), wide_(format != "yuv422p") {
        const std::string size(row.size);
        width_ = std::stoul(size);
        height_ = std::stoul(size.substr(size.find('x') + 1));
    }

    size_t Width() const { return width_; }
    size_t Height() const { return height_; }
    size_t Frames() const { return bytes_.size() / (FrameSamples() * (wide_ ? 2 : 1)); }
    size_t PlaneWidth(int plane) const { return is422_ && plane > 0 ? width_ / 2 : width_; }
    bool Halves(int plane) const { return is422_ && plane > 0; }

    /// A sample on the scale of 8 bits.
    double At(size_t frame, int plane, size_t x, size_t y) const {
        size_t at = frame * FrameSamples() + y * PlaneWidth(plane) + x;
        for (int before = 0; before < plane; ++before)
            at += PlaneWidth(before) * height_;
        return wide_ ? (bytes_[2 * at] | bytes_[2 * at + 1] << 8) / 4.0 : bytes_[at];
    }
    /// The sample of a pixel.
    double Of(size_t frame, int plane, size_t x, size_t y) const {
        if (!Halves(plane)) return At(frame, plane, x, y);
        const size_t right = std::min((x + 1) / 2, PlaneWidth(plane) - 1);
        return (At(frame, plane, x / 2, y) + At(frame, plane, right, y)) / 2;
    }

private:
    size_t FrameSamples() const { return (PlaneWidth(0) + 2 * PlaneWidth(1)) * height_; }

    std::vector<uint8_t> bytes_;
    bool is422_;
    bool wide_; ///< samples of ten bits
    size_t width_;
    size_t height_;
};

float Limit(double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); }

/// BT.709 in video range (ITU-R BT.709-6, 3.2, 3.3 and 4.6).
void AddYCbCr(Colors& colors, double y, double cb, double cr) {
    const double luma = (y - 16) / 219;
    const double blue = luma + 1.8556 * (cb - 128) / 224;
    const double red = luma + 1.5748 * (cr - 128) / 224;
    const double green = (luma - 0.2126 * red - 0.0722 * blue) / 0.7152;
    for (const double color : {red, green, blue})
        colors.push_back(Limit(color));
}

void AddRgb(Colors& colors, double green, double blue, double red) {
    for (const double code : {red, green, blue})
        colors.push_back(Limit((code - 16) / 219));
}

} // namespace

std::string DNXPictures(const DNXRow& row) {
    const bool isSmall = std::string(row.tag) == "AVdh";
    return std::string("ffmpeg -v error -f lavfi -i \"gradients=s=") + row.size +
           ":r=25:nb_colors=4:seed=5,format=gbrp16le,noise=alls=2:allf=t:all_seed=7\" -frames:v " +
           (isSmall ? "2 " : "1 ");
}

Colors ReadColors(const Workspace& workspace, const std::string& input) {
    Prepare(workspace, "ffmpeg -v error -y " + input + " -pix_fmt rgb48le -f rawvideo pixels.raw");
    const std::vector<uint8_t> bytes = workspace.ReadBytes("pixels.raw");
    Colors colors;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2)
        colors.push_back((bytes[i] | bytes[i + 1] << 8) / 65535.0F);
    return colors;
}

Colors PeerColors(const Workspace& workspace, const DNXRow& row, const std::string& planes,
                  const std::string& movie) {
    Prepare(workspace, "ffmpeg -v error -y -i " + movie + " -pix_fmt " + planes + " -f rawvideo planes.raw");
    const Planes samples(workspace.ReadBytes("planes.raw"), row, planes);
    Colors colors;
    for (size_t frame = 0; frame < samples.Frames(); ++frame) {
        for (size_t y = 0; y < samples.Height(); ++y) {
            for (size_t x = 0; x < samples.Width(); ++x) {
                const auto add = IsRgb(planes) ? AddRgb : AddYCbCr;
                add(colors, samples.Of(frame, 0, x, y), samples.Of(frame, 1, x, y),
                    samples.Of(frame, 2, x, y));
            }
        }
    }
    return colors;
}

Colors OwnColors(const Workspace& workspace, const std::string& movie) {
    const ProgramRun run =
        RunTool(workspace, "decode " + movie + " -o own.%04d.tif --depth 16 --via registry --json");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("\"Avid DNX\""), std::string::npos) << run.out;
    return ReadColors(workspace, "-start_number 0 -i own.%04d.tif");
}

double PsnrOf(const Colors& a, const Colors& b) {
    if (a.size() != b.size() || a.empty()) return 0;
    double squares = 0;
    for (size_t i = 0; i < a.size(); ++i)
        squares += double{a[i] - b[i]} * (a[i] - b[i]);
    // Equal pictures are as far apart as doubles can tell.
    return -10 * std::log10(std::max(squares, 1e-12) / static_cast<double>(a.size()));
}
