#include "rawsdk/Clip.h"

#include "rawsdk/AttributeValues.h"
#include "rawsdk/MetadataIterator.h"
#include "rawsdk/ReadJob.h"
#include "rawsdk/SettingsObjects.h"

#include <utility>

namespace rawsdk {

Clip::Clip(std::shared_ptr<const ClipFile> file, std::shared_ptr<JobQueue> queue)
    : Object("RawClip.QueryInterface"), file_(std::move(file)), queue_(std::move(queue)) {}

Clip::~Clip() { RecordEnd({"RawClip.Released"}); }

IUnknown* Clip::Find(REFIID identifier) {
    return identifier == IID_RawClipReader ? static_cast<RawClipReader*>(this) : nullptr;
}

HRESULT Clip::GetWidth(uint32_t* width) {
    return Answer({"RawClip.GetWidth"}, width, [&] { return file_->Clip().width; });
}

HRESULT Clip::GetHeight(uint32_t* height) {
    return Answer({"RawClip.GetHeight"}, height, [&] { return file_->Clip().height; });
}

HRESULT Clip::GetFrameRate(float* rate) {
    return Answer({"RawClip.GetFrameRate"}, rate, [&] { return file_->Clip().frameRate; });
}

HRESULT Clip::GetFrameCount(uint64_t* count) {
    return Answer({"RawClip.GetFrameCount"}, count, [&] { return file_->FrameCount(); });
}

HRESULT Clip::GetTimecode(uint64_t frame, BSTR* timecode) {
    return Answer({"RawClip.GetTimecode", Subject::OfNumber(frame)}, timecode, [&] {
        RequireArgument(frame < file_->FrameCount());
        return ToVariant(TimecodeText(file_->Timecode(frame))).bstrVal;
    });
}

HRESULT Clip::GetMetadataIterator(RawMetadataIterator** iterator) {
    return Answer({"RawClip.GetMetadataIterator"}, iterator,
                  [&] { return new MetadataIterator(file_->Clip().metadata); });
}

HRESULT Clip::GetCameraType(BSTR* camera) {
    return Answer({"RawClip.GetCameraType"}, camera, [&] { return ToVariant(file_->Clip().camera).bstrVal; });
}

HRESULT Clip::CloneClipSettings(RawClipSettings** settings) {
    return Answer({"RawClip.CloneClipSettings"}, settings, [&] { return new ClipSettingsObject(file_); });
}

HRESULT Clip::GetBitstreamBound(uint32_t* size) {
    return Answer({"RawClipReader.GetBitstreamBound"}, size, [&] { return file_->BitstreamBound(); });
}

HRESULT Clip::CreateReadJob(uint64_t frame, void* buffer, uint32_t size, RawJob** job) {
    return Answer({"RawClipReader.CreateReadJob", Subject::OfNumber(frame)}, job, [&] {
        RequireArgument(buffer != nullptr && frame < file_->FrameCount());
        return new ReadJob(queue_, file_, frame, {static_cast<uint8_t*>(buffer), size});
    });
}

} // namespace rawsdk
