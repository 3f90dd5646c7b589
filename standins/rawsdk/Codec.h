#pragma once

#include "rawsdk/JobQueue.h"
#include "rawsdk/Object.h"

#include <memory>

namespace rawsdk {

/// The codec with all of its interfaces. It works on processors alone: `cpub` is its one pipeline.
class Codec final : public Object<RawCodec, RawConstants, RawExtras, RawPipelineSetup, RawManualFlow> {
public:
    Codec();

    HRESULT OpenClip(BSTR path, RawClip** clip) override;
    HRESULT SetCallback(IRavenlightRawCallback* callback) override;

    HRESULT GetClipAttributeRange(BSTR camera, uint32_t attribute, VARIANT* minimum, VARIANT* maximum,
                                  bool* readOnly) override;
    HRESULT GetAttributeList(BSTR camera, uint32_t attribute, VARIANT* values, uint32_t* count,
                             bool* readOnly) override;
    HRESULT GetFrameAttributeRange(BSTR camera, uint32_t attribute, VARIANT* minimum, VARIANT* maximum,
                                   bool* readOnly) override;

    HRESULT SetPipeline(uint32_t pipeline, void* context, void* queue) override;
    HRESULT SetPipelineOption(uint32_t option) override;

    HRESULT FillFrameState(RawFrame* frame, RawClipSettings* clipSettings, RawFrameSettings* frameSettings,
                           void* state, uint32_t stateSize) override;
    HRESULT GetFrameStateSize(uint32_t* size) override;
    HRESULT GetDecodedSize(void* state, uint32_t* size) override;
    HRESULT GetProcessedSize(void* state, uint32_t* size) override;
    HRESULT CreateDecodeJob(void* state, void* bitstream, void* decoded, RawJob** job) override;
    HRESULT CreateProcessJob(void* state, void* decoded, void* processed, void* lutTable,
                             RawJob** job) override;

protected:
    ~Codec() override;
    IUnknown* Find(REFIID identifier) override;

private:
    std::shared_ptr<JobQueue> queue_;
    bool hasPipeline_ = false;
};

} // namespace rawsdk
