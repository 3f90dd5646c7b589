#include "images/ImageFileReader.h"

#include "QuietStream.h"
#include "images/ImageFormats.h"
#include "images/ImageTypes.h"
#include "images/PngChunks.h"

#include "media/ToolError.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace {

constexpr int kMaxSide = 32768;                  ///< pixels
constexpr int64_t kMaxValues = int64_t{1} << 30; ///< pixels times channels

/// Which channel of the file feeds each of R, G, B and A; -1 for none.
using ChannelMap = std::array<int, 4>;

int ChannelNamed(const OIIO::ImageSpec& spec, const char* name) {
    const auto& names = spec.channelnames;
    const auto found = std::find(names.begin(), names.end(), name);
    return found == names.end() ? -1 : static_cast<int>(found - names.begin());
}

ChannelMap MapChannels(const OIIO::ImageSpec& spec) {
    ChannelMap map{ChannelNamed(spec, "R"), ChannelNamed(spec, "G"), ChannelNamed(spec, "B"),
                   spec.alpha_channel >= 0 ? spec.alpha_channel : ChannelNamed(spec, "A")};
    const bool hasColor = map[0] >= 0 || map[1] >= 0 || map[2] >= 0;
    if (!hasColor) std::fill_n(map.begin(), 3, 0);
    return map;
}

std::string DescribeDepth(const OIIO::ImageSpec& spec) {
    if (spec.format.is_floating_point()) return spec.format.c_str();
    const int bits = static_cast<int>(spec.format.size()) * 8;
    return std::to_string(spec.get_int_attribute("oiio:BitsPerSample", bits)) + " bits";
}

ImageFileInfo Describe(const std::string& format, const OIIO::ImageSpec& spec) {
    ImageFileInfo info;
    info.format = format;
    info.width = spec.full_width;
    info.height = spec.full_height;
    info.channels = spec.channelnames;
    info.depth = DescribeDepth(spec);
    info.kind = KindOf(spec.format);
    info.hasAlpha = MapChannels(spec)[3] >= 0;
    return info;
}

bool SizeFits(int64_t width, int64_t height, int64_t channels) {
    return width <= kMaxSide && height <= kMaxSide && width * height * channels <= kMaxValues;
}

void CheckReadable(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        throw ToolError(ExitStatus::CannotOpen, path, "no such file");
    if (!std::ifstream(path)) throw ToolError(ExitStatus::CannotOpen, path, std::strerror(errno));
}

std::string CauseOf(const OIIO::ImageInput& input) {
    const std::string cause = input.geterror();
    return cause.empty() ? "not a readable image" : cause;
}

void CheckSpec(const std::string& path, const OIIO::ImageSpec& spec) {
    if (spec.full_width <= 0 || spec.full_height <= 0 || spec.width <= 0 || spec.height <= 0)
        throw ToolError(ExitStatus::Damaged, path, "the picture has no pixels");
    const std::string size = std::to_string(spec.full_width) + "x" + std::to_string(spec.full_height);
    if (!SizeFits(spec.full_width, spec.full_height, 4) || !SizeFits(spec.width, spec.height, spec.nchannels))
        throw ToolError(ExitStatus::Unsupported, path, "a picture of " + size + " is too large");
    if (spec.depth > 1 || spec.deep || spec.nchannels < 1)
        throw ToolError(ExitStatus::Unsupported, path, "not a plain two-dimensional picture");
}

const void* OpaqueValue(ImageDataKind kind) {
    static constexpr uint8_t kByte = 255;
    static constexpr uint16_t kWord = 65535;
    static constexpr uint16_t kHalf = 0x3C00;
    static constexpr float kFloat = 1.0f;
    switch (kind) {
    case ImageData_RGBA8: return &kByte;
    case ImageData_RGBAHalf: return &kHalf;
    case ImageData_RGBAFloat: return &kFloat;
    case ImageData_RGBA16: break;
    }
    return &kWord;
}

/// The pixels that a file holds, channels interleaved, top row first, and where they lie in the picture.
struct FilePixels {
    std::vector<uint8_t> bytes;
    int64_t left;
    int64_t top;
    int width;
    int height;
    int channels;
};

/// Copies one row of channel values of `size` bytes each; where the map has no channel the image keeps its
/// own.
void CopyRow(uint8_t* to, int toPixels, const FilePixels& from, int row, const ChannelMap& map, size_t size) {
    const size_t stride = from.channels * size;
    const uint8_t* source = from.bytes.data() + static_cast<size_t>(row) * from.width * stride;
    const int64_t first = std::max<int64_t>(0, -from.left);
    const int64_t last = std::min<int64_t>(from.width, toPixels - from.left);
    for (int64_t x = first; x < last; ++x) {
        uint8_t* pixel = to + static_cast<size_t>(from.left + x) * 4 * size;
        for (int channel = 0; channel < 4; ++channel) {
            if (map[channel] >= 0)
                std::memcpy(pixel + channel * size, source + x * stride + map[channel] * size, size);
        }
    }
}

void FillAlpha(Image& image, const void* value, size_t size) {
    for (int32_t row = 0; row < image.Height; ++row) {
        uint8_t* alpha = image.RowAddress(row) + 3 * size;
        for (int32_t x = 0; x < image.Width; ++x, alpha += image.PixelStride)
            std::memcpy(alpha, value, size);
    }
}

} // namespace

struct ImageFileReader::File {
    std::unique_ptr<OIIO::ImageInput> input;
    OIIO::ImageSpec spec;
};

ImageFileReader::ImageFileReader(const std::string& path) : path_(path), file_(new File) {
    CheckReadable(path);
    const ImageFileFormat* format = FindImageFormat(path);
    if (format == nullptr) throw ToolError(ExitStatus::Unsupported, path, "not a kind of image that is read");
    if (format->name == "png" && !PngChunksAreWhole(path))
        throw ToolError(ExitStatus::Damaged, path, "not a whole PNG file");
    const QuietStream quiet(stderr);
    file_->input = OIIO::ImageInput::create(std::string(format->name));
    if (!file_->input) throw ToolError(ExitStatus::Unsupported, path, OIIO::geterror());
    OIIO::ImageSpec config;
    config["oiio:UnassociatedAlpha"] = 1;
    if (!file_->input->open(path, file_->spec, config))
        throw ToolError(ExitStatus::Damaged, path, CauseOf(*file_->input));
    CheckSpec(path, file_->spec);
    info_ = Describe(std::string(format->name), file_->spec);
}

ImageFileReader::~ImageFileReader() = default;

HostImage ImageFileReader::Read() {
    const OIIO::ImageSpec& spec = file_->spec;
    const OIIO::TypeDesc type = ChannelType(info_.kind);
    FilePixels pixels{{},
                      int64_t{spec.x} - spec.full_x,
                      int64_t{spec.y} - spec.full_y,
                      spec.width,
                      spec.height,
                      spec.nchannels};
    HostImage image = NewHostImage(info_.width, info_.height, info_.kind);
    if (!image) throw ToolError(ExitStatus::JobFailed, path_, "not enough memory for the picture");
    pixels.bytes.resize(static_cast<size_t>(spec.width) * spec.height * spec.nchannels * type.size());
    const QuietStream quiet(stderr);
    if (!file_->input->read_image(0, 0, 0, spec.nchannels, type, pixels.bytes.data()))
        throw ToolError(ExitStatus::Damaged, path_, CauseOf(*file_->input));
    const ChannelMap map = MapChannels(spec);
    if (map[3] < 0) FillAlpha(*image, OpaqueValue(info_.kind), type.size());
    for (int row = 0; row < pixels.height; ++row) {
        const int64_t pictureRow = pixels.top + row;
        if (pictureRow < 0 || pictureRow >= image->Height) continue;
        CopyRow(image->RowAddress(image->Height - 1 - pictureRow), image->Width, pixels, row, map,
                type.size());
    }
    return image;
}
