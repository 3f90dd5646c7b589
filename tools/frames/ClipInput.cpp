#include "frames/ClipInput.h"

#include "FrameRateText.h"
#include "QuietStream.h"
#include "frames/FrameFailure.h"
#include "frames/HostFormats.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace {

constexpr const char* kMovieFormat = "FFMPEGFileFormats";
constexpr Tag kFrameCount = 0x100000cb; ///< attribute of movie formats
// Colour values in FFmpeg's numbering.
constexpr int kNotTold = 2;
constexpr int kFullRange = 2;
constexpr int kMatrixRgb = 0;
constexpr int kProgressive = 1;

void CheckFile(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw ToolError(ExitStatus::CannotOpen, path, "not a regular file");
    errno = 0;
    if (!std::ifstream(path)) throw ToolError(ExitStatus::CannotOpen, path, std::strerror(errno));
}

/// A host format tells the rate as a number, which mostly stands for a fraction.
Rational RateOf(ImageFormat& format) {
    const double rate = format.GetAttr(kFormatFrameRate, 0.0);
    char text[32] = "";
    std::snprintf(text, sizeof(text), "%.3f", rate);
    return ParseFrameRate(text).value_or(Rational{0, 1});
}

/// Whether the text is "hh:mm:ss:ff", or with a ';' for drop frame.
bool IsTimeCode(const std::string& text) {
    constexpr std::string_view form = "00:00:00:00";
    if (text.size() != form.size()) return false;
    for (size_t i = 0; i < form.size(); ++i) {
        const bool isDigit = text[i] >= '0' && text[i] <= '9';
        const bool isSeparator = text[i] == ':' || (text[i] == ';' && i == 8);
        if (form[i] == '0' ? !isDigit : !isSeparator) return false;
    }
    return true;
}

TrackValue Assumed(int value, const char* text) { return {value, text, ValueSource::Assumed}; }

MovieTrackInfo Describe(const std::string& path, const std::string& formatName, ImageFormat& format) {
    MovieTrackInfo info;
    info.path = path;
    info.container = info.codecName = formatName;
    info.streams = {{0, "video", formatName, ""}};
    info.width = info.codedWidth = info.displayWidth = format.width;
    info.height = info.codedHeight = info.displayHeight = format.height;
    info.frameCount = format.GetAttr(kFrameCount, 0);
    info.frameRate = RateOf(format);
    info.startTime = {0, 1};
    info.duration = {0, 1};
    if (info.frameRate.num > 0) info.duration = {info.frameCount * info.frameRate.den, info.frameRate.num};
    info.fieldOrder = Assumed(kProgressive, "progressive");
    info.colorRange = Assumed(kFullRange, "pc");
    info.colorMatrix = Assumed(kMatrixRgb, "gbr");
    info.colorPrimaries = Assumed(kNotTold, "unknown");
    info.colorTransfer = Assumed(kNotTold, "unknown");
    return info;
}

} // namespace

bool ClipInput::IsClip(const std::string& path) {
    const std::vector<Registry*> formats = LoadersOf(path);
    for (const Registry* format : formats)
        if (std::string(format->ClassName()) == kMovieFormat) return false;
    return !formats.empty();
}

ClipInput::ClipInput(const std::string& path, DecodeRoad road) {
    CheckFile(path);
    if (road == DecodeRoad::Registry)
        throw ToolError(ExitStatus::Unsupported, path, "no track for a decoder of the registry");
    OpenedFormat opened = OpenHostFormat(path);
    if (opened.format == nullptr)
        throw ToolError(IsFormatMissing(path) ? ExitStatus::Unsupported : ExitStatus::Damaged, path,
                        WhyNoFormatOpens(path));
    format_ = std::move(opened.format);
    track_.name = path;
    track_.width = format_->width;
    track_.height = format_->height;
    track_.backEnd = FormatName(*opened.registry);
    track_.movie = Describe(path, track_.backEnd, *format_);
    track_.frameCount = track_.movie->frameCount;
    ReadFirstFrame();
}

void ClipInput::ReadFirstFrame() {
    const HostImage image = NewHostImage(track_.width, track_.height, ImageData_RGBA8);
    if (!Load(0, image.get())) track_.movie->damage = "its first frame can't be decoded";
    if (!image) return;
    const ScriptVal& table = image->ImageInfo.FindKeyConst("Metadata");
    for (const std::string& key : table.Keys())
        track_.movie->metadata[key] = table.FindKeyConst(key.c_str()).ToString("");
    const std::string timeCode = table.FindKeyConst("TimeCode").ToString("");
    if (IsTimeCode(timeCode)) track_.movie->timeCode = timeCode;
}

HostImage ClipInput::Read(int64_t index, ImageDataKind kind) {
    HostImage image = NewHostImage(track_.width, track_.height, kind);
    if (!image) throw ToolError(ExitStatus::JobFailed, track_.name, "not enough memory for a frame");
    if (!Load(index, image.get()))
        FailFrame(track_.name, static_cast<int32_t>(index), ExitStatus::Damaged, "it can't be decoded");
    return image;
}

/// Formats say on standard error what they meet.
bool ClipInput::Load(int64_t index, Image* image) {
    const QuietStream quiet(stderr);
    TagList tags;
    return image != nullptr && format_->LoadFrameTagList(static_cast<uint32_t>(index), image, tags);
}
