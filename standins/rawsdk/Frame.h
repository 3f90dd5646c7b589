#pragma once

#include "rawsdk/Object.h"
#include "rawsdk/clip/ClipFile.h"

#include <memory>

namespace rawsdk {

/// A frame that was read. It keeps what stands in front of the picture; the picture stays in the reader's
/// buffer.
class Frame final : public Object<RawFrame, RawFrameSize> {
public:
    Frame(std::shared_ptr<const ClipFile> file, const FrameRecord& record);

    HRESULT GetMetadataIterator(RawMetadataIterator** iterator) override;
    HRESULT CloneFrameSettings(RawFrameSettings** settings) override;
    HRESULT SetResolutionScale(uint32_t scale) override;
    HRESULT SetResourceFormat(uint32_t format) override;
    HRESULT GetProcessedDimensions(uint32_t* width, uint32_t* height) override;

    const ClipProperties& Clip() const { return file_->Clip(); }
    uint32_t RecordSize() const { return recordSize_; }
    uint32_t RecordCrc() const { return recordCrc_; }
    /// Whether the scale and the format were set, without which nothing is decoded.
    bool IsReady() const { return hasScale_ && hasFormat_; }

protected:
    IUnknown* Find(REFIID identifier) override;

private:
    std::shared_ptr<const ClipFile> file_;
    FrameSettings settings_;
    Metadata metadata_;
    uint32_t recordSize_;
    uint32_t recordCrc_;
    bool hasScale_ = false;
    bool hasFormat_ = false;
};

} // namespace rawsdk
