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

/// Makes room for `size` bytes. A size beyond what a buffer can have is refused, and so is 0 for a buffer
/// that was never filled: there would be nothing to give to the SDK.
bool MakeRoom(CxAlignedBuffer& buffer, uint32_t size) {
    return buffer.EnsureSize(static_cast<int32_t>(size)) && buffer.data != nullptr;
}

bool MakeRoomOrReport(CxAlignedBuffer& buffer, uint32_t size) {
    if (MakeRoom(buffer, size)) return true;
    ReportRawNull();
    return false;
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

} // namespace

HRESULT VrelDecoderContext::RunJob(RawJob* job) {
    if (job == nullptr) return E_FAIL;
    RawWait wait;
    // Without the record the end of the job could not be told.
    if (!RawSucceeds([&] { return job->SetUserData(&wait); })) return wait.result;
    bool isUnderWay = false;
    RawSucceeds([&] {
        const HRESULT result = job->Submit();
        isUnderWay = isUnderWay || result == S_OK;
        return result;
    });
    if (isUnderWay) wait.Wait();
    return wait.result;
}

RawPointer<RawFrame> VrelDecoderContext::ReadFrame(uint64_t frame, CxAlignedBuffer& bitstream,
                                                   RawClipReader* reader) {
    uint32_t size = 0;
    RawPointer<RawJob> job;
    if (!IsRawThere(clip_) || !IsRawThere(reader) ||
        !RawSucceeds([&] { return reader->GetBitstreamBound(&size); }) ||
        !MakeRoomOrReport(bitstream, size) ||
        !RawGives(job, [&] { return reader->CreateReadJob(frame, bitstream.data, size, job.Receive()); }))
        return {};
    RawWait wait;
    // Its result isn't looked at, and neither is the job's: without a product it has failed. Kept.
    job->SetUserData(&wait);
    if (job->Submit() < 0) return {};
    wait.Wait();
    // The product of a read is handed over as the frame's first interface.
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
    if (!IsRawThere(flow_) || !RawSucceeds([&] { return flow_->GetFrameStateSize(&stateSize); }))
        return false;
    RawPointer<RawLut> lut;
    void* const lutTable = TableOf(*clipSettings, lut);
    CxAlignedBuffer state;
    CxAlignedBuffer decoded;
    return MakeRoomOrReport(state, stateSize) && RawSucceeds([&] {
               return flow_->FillFrameState(frame, clipSettings, frameSettings, state.data, stateSize);
           }) &&
           Decode(state.data, bitstream, decoded) && Process(state.data, decoded.data, lutTable, output);
}

bool VrelDecoderContext::Decode(void* state, void* bitstream, CxAlignedBuffer& decoded) {
    uint32_t size = 0;
    return RawSucceeds([&] { return flow_->GetDecodedSize(state, &size); }) &&
           MakeRoomOrReport(decoded, size) &&
           RunNewJob("CreateDecodeJob", "WaitForDecodeJob", [&](RawJob** job) {
               return flow_->CreateDecodeJob(state, bitstream, decoded.data, job);
           });
}

bool VrelDecoderContext::Process(void* state, void* decoded, void* lutTable, CxAlignedBuffer& output) {
    uint32_t size = 0;
    if (!RawSucceeds([&] { return flow_->GetProcessedSize(state, &size); })) return false;
    if (!MakeRoom(output, size)) {
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
