#include "JobRoad.h"

#include "cameraraw/RawLibrary.h"
#include "cameraraw/automation/BstrText.h"

#include <stdexcept>

namespace {

void Check(bool isRight) {
    if (!isRight) throw std::runtime_error("the SDK fails");
}

} // namespace

JobRoad::JobRoad(const std::string& path) {
    const RawPointer<RawFactory> factory = CreateRawFactory();
    RawPointer<RawPipelineSetup> setup;
    Check(factory && factory->CreateCodec(codec_.Receive()) == S_OK);
    Check(QueryRaw(codec_.Get(), IID_RawPipelineSetup, setup) == S_OK);
    Check(setup->SetPipelineOption(0) == S_OK);
    Check(setup->SetPipeline(rawPipelineCpu, nullptr, nullptr) == S_OK);
    Check(QueryRaw(codec_.Get(), IID_RawManualFlowCpu, flow_) == S_OK);
    Check(codec_->SetCallback(this) == S_OK);
    Check(codec_->OpenClip(BstrHolder(path).Get(), clip_.Receive()) == S_OK);
    Check(QueryRaw(clip_.Get(), IID_RawClipReader, reader_) == S_OK);
    Check(clip_->CloneClipSettings(settings_.Receive()) == S_OK);
    uint32_t size = 0;
    Check(reader_->GetBitstreamBound(&size) == S_OK);
    bitstream_.resize(size);
    Check(flow_->GetFrameStateSize(&size) == S_OK);
    state_.resize(size);
}

JobRoad::~JobRoad() { codec_->SetCallback(nullptr); }

bool JobRoad::Decode(uint64_t frame) {
    RawPointer<RawJob> job;
    const auto bound = static_cast<uint32_t>(bitstream_.size());
    if (reader_->CreateReadJob(frame, bitstream_.data(), bound, job.Receive()) != S_OK || !Run(job.Get()) ||
        !Prepare())
        return false;
    if (flow_->CreateDecodeJob(state_.data(), bitstream_.data(), decoded_.data(), job.Receive()) != S_OK ||
        !Run(job.Get()))
        return false;
    return flow_->CreateProcessJob(state_.data(), decoded_.data(), processed_.data(), nullptr,
                                   job.Receive()) == S_OK &&
           Run(job.Get());
}

/// Describes the frame that was read, and makes room for what is made of it.
bool JobRoad::Prepare() {
    auto* const frame = static_cast<RawFrame*>(product_.Get());
    RawPointer<RawFrameSettings> frameSettings;
    const auto stateSize = static_cast<uint32_t>(state_.size());
    uint32_t decoded = 0;
    uint32_t processed = 0;
    if (frame == nullptr || frame->SetResourceFormat(rawFormatPlanar16) != S_OK ||
        frame->SetResolutionScale(rawScaleFull) != S_OK ||
        frame->CloneFrameSettings(frameSettings.Receive()) != S_OK ||
        flow_->FillFrameState(frame, settings_.Get(), frameSettings.Get(), state_.data(), stateSize) !=
            S_OK ||
        flow_->GetDecodedSize(state_.data(), &decoded) != S_OK ||
        flow_->GetProcessedSize(state_.data(), &processed) != S_OK)
        return false;
    decoded_.resize(decoded);
    processed_.resize(processed);
    return true;
}

bool JobRoad::Run(RawJob* job) {
    if (job->Submit() != S_OK) return false;
    finished_.acquire();
    return result_ == S_OK;
}

void JobRoad::ReadFinished(RawJob*, HRESULT result, IUnknown* product) {
    result_ = result;
    product_ = RawPointer<IUnknown>::Share(product);
    finished_.release();
}

void JobRoad::DecodeFinished(RawJob*, HRESULT result) {
    result_ = result;
    finished_.release();
}

void JobRoad::ProcessFinished(RawJob*, HRESULT result, IUnknown*) {
    result_ = result;
    finished_.release();
}
