#include "cameraraw/VrelDecoderContext.h"

#include "cameraraw/RawLibrary.h"
#include "cameraraw/RawResult.h"
#include "cameraraw/automation/BstrText.h"
#include "framework/CatchAll.h"

namespace {

/// The flow of a pipeline.
REFIID FlowOf(uint32_t pipeline) {
    return pipeline == rawPipelineCpu ? IID_RawManualFlowCpu : IID_RawManualFlowDevice;
}

/// Adds what an object has of metadata, if it has any.
template <typename Object>
void ReadMetadataOf(Object& object, IOMetadataMap& map) {
    RawPointer<RawMetadataIterator> iterator;
    if (object.GetMetadataIterator(iterator.Receive()) == S_OK && iterator)
        ReadIterator(std::move(iterator), map);
}

} // namespace

VrelDecoderContext::VrelDecoderContext() {
    if (!CatchAll(false, [this] { return CreateCodec(); })) ReleaseCodec();
}

VrelDecoderContext::~VrelDecoderContext() {
    ReleaseClip();
    flow_.Reset();
    constants_.Reset();
    if (codec_) RawSucceeds([this] { return codec_->SetCallback(nullptr); });
    ReleaseCodec();
}

bool VrelDecoderContext::CreateCodec() {
    const RawPointer<RawFactory> factory = CreateRawFactory();
    if (!factory) return false;
    if (!RawFinds(codec_, [&] { return factory->CreateCodec(codec_.Receive()); }) ||
        !RawFinds(constants_, [&] { return QueryRaw(codec_.Get(), IID_RawConstants, constants_); }) ||
        !RawFinds(extras_, [&] { return QueryRaw(codec_.Get(), IID_RawExtras, extras_); }))
        return false;
    // What it tells is dropped: the calls are a test of the SDK. Kept.
    ReadRawDefaults(*constants_.Get());
    return true;
}

void VrelDecoderContext::ReleaseCodec() {
    constants_.Reset();
    codec_.Reset();
    extras_.Reset();
}

bool VrelDecoderContext::Configure() {
    const std::lock_guard guard(configuring_);
    if (isConfigured_) return true;
    RawPointer<RawPipelineSetup> setup;
    if (!IsRawThere(codec_) ||
        !RawFinds(setup, [&] { return QueryRaw(codec_.Get(), IID_RawPipelineSetup, setup); }))
        return false;
    // The pipeline is set also where the option is refused. Kept.
    RawSucceeds([&] { return setup->SetPipelineOption(0); });
    pipeline_ = rawPipelineCpu;
    const auto setPipeline = [&] { return setup->SetPipeline(pipeline_, nullptr, nullptr); };
    // Here the second try counts, and the report takes a third one. Kept.
    if (setPipeline() != S_OK && !RawSucceeds(setPipeline)) return false;
    // A flow that is missing is reported after a failure too. Kept.
    RawSucceeds([&] { return QueryRaw(codec_.Get(), FlowOf(pipeline_), flow_); });
    if (!IsRawThere(flow_)) return false;
    isConfigured_ = RawSucceeds([&] { return codec_->SetCallback(&callback_); });
    // Without the callback no job would ever be known to have finished.
    if (!isConfigured_) flow_.Reset();
    return isConfigured_;
}

bool VrelDecoderContext::OpenClip(const char* path) {
    clip_ = CatchAll(RawPointer<RawClip>(), [&] { return FindClip(path); });
    reader_.Reset();
    return clip_ && CatchAll(false, [&] { return ReadClip(); });
}

void VrelDecoderContext::ReleaseClip() {
    clip_.Reset();
    reader_.Reset();
}

/// Null without a path, a codec or a clip.
RawPointer<RawClip> VrelDecoderContext::FindClip(const char* path) {
    RawPointer<RawClip> clip;
    if (path == nullptr || !Configure()) return clip;
    const BstrHolder name(path);
    RawFinds(clip, [&] { return codec_->OpenClip(name.Get(), clip.Receive()); });
    return clip;
}

bool VrelDecoderContext::ReadClip() {
    facts_ = {};
    clipValues_ = {};
    frameValues_ = {};
    metadata_.Clear();
    if (!RawFinds(reader_, [&] { return QueryRaw(clip_.Get(), IID_RawClipReader, reader_); }) ||
        !ReadFacts()) {
        ReleaseClip();
        return false;
    }
    return ReadFirstFrame();
}

/// Reads what the clip tells without a frame. What it refuses to tell counts as 0.
/// @return whether that can be the truth
bool VrelDecoderContext::ReadFacts() {
    RawSucceeds([&] { return clip_->GetWidth(&facts_.width); });
    RawSucceeds([&] { return clip_->GetHeight(&facts_.height); });
    RawSucceeds([&] { return clip_->GetFrameCount(&facts_.frameCount); });
    RawSucceeds([&] { return clip_->GetFrameRate(&facts_.frameRate); });
    facts_.timeCode = TimeCodeOf(0);
    const bool isTimed = facts_.frameRate > 0.0F || (facts_.frameRate == 0.0F && !facts_.timeCode.empty());
    return facts_.width != 0 && facts_.height != 0 && facts_.frameCount != 0 && isTimed;
}

bool VrelDecoderContext::ReadFirstFrame() {
    CxAlignedBuffer bitstream;
    const RawPointer<RawFrame> frame = ReadFrame(0, bitstream, reader_.Get());
    if (!frame) return false;
    RawPointer<RawFrameSize> size;
    if (!RawFinds(size, [&] { return QueryRaw(frame.Get(), IID_RawFrameSize, size); })) return false;
    RawSucceeds(
        [&] { return size->GetProcessedDimensions(&facts_.processedWidth, &facts_.processedHeight); });
    if (!ReadSettings(*frame.Get())) return false;
    ReadMetadataOf(*clip_.Get(), metadata_);
    ReadMetadataOf(*frame.Get(), metadata_);
    return true;
}

bool VrelDecoderContext::ReadSettings(RawFrame& frame) {
    RawPointer<RawFrameSettings> frameSettings;
    if (!RawGives(frameSettings, [&] { return frame.CloneFrameSettings(frameSettings.Receive()); }))
        return false;
    ReadRawSettings(*frameSettings.Get(), frameValues_);
    RawPointer<RawClipSettings> clipSettings;
    if (!RawGives(clipSettings, [&] { return clip_->CloneClipSettings(clipSettings.Receive()); }))
        return false;
    ReadRawSettings(*clipSettings.Get(), clipValues_);
    clipValues_.lutSources = FindRawLutSources(*clipSettings.Get(), clipValues_.lutMode);
    BstrHolder camera;
    RawSucceeds([&] { return clip_->GetCameraType(camera.Receive()); });
    clipValues_.cameraType = camera.Text();
    return true;
}

/// Empty where there is no clip or it tells none.
std::string VrelDecoderContext::TimeCodeOf(uint64_t frame) {
    BstrHolder timeCode;
    if (clip_) RawSucceeds([&] { return clip_->GetTimecode(frame, timeCode.Receive()); });
    return timeCode.Text();
}

void VrelDecoderContext::GetFrameMetadata(uint64_t frame, QMap<QString, QVariant>& out) {
    out.clear();
    CatchAll(false, [&] {
        CxAlignedBuffer bitstream;
        const RawPointer<RawFrame> read = ReadFrame(frame, bitstream, reader_.Get());
        if (!IsRawThere(read)) return false;
        IOMetadataMap metadata;
        ReadMetadataOf(*read.Get(), metadata);
        metadata.ToMap(out);
        out.insert(QStringLiteral("TimeCode"), QString::fromStdString(TimeCodeOf(frame)));
        return true;
    });
}
