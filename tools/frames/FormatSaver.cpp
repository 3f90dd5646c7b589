#include "frames/FormatSaver.h"

#include "Containers.h"
#include "QuietStream.h"
#include "frames/HostFormats.h"
#include "host/Request.h"
#include "media/ToolError.h"
#include "media/WrittenFrames.h"

#include <algorithm>
#include <filesystem>

namespace {

constexpr const char* kFormatClass = "FFMPEGFileFormats";

std::unique_ptr<ImageFormat> NewSaver() {
    const QuietStream quiet(stdout); // FFmpeg's version is said when it is bound
    const std::vector<Registry*> formats = Registry::Formats();
    const auto found = std::find_if(formats.begin(), formats.end(), [](const Registry* format) {
        return std::string(format->ClassName()) == kFormatClass;
    });
    std::unique_ptr<ImageFormat> made = found != formats.end() ? NewFormat(**found) : nullptr;
    if (!made) throw ToolError(ExitStatus::Unsupported, kFormatClass, "not available");
    return made;
}

} // namespace

FormatSaver::FormatSaver(const std::string& path, const SaveControls& controls)
    : file_((CheckContainer(controls.container, controls.encoder), path)), format_(NewSaver()),
      tool_(CorvexDoc::Get(), format_.get()) {
    format_->AddSaveInputs(&tool_);
    tool_.SendDefaults();
    Set(controls);
    Request request(0.0);
    format_->SetupSave(&tool_, &request);
}

FormatSaver::~FormatSaver() {
    const QuietStream quiet(stderr);
    format_.reset();
}

void FormatSaver::Set(const char* id, const Parameter& value) { tool_.SetInput(id, value, CxTime_None); }

void FormatSaver::Set(const SaveControls& controls) {
    // The container first: a change of it chooses another encoder.
    Set("Container", IDParameter(CxID(controls.container.c_str(), true)));
    Set("EncoderProfile", IDParameter(CxID(controls.encoder.c_str(), true)));
    Set("FrameRateFps", NumberParameter(static_cast<double>(controls.frameRate.num) /
                                        static_cast<double>(controls.frameRate.den)));
    if (controls.dataRate) Set("DataRateK", NumberParameter(*controls.dataRate));
    if (controls.keyFrames) Set("KeyFrames", NumberParameter(*controls.keyFrames));
    // The format takes an option for one only when a separator follows.
    if (!controls.options.empty()) Set("Options", TextParameter(controls.options + ","));
}

double FormatSaver::FrameRate() const { return format_->GetAttr(kFormatFrameRate, 0.0); }

void FormatSaver::Begin(Image* image) {
    // A path from the root is never taken for a protocol, whatever the file's name.
    const std::string part = std::filesystem::absolute(file_.PartPath()).string();
    TagList tags;
    if (!format_->SaveHeaderTagList(part.c_str(), image, tags))
        throw ToolError(ExitStatus::Unsupported, file_.Path(), words_.First("the encoder does not start"));
}

void FormatSaver::Save(Image* image) {
    const QuietStream quiet(stderr); // encoders say there what they do
    if (frames_ == 0) Begin(image);
    TagList tags;
    if (!format_->SaveFrameTagList(static_cast<uint32_t>(frames_), image, tags))
        throw ToolError(ExitStatus::JobFailed, file_.Path(),
                        "frame " + std::to_string(frames_) + ": " + words_.First("it can't be encoded"));
    ++frames_;
}

void FormatSaver::Finish() {
    {
        const QuietStream quiet(stderr);
        format_->CleanupSave(&tool_);
    }
    CheckWritten();
    file_.Commit();
}

/// The format doesn't tell that a packet could not be written, so the file itself is asked.
void FormatSaver::CheckWritten() {
    file_.CheckRoom();
    const std::string why = words_.First("the container takes no such stream");
    const int64_t written = CountWrittenFrames(file_.PartPath());
    if (written == frames_ && frames_ > 0) return;
    if (written == 0) throw ToolError(ExitStatus::Unsupported, file_.Path(), why);
    throw ToolError(ExitStatus::JobFailed, file_.Path(),
                    std::to_string(written) + " of " + std::to_string(frames_) + " frames are in the file");
}
