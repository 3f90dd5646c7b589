#include "rawsdk/Codec.h"

#include "rawsdk/Clip.h"

#include "cameraraw/automation/BstrText.h"

namespace rawsdk {

Codec::Codec() : Object("RawCodec.QueryInterface"), queue_(JobQueue::Start()) {}

Codec::~Codec() {
    queue_->Stop();
    RecordEnd({"RawCodec.Released"});
}

IUnknown* Codec::Find(REFIID identifier) {
    if (identifier == IID_RawConstants) return static_cast<RawConstants*>(this);
    if (identifier == IID_RawExtras) return static_cast<RawExtras*>(this);
    if (identifier == IID_RawPipelineSetup) return static_cast<RawPipelineSetup*>(this);
    const bool isFlow = identifier == IID_RawManualFlowCpu && hasPipeline_;
    return isFlow ? static_cast<RawManualFlow*>(this) : nullptr;
}

HRESULT Codec::OpenClip(BSTR path, RawClip** clip) {
    return Answer({"RawCodec.OpenClip"}, clip,
                  [&] { return new Clip(std::make_shared<ClipFile>(TextOfBstr(path)), queue_); });
}

HRESULT Codec::SetCallback(IRavenlightRawCallback* callback) {
    return Perform({"RawCodec.SetCallback", callback == nullptr ? "null" : ""},
                   [&] { queue_->Callback().Set(callback); });
}

HRESULT Codec::SetPipeline(uint32_t pipeline, void* context, void* queue) {
    return Perform({"RawPipelineSetup.SetPipeline", Subject::OfCode(pipeline)}, [&] {
        if (pipeline != rawPipelineCpu) throw Failure{E_NOTIMPL};
        RequireArgument(context == nullptr && queue == nullptr);
        hasPipeline_ = true;
    });
}

HRESULT Codec::SetPipelineOption(uint32_t option) {
    return Perform({"RawPipelineSetup.SetPipelineOption", Subject::OfNumber(option)},
                   [&] { RequireArgument(option == 0); });
}

} // namespace rawsdk
