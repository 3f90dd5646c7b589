#include "vrelmake/ClipMaking.h"

#include "TimeCode.h"
#include "media/ToolError.h"
#include "rawsdk/clip/ClipWriter.h"
#include "rawsdk/clip/Failure.h"
#include "rawsdk/picture/Mosaic.h"
#include "vrelmake/MetadataFile.h"

#include <filesystem>
#include <fstream>
#include <vector>

namespace {

/// Three planes of an image, top row first.
std::vector<uint16_t> PlanesOf(Image& image) {
    const auto width = static_cast<uint32_t>(image.Width);
    const auto height = static_cast<uint32_t>(image.Height);
    std::vector<uint16_t> words(size_t{width} * height * 3);
    const rawsdk::PlanarPicture planes = {words.data(), width, height};
    for (uint32_t y = 0; y < height; ++y) {
        const uint8_t* address = image.RowAddress(static_cast<int32_t>(height - 1 - y));
        for (uint32_t x = 0; x < width; ++x, address += image.PixelStride) {
            Pixel pixel{};
            image.GetPixel(pixel, address, nullptr, &image);
            planes.Row(0, y)[x] = static_cast<uint16_t>(pixel.R);
            planes.Row(1, y)[x] = static_cast<uint16_t>(pixel.G);
            planes.Row(2, y)[x] = static_cast<uint16_t>(pixel.B);
        }
    }
    return words;
}

rawsdk::ColorTable ReadTable(const std::string& path) {
    std::ifstream text(path);
    if (!text) throw ToolError(ExitStatus::CannotOpen, path, "cannot be opened");
    try {
        return rawsdk::ReadColorTable(text);
    } catch (const rawsdk::Failure&) {
        throw ToolError(ExitStatus::Damaged, path, "is no table of colours");
    }
}

std::optional<TimeCode> ReadTimecode(const ClipOptions& options) {
    if (options.timecode.empty()) return std::nullopt;
    const std::optional<TimeCode> code = TimeCode::Parse(options.timecode, options.frameRate);
    if (!code)
        throw ToolError(ExitStatus::Usage, "--timecode " + options.timecode, "no time code of this rate");
    return code;
}

rawsdk::ClipProperties PropertiesOf(const ClipOptions& options, const FrameTrack& track,
                                    const MetadataFile& metadata) {
    rawsdk::ClipProperties clip;
    clip.width = static_cast<uint32_t>(track.width);
    clip.height = static_cast<uint32_t>(track.height);
    if (!rawsdk::IsPictureSize(clip.width, clip.height))
        throw ToolError(ExitStatus::Unsupported, options.input,
                        "pictures of this size do not go into a clip");
    clip.frameRate = static_cast<float>(static_cast<double>(options.frameRate.num) /
                                        static_cast<double>(options.frameRate.den));
    clip.camera = options.camera.value_or(clip.camera);
    clip.settings = options.clipSettings;
    clip.metadata = metadata.Clip();
    if (!options.table.empty()) clip.table = ReadTable(options.table);
    return clip;
}

void WriteFrames(const ClipOptions& options, FrameInput& input, const rawsdk::ClipProperties& clip,
                 const MetadataFile& metadata) {
    const std::optional<TimeCode> timecode = ReadTimecode(options);
    const rawsdk::Mosaic mosaic(rawsdk::ToneOf(options.clipSettings, options.frameSettings));
    rawsdk::ClipWriter writer(options.output, clip);
    for (int64_t index = 0; index < input.Track().frameCount; ++index) {
        const HostImage image = input.Read(index, ImageData_RGBA16);
        std::vector<uint16_t> words = PlanesOf(*image);
        const uint32_t code = timecode ? timecode->PackedAfter(index) : rawsdk::noTimecode;
        writer.Add({options.frameSettings, metadata.Frame(index), code},
                   mosaic.Samples({words.data(), clip.width, clip.height}));
    }
    writer.Finish();
}

void CopySidecar(const ClipOptions& options) {
    if (options.sidecarTable.empty()) return;
    ReadTable(options.sidecarTable);
    const std::filesystem::path target = rawsdk::SidecarOf(options.output);
    std::error_code error;
    std::filesystem::copy_file(options.sidecarTable, target,
                               std::filesystem::copy_options::overwrite_existing, error);
    if (error) throw ToolError(ExitStatus::CannotWrite, target.string(), error.message());
}

} // namespace

void MakeClip(const ClipOptions& options) {
    const MetadataFile metadata =
        options.metadataFile.empty() ? MetadataFile() : MetadataFile(options.metadataFile);
    const std::unique_ptr<FrameInput> input = OpenFrameInput(options.input, options.inputOptions);
    const rawsdk::ClipProperties clip = PropertiesOf(options, input->Track(), metadata);
    CopySidecar(options);
    try {
        WriteFrames(options, *input, clip, metadata);
    } catch (const rawsdk::Failure&) {
        std::error_code ignored;
        std::filesystem::remove(options.output, ignored);
        throw ToolError(ExitStatus::CannotWrite, options.output, "cannot be written");
    } catch (const ToolError&) {
        std::error_code ignored;
        std::filesystem::remove(options.output, ignored);
        throw;
    }
}
