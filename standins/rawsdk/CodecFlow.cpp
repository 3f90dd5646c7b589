// The codec's `RawManualFlow`.

#include "rawsdk/Codec.h"
#include "rawsdk/DecodeJob.h"
#include "rawsdk/Frame.h"
#include "rawsdk/ProcessJob.h"
#include "rawsdk/SettingsObjects.h"

namespace rawsdk {

namespace {

/// The library's own object behind an interface that the caller hands in.
template <typename Implementation, typename Interface>
const Implementation& Own(Interface* interface) {
    const auto* const object = dynamic_cast<const Implementation*>(interface);
    RequireArgument(object != nullptr);
    return *object;
}

/// The words of a buffer that the caller hands in.
uint16_t* WordsOf(void* buffer) {
    RequireArgument(buffer != nullptr && reinterpret_cast<uintptr_t>(buffer) % alignof(uint16_t) == 0);
    return static_cast<uint16_t*>(buffer);
}

} // namespace

HRESULT Codec::FillFrameState(RawFrame* frame, RawClipSettings* clipSettings, RawFrameSettings* frameSettings,
                              void* state, uint32_t stateSize) {
    return Perform({"RawManualFlow.FillFrameState"}, [&] {
        const Frame& own = Own<Frame>(frame);
        RequireArgument(own.IsReady() && state != nullptr && stateSize >= FrameState::Bytes());
        const ToneParameters tone = ToneOf(Own<ClipSettingsObject>(clipSettings).Settings(),
                                           Own<FrameSettingsObject>(frameSettings).Settings());
        FrameState{own.Clip().width, own.Clip().height, own.RecordSize(), own.RecordCrc(), tone}.Store(state);
    });
}

HRESULT Codec::GetFrameStateSize(uint32_t* size) {
    return Answer({"RawManualFlow.GetFrameStateSize"}, size, [] { return FrameState::Bytes(); });
}

HRESULT Codec::GetDecodedSize(void* state, uint32_t* size) {
    return Answer({"RawManualFlow.GetDecodedSize"}, size,
                  [&] { return DecodedBytes(FrameState::Load(state)); });
}

HRESULT Codec::GetProcessedSize(void* state, uint32_t* size) {
    return Answer({"RawManualFlow.GetProcessedSize"}, size,
                  [&] { return ProcessedBytes(FrameState::Load(state)); });
}

HRESULT Codec::CreateDecodeJob(void* state, void* bitstream, void* decoded, RawJob** job) {
    return Answer({"RawManualFlow.CreateDecodeJob"}, job, [&] {
        RequireArgument(bitstream != nullptr);
        const FrameState loaded = FrameState::Load(state);
        return new DecodeJob(queue_, loaded, static_cast<const uint8_t*>(bitstream), WordsOf(decoded));
    });
}

HRESULT Codec::CreateProcessJob(void* state, void* decoded, void* processed, void* lutTable, RawJob** job) {
    return Answer({"RawManualFlow.CreateProcessJob"}, job, [&] {
        const FrameState loaded = FrameState::Load(state);
        const auto* const table = static_cast<const TableHandle*>(lutTable);
        return new ProcessJob(queue_, loaded, WordsOf(decoded), WordsOf(processed),
                              table == nullptr ? nullptr : *table);
    });
}

} // namespace rawsdk
