// The jobs of VrelDecoderContext.
//
// The SDK runs a job on its own threads, writes into memory of the caller until the job has finished, and
// then calls back, maybe before `Submit` has returned. So what was submitted is waited for before anything
// that it was given ends.

#include "cameraraw/RawResult.h"
#include "cameraraw/VrelDecoderContext.h"
#include "framework/CatchAll.h"

namespace {

/// The result that stands for a size or a buffer that can't be used.
constexpr HRESULT unusable = 1;

/// Makes room for `size` bytes, without a word. A size beyond what a buffer can have is refused; one of 0
/// leaves a buffer that was never filled null, as a refusal does.
bool MakeRoom(CxAlignedBuffer& buffer, uint32_t size) {
    return buffer.EnsureSize(static_cast<int32_t>(size));
}

/// The table of the LUT that the settings choose.
/// @param lut  out: its owner
/// @return null without one, which is no failure
void* TableOf(RawClipSettings& settings, RawPointer<RawLut>& lut) {
    void* table = nullptr;
    if (settings.GetLut(lut.Receive()) != S_OK || !lut) return nullptr;
    return lut->GetTable(&table) == S_OK ? table : nullptr;
}

/// Creates a job and runs it to its end. A job that fails is run once more.
template <typename Create>
bool RunNewJob(const char* createStep, const char* waitStep, const Create& create) {
    RawPointer<RawJob> job;
    return RawStepSucceeds(createStep, [&] { return create(job.Receive()); }) && IsRawThere(job) &&
           RawStepSucceeds(waitStep, [&] { return VrelDecoderContext::RunJob(job.Get()); });
}

/// Submits a job, once more if it is refused. What isn't exactly 0 is reported, and yet a positive result
/// means that the job was accepted: it is not submitted again, since it may be under way.
/// @return whether it was accepted
bool SubmitJob(RawJob& job) {
    HRESULT result = job.Submit();
    if (result == S_OK) return true;
    if (result < 0) result = job.Submit();
    ReportRawResult(result);
    return result >= 0;
}

} // namespace

HRESULT VrelDecoderContext::RunJob(RawJob* job) {
    if (job == nullptr) return E_FAIL;
    RawWait wait;
    HRESULT kept = E_FAIL;
    RawSucceeds([&] { return kept = job->SetUserData(&wait); });
    // Without the record the end of the job could not be told.
    if (kept == S_OK && SubmitJob(*job)) wait.Wait();
    return wait.result;
}

RawPointer<RawFrame> VrelDecoderContext::ReadFrame(uint64_t frame, CxAlignedBuffer& bitstream,
                                                   RawClipReader* reader) {
    uint32_t size = 0;
    RawPointer<RawJob> job;
    if (!IsRawThere(clip_) || !IsRawThere(reader) ||
        !RawSucceeds([&] { return reader->GetBitstreamBound(&size); }))
        return {};
    MakeRoom(bitstream, size);
    if (!IsRawThere(bitstream.data) ||
        !RawGives(job, [&] { return reader->CreateReadJob(frame, bitstream.data, size, job.Receive()); }))
        return {};
    RawWait wait;
    // Without the record the end of the job could not be told. Nothing is said of that.
    if (job->SetUserData(&wait) != S_OK && job->SetUserData(&wait) != S_OK) return {};
    if (job->Submit() < 0) return {};
    wait.Wait();
    // The job's result isn't looked at: without a product, the frame's first interface, it has failed. Kept.
    return RawPointer<RawFrame>(static_cast<RawFrame*>(wait.product.Detach()));
}

bool VrelDecoderContext::DecodeFrame(uint64_t frame, CxAlignedBuffer& output) {
    return CatchAll(false, [&] {
        CxAlignedBuffer bitstream;
        const RawPointer<RawFrame> read = ReadFrame(frame, bitstream, reader_.Get());
        return IsRawThere(read) && DecodeRead(*read.Get(), bitstream.data, output);
    });
}

bool VrelDecoderContext::DecodeRead(RawFrame& frame, void* bitstream, CxAlignedBuffer& output) {
    RawPointer<RawFrameSize> size;
    uint32_t width = 0;
    uint32_t height = 0;
    if (!RawSucceeds([&] { return frame.SetResourceFormat(rawFormatPlanar16); }) ||
        !RawSucceeds([&] { return frame.SetResolutionScale(rawScaleFull); }) ||
        !RawGives(size, [&] { return QueryRaw(&frame, IID_RawFrameSize, size); }) ||
        !RawSucceeds([&] { return size->GetProcessedDimensions(&width, &height); }))
        return false;
    if (width == 0 || height == 0) {
        ReportRawResult(unusable);
        return false;
    }
    RawPointer<RawFrameSettings> frameSettings;
    RawPointer<RawClipSettings> clipSettings;
    return RawGives(frameSettings, [&] { return frame.CloneFrameSettings(frameSettings.Receive()); }) &&
           RawGives(clipSettings, [&] { return clip_->CloneClipSettings(clipSettings.Receive()); }) &&
           DecodeAndProcess(&frame, clipSettings.Get(), frameSettings.Get(), bitstream, output);
}

bool VrelDecoderContext::DecodeAndProcess(RawFrame* frame, RawClipSettings* clipSettings,
                                          RawFrameSettings* frameSettings, void* bitstream,
                                          CxAlignedBuffer& output) {
    uint32_t stateSize = 0;
    if (!IsRawThere(flow_) || !IsRawThere(frame) || !IsRawThere(clipSettings) || !IsRawThere(frameSettings) ||
        !RawSucceeds([&] { return flow_->GetFrameStateSize(&stateSize); }))
        return false;
    RawPointer<RawLut> lut;
    void* const lutTable = TableOf(*clipSettings, lut);
    CxAlignedBuffer state;
    CxAlignedBuffer decoded;
    return MakeRoom(state, stateSize) && RawSucceeds([&] {
               return flow_->FillFrameState(frame, clipSettings, frameSettings, state.data, stateSize);
           }) &&
           Decode(state.data, bitstream, decoded) && Process(state.data, decoded.data, lutTable, output);
}

bool VrelDecoderContext::Decode(void* state, void* bitstream, CxAlignedBuffer& decoded) {
    uint32_t size = 0;
    return RawSucceeds([&] { return flow_->GetDecodedSize(state, &size); }) && MakeRoom(decoded, size) &&
           RunNewJob("CreateDecodeJob", "WaitForDecodeJob", [&](RawJob** job) {
               return flow_->CreateDecodeJob(state, bitstream, decoded.data, job);
           });
}

bool VrelDecoderContext::Process(void* state, void* decoded, void* lutTable, CxAlignedBuffer& output) {
    uint32_t size = 0;
    if (!RawSucceeds([&] { return flow_->GetProcessedSize(state, &size); })) return false;
    if (!MakeRoom(output, size) || output.data == nullptr) {
        ReportRawResult(unusable);
        return false;
    }
    if (!RunNewJob("CreateCPUProcessJob", "WaitForCPUProcessJob", [&](RawJob** job) {
            return flow_->CreateProcessJob(state, decoded, output.data, lutTable, job);
        }))
        return false;
    output.used = static_cast<int32_t>(size);
    return true;
}
