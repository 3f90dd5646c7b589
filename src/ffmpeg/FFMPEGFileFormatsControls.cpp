// The controls that FFMPEGFileFormats adds to a saver tool.

#include "ffmpeg/FFMPEGFileFormats.h"
#include "ffmpeg/SaveSettings.h"
#include "framework/CatchAll.h"
#include "host/AutoCxIDParam.h"
#include "host/InputTags.h"
#include "host/Operator.h"
#include "host/Request.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace CxFFMPEG {

namespace {

constexpr char defaultContainer[] = "Matroska";

/// Tags that every control has.
TagList ControlTags(const char* dataType, const char* look) {
    TagList tags;
    tags.Set(InputTag_DataType, CxID(dataType, true), false);
    tags.Set(InputTag_Control, CxID(look, true), false);
    tags.Set(InputTag_Host30000, 0, false);
    return tags;
}

TagList ComboTags() {
    TagList tags = ControlTags(CLSID_DataType_CxID, CLSID_InputControl_ComboID);
    for (const Tag tag : {InputTag_Host30014, InputTag_Host20002, InputTag_Host3000a, InputTag_Host50001})
        tags.Set(tag, 1, false);
    return tags;
}

TagList SliderTags(double lowest, double highest, double start) {
    TagList tags = ControlTags(CLSID_DataType_Number, CLSID_InputControl_Slider);
    tags.Set(InputTag_Host30014, 1, false);
    tags.Set(InputTag_Lowest, lowest, false);
    tags.Set(InputTag_Highest, highest, false);
    tags.Set(InputTag_Default, start, false);
    return tags;
}

TagList WholeSliderTags(double lowest, double highest, double start) {
    TagList tags = SliderTags(lowest, highest, start);
    tags.Set(InputTag_WholeNumbers, 1, false);
    return tags;
}

TagList ContainerTags() {
    TagList tags = ComboTags();
    std::list<std::string> names = GetContainerNames();
    names.sort();
    for (const std::string& name : names) {
        tags.Add(InputTag_EntryText, name.c_str());
        tags.Add(InputTag_EntryId, CxID(name.c_str(), true));
    }
    // Also where no such container is in the list. Kept.
    tags.Set(InputTag_DefaultEntry, CxID(defaultContainer, true), false);
    return tags;
}

TagList RateTags() {
    TagList tags = SliderTags(0.01, 240.0, 24.0);
    tags.Set(InputTag_Decimals, 3, false);
    return tags;
}

TagList TextTags() {
    TagList tags = ControlTags(CLSID_DataType_Text, CLSID_InputControl_TextEdit);
    tags.Set(InputTag_Host30002, 0, false);
    return tags;
}

Input* Add(Operator& tool, const char* id, const char* label, const TagList& tags) {
    return tool.AddInput(Object::futr(label), id, tags);
}

/// A group of a tool's controls, to which those belong that are added during its life.
class ControlGroup {
public:
    ControlGroup(Operator& tool, const char* id, const char* label) : tool_(tool) {
        tool_.BeginControlNest(Object::futr(label), id, false);
    }
    ~ControlGroup() { tool_.EndControlNest(); }
    ControlGroup(const ControlGroup&) = delete;
    ControlGroup& operator=(const ControlGroup&) = delete;

private:
    Operator& tool_;
};

/// Has the tool's controls shown anew.
void NotifyControlsChanged(Operator* tool) {
    if (tool != nullptr && tool->GetDoc() != nullptr)
        tool->GetDoc()->Notify(DocNotify_ControlsChanged, 1, tool);
}

double NumberOf(Request& request, Input* input) {
    const auto* const value = dynamic_cast<NumberParameter*>(request.GetInputData(input, 0));
    return value != nullptr ? value->Number() : 0.0;
}

CxID IdOf(Request& request, Input* input) {
    const auto* const value = dynamic_cast<IDParameter*>(request.GetInputData(input, 0));
    return value != nullptr ? value->ID() : CxID();
}

std::string TextOf(Request& request, Input* input) {
    const auto* const value = dynamic_cast<TextParameter*>(request.GetInputData(input, 0));
    return value != nullptr ? value->Text() : std::string();
}

} // namespace

void FFMPEGFileFormats::AddSaveInputs(Operator* tool) try {
    if (tool == nullptr) return;
    SaveControls added;
    added.container = Add(*tool, "Container", "Container", ContainerTags());
    added.encoder = Add(*tool, "EncoderProfile", "Encoder", ComboTags());
    added.frameRate = Add(*tool, "FrameRateFps", "Frame Rate (fps)", RateTags());
    const ControlGroup advanced(*tool, "Advanced", "Advanced");
    added.dataRate = Add(*tool, "DataRateK", "Data Rate (KB/s)", WholeSliderTags(0.0, 1200.0, 512.0));
    added.keyFrames = Add(*tool, "KeyFrames", "Key Frames", WholeSliderTags(0.0, 64.0, 1.0));
    added.options = Add(*tool, "Options", "Encoder Options", TextTags());
    controls = added;
} catch (...) {
    // The tool has some of the controls then, and a save from it is refused.
    controls = {};
}

void FFMPEGFileFormats::NotifyChangedSave(Operator* tool, Input* input, Parameter* value, double time) try {
    const auto* const id = dynamic_cast<IDParameter*>(value);
    if (input == nullptr || id == nullptr) return;
    if (input == controls.container) ListEncoders(tool, id->ID());
    if (input == controls.encoder) ConfirmEncoder(tool, id->ID(), time);
} catch (...) {
    // The control of encoders keeps what it had.
}

/// Fills the control of encoders for a container, and chooses the first one. If anything fails the control
/// keeps what it had, and nobody is told.
void FFMPEGFileFormats::ListEncoders(Operator* tool, const CxID& container) {
    std::list<std::string> labels = GetEncoderLabels(static_cast<const char*>(container));
    labels.sort();
    TagList tags = controls.encoder->Tags();
    tags.Delete(InputTag_EntryText);
    for (const std::string& label : labels)
        tags.Add(InputTag_EntryText, label.c_str());
    const CxID first = labels.empty() ? CxID() : CxID(labels.front().c_str(), true);
    TagList attributes;
    attributes.Set(InputTag_NoChoice, labels.size() < 2 ? 1 : 0, false);
    std::swap(controls.encoder->Tags(), tags);
    // The choice comes last: tags can be taken back.
    const bool isChosen = CatchAll(false, [&] {
        controls.encoder->SetAttrsTagList(attributes);
        return controls.encoder->SetSource(IDParameter(first), CxTime_None, 0, 0);
    });
    if (isChosen) {
        NotifyControlsChanged(tool);
    } else {
        std::swap(controls.encoder->Tags(), tags);
    }
}

/// Takes an encoder that the chosen container has; any other stays unconfirmed.
void FFMPEGFileFormats::ConfirmEncoder(Operator* tool, const CxID& chosen, double time) {
    const CxID container = AutoCxIDParam(controls.container, time);
    const std::list<std::string> labels = GetEncoderLabels(static_cast<const char*>(container));
    if (std::find(labels.begin(), labels.end(), static_cast<const char*>(chosen)) == labels.end()) return;
    controls.encoder->SetSource(IDParameter(chosen), time, 0, 0);
    NotifyControlsChanged(tool);
}

void FFMPEGFileFormats::SetupSave(Operator* tool, Request* request) try {
    if (request == nullptr) return;
    const CorvexDoc* const document = tool != nullptr ? tool->GetDoc() : nullptr;
    containerName = IdOf(*request, controls.container);
    encoderName = IdOf(*request, controls.encoder);
    const SaveRate rate = SaveRateOf(NumberOf(*request, controls.frameRate),
                                     document != nullptr ? document->GetFrameRateDivisor() : 0);
    settings.timeScale = rate.timeScale;
    settings.frameDuration = rate.frameDuration;
    settings.bitRate = BitRateOf(NumberOf(*request, controls.dataRate));
    settings.gopSize = GopSizeOf(NumberOf(*request, controls.keyFrames));
    options = ParseEncoderOptions(TextOf(*request, controls.options));
    times.frameRate = {static_cast<int>(rate.timeScale), static_cast<int>(rate.frameDuration)};
} catch (...) {
    // A header is refused without a container.
    containerName = CxID();
}

void FFMPEGFileFormats::CleanupSave(Operator* /*tool*/) {
    std::fputs("Cleanup Save\n", stderr);
    CloseFile();
}

} // namespace CxFFMPEG
