#include "rawsdk/Frame.h"

#include "rawsdk/MetadataIterator.h"
#include "rawsdk/SettingsObjects.h"

#include <utility>

namespace rawsdk {

Frame::Frame(std::shared_ptr<const ClipFile> file, const FrameRecord& record)
    : Object("RawFrame.QueryInterface"), file_(std::move(file)), settings_(record.settings),
      metadata_(record.metadata), recordSize_(record.size), recordCrc_(record.crc) {}

IUnknown* Frame::Find(REFIID identifier) {
    return identifier == IID_RawFrameSize ? static_cast<RawFrameSize*>(this) : nullptr;
}

HRESULT Frame::GetMetadataIterator(RawMetadataIterator** iterator) {
    return Answer({"RawFrame.GetMetadataIterator"}, iterator,
                  [&] { return new MetadataIterator(metadata_); });
}

HRESULT Frame::CloneFrameSettings(RawFrameSettings** settings) {
    return Answer({"RawFrame.CloneFrameSettings"}, settings,
                  [&] { return new FrameSettingsObject(settings_); });
}

HRESULT Frame::SetResolutionScale(uint32_t scale) {
    return Perform({"RawFrame.SetResolutionScale", Subject::OfCode(scale)}, [&] {
        RequireArgument(scale == rawScaleFull);
        hasScale_ = true;
    });
}

HRESULT Frame::SetResourceFormat(uint32_t format) {
    return Perform({"RawFrame.SetResourceFormat", Subject::OfCode(format)}, [&] {
        RequireArgument(format == rawFormatPlanar16);
        hasFormat_ = true;
    });
}

HRESULT Frame::GetProcessedDimensions(uint32_t* width, uint32_t* height) {
    if (height == nullptr) return E_POINTER;
    *height = 0;
    return Answer({"RawFrameSize.GetProcessedDimensions"}, width, [&] {
        *height = Clip().height;
        return Clip().width;
    });
}

} // namespace rawsdk
