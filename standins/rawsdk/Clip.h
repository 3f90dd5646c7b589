#pragma once

#include "rawsdk/JobQueue.h"
#include "rawsdk/Object.h"
#include "rawsdk/clip/ClipFile.h"

#include <memory>

namespace rawsdk {

class Clip final : public Object<RawClip, RawClipReader> {
public:
    Clip(std::shared_ptr<const ClipFile> file, std::shared_ptr<JobQueue> queue);

    HRESULT GetWidth(uint32_t* width) override;
    HRESULT GetHeight(uint32_t* height) override;
    HRESULT GetFrameRate(float* rate) override;
    HRESULT GetFrameCount(uint64_t* count) override;
    HRESULT GetTimecode(uint64_t frame, BSTR* timecode) override;
    HRESULT GetMetadataIterator(RawMetadataIterator** iterator) override;
    HRESULT GetCameraType(BSTR* camera) override;
    HRESULT CloneClipSettings(RawClipSettings** settings) override;

    HRESULT GetBitstreamBound(uint32_t* size) override;
    HRESULT CreateReadJob(uint64_t frame, void* buffer, uint32_t size, RawJob** job) override;

protected:
    ~Clip() override;
    IUnknown* Find(REFIID identifier) override;

private:
    std::shared_ptr<const ClipFile> file_;
    std::shared_ptr<JobQueue> queue_;
};

} // namespace rawsdk
