#include "frames/SequenceInput.h"

#include "images/ImageFileReader.h"
#include "images/ImageOperations.h"
#include "media/ToolError.h"

namespace {

std::string SizeText(int32_t width, int32_t height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

HostImage NeverNull(HostImage image, const std::string& name) {
    if (!image) throw ToolError(ExitStatus::JobFailed, name, "not enough memory for a frame");
    return image;
}

} // namespace

SequenceInput::SequenceInput(const std::string& name, MissingFrames missing) : sequence_(name, missing) {
    const ImageFileReader first(sequence_.FirstFile());
    track_.name = name;
    track_.width = first.Info().width;
    track_.height = first.Info().height;
    track_.firstNumber = sequence_.FirstNumber();
    track_.frameCount = sequence_.FrameCount();
    track_.hasAlpha = first.Info().hasAlpha;
    track_.kind = first.Info().kind;
    track_.backEnd = first.Info().format;
}

HostImage SequenceInput::ReadFile(const std::string& path) const {
    ImageFileReader reader(path);
    const ImageFileInfo& info = reader.Info();
    if (info.width != track_.width || info.height != track_.height)
        throw ToolError(ExitStatus::Damaged, path,
                        "its size " + SizeText(info.width, info.height) + " differs from the " +
                            SizeText(track_.width, track_.height) + " of the sequence");
    return reader.Read();
}

HostImage SequenceInput::Read(int64_t index, ImageDataKind kind) {
    const std::string path = sequence_.FileAt(index);
    if (path.empty()) return NeverNull(NewOpaqueBlackImage(track_.width, track_.height, kind), track_.name);
    HostImage image = ReadFile(path);
    if (image->DataFormat->Kind == kind) return image;
    return NeverNull(ConvertImage(*image, kind), path);
}
