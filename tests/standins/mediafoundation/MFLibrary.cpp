#include "standins/mediafoundation/MFLibrary.h"

#include "standins/LoadedLibrary.h"

#include <cstring>
#include <functional>

namespace {

MFLibrary LoadLibrary() {
    const LoadedLibrary library(CORVEX_MEDIA_FOUNDATION_LIBRARY);
    MFLibrary found = {};
    library.Find("MFTEnumEx", found.EnumTransforms);
    library.Find("MFCreateMemoryBuffer", found.CreateMemoryBuffer);
    library.Find("MFCreateSample", found.CreateSample);
    library.Find("CoInitializeEx", found.CoInitializeEx);
    library.Find("CoUninitialize", found.CoUninitialize);
    library.Find("CoTaskMemFree", found.CoTaskMemFree);
    library.Find("DllCanUnloadNow", found.DllCanUnloadNow);
    return found;
}

using GetType = std::function<HRESULT(DWORD index, IMFMediaType** type)>;

Ptr<IMFMediaType> TypeWith(REFGUID subtype, const GetType& get) {
    IMFMediaType* found = nullptr;
    for (DWORD index = 0; SUCCEEDED(get(index, &found)); ++index) {
        Ptr<IMFMediaType> type(found);
        if (SubtypeOf(*type) == subtype) return type;
    }
    return nullptr;
}

std::vector<GUID> SubtypesOf(const GetType& get) {
    std::vector<GUID> subtypes;
    IMFMediaType* found = nullptr;
    for (DWORD index = 0; SUCCEEDED(get(index, &found)); ++index)
        subtypes.push_back(SubtypeOf(*Ptr<IMFMediaType>(found)));
    return subtypes;
}

GetType OutputsOf(IMFTransform& transform) {
    return [&](DWORD index, IMFMediaType** type) { return transform.GetOutputAvailableType(0, index, type); };
}

GetType InputsOf(IMFTransform& transform) {
    return [&](DWORD index, IMFMediaType** type) { return transform.GetInputAvailableType(0, index, type); };
}

} // namespace

const MFLibrary& MF() {
    static const MFLibrary library = LoadLibrary();
    return library;
}

GUID Subtype(const char (&code)[5]) {
    GUID subtype = MFMediaType_Video;
    std::memcpy(&subtype.Data1, code, 4);
    return subtype;
}

std::optional<uint32_t> NumberOf(IMFAttributes& attributes, REFGUID key) {
    UINT32 value = 0;
    if (FAILED(attributes.GetUINT32(key, &value))) return std::nullopt;
    return value;
}

std::optional<uint64_t> PairOf(IMFAttributes& attributes, REFGUID key) {
    UINT64 value = 0;
    if (FAILED(attributes.GetUINT64(key, &value))) return std::nullopt;
    return value;
}

Bytes BlobOf(IMFAttributes& attributes, REFGUID key) {
    UINT32 size = 0;
    if (FAILED(attributes.GetBlobSize(key, &size))) return {};
    Bytes blob(size);
    if (FAILED(attributes.GetBlob(key, blob.data(), size, nullptr))) return {};
    return blob;
}

GUID SubtypeOf(IMFMediaType& type) {
    GUID subtype = {};
    type.GetGUID(MF_MT_SUBTYPE, &subtype);
    return subtype;
}

Ptr<IMFMediaBuffer> NewBuffer(DWORD capacity) {
    IMFMediaBuffer* buffer = nullptr;
    MF().CreateMemoryBuffer(capacity, &buffer);
    return Ptr<IMFMediaBuffer>(buffer);
}

Ptr<IMFSample> NewSample() {
    IMFSample* sample = nullptr;
    MF().CreateSample(&sample);
    return Ptr<IMFSample>(sample);
}

Ptr<IMFSample> SampleOf(const TimedBytes& timed) {
    const auto size = static_cast<DWORD>(timed.bytes.size());
    const Ptr<IMFMediaBuffer> buffer = NewBuffer(size);
    BYTE* bytes = nullptr;
    buffer->Lock(&bytes, nullptr, nullptr);
    std::copy(timed.bytes.begin(), timed.bytes.end(), bytes);
    buffer->Unlock();
    buffer->SetCurrentLength(size);
    Ptr<IMFSample> sample = NewSample();
    sample->AddBuffer(buffer.get());
    if (timed.time) sample->SetSampleTime(*timed.time);
    if (timed.duration) sample->SetSampleDuration(*timed.duration);
    return sample;
}

TimedBytes ContentOf(IMFSample& sample) {
    TimedBytes content;
    LONGLONG value = 0;
    if (SUCCEEDED(sample.GetSampleTime(&value))) content.time = value;
    if (SUCCEEDED(sample.GetSampleDuration(&value))) content.duration = value;
    content.isCleanPoint = NumberOf(sample, MFSampleExtension_CleanPoint) == 1u;
    IMFMediaBuffer* found = nullptr;
    if (FAILED(sample.ConvertToContiguousBuffer(&found))) return content;
    const Ptr<IMFMediaBuffer> buffer(found);
    BYTE* bytes = nullptr;
    DWORD length = 0;
    buffer->Lock(&bytes, nullptr, &length);
    content.bytes.assign(bytes, bytes + length);
    buffer->Unlock();
    return content;
}

std::vector<Ptr<IMFActivate>> FindTransforms(REFGUID category, UINT32 flags,
                                             const MFT_REGISTER_TYPE_INFO* input,
                                             const MFT_REGISTER_TYPE_INFO* output) {
    IMFActivate** list = nullptr;
    UINT32 count = 0;
    std::vector<Ptr<IMFActivate>> found;
    if (FAILED(MF().EnumTransforms(category, flags, input, output, &list, &count))) return found;
    for (UINT32 i = 0; i < count; ++i)
        found.emplace_back(list[i]);
    MF().CoTaskMemFree(list);
    return found;
}

Ptr<IMFTransform> NewTransform(REFGUID category) {
    const auto found = FindTransforms(category, MFT_ENUM_FLAG_SYNCMFT, nullptr, nullptr);
    void* transform = nullptr;
    if (!found.empty()) found.front()->ActivateObject(IID_IMFTransform, &transform);
    return Ptr<IMFTransform>(static_cast<IMFTransform*>(transform));
}

Ptr<IMFMediaType> InputTypeOf(IMFTransform& transform, REFGUID subtype) {
    return TypeWith(subtype, InputsOf(transform));
}

Ptr<IMFMediaType> OutputTypeOf(IMFTransform& transform, REFGUID subtype) {
    return TypeWith(subtype, OutputsOf(transform));
}

std::vector<GUID> OutputSubtypesOf(IMFTransform& transform) { return SubtypesOf(OutputsOf(transform)); }

std::vector<GUID> InputSubtypesOf(IMFTransform& transform) { return SubtypesOf(InputsOf(transform)); }

HRESULT Feed(IMFTransform& transform, const TimedBytes& timed) {
    return transform.ProcessInput(0, SampleOf(timed).get(), 0);
}

DWORD OutputBytesOf(IMFTransform& transform) {
    MFT_OUTPUT_STREAM_INFO information = {};
    transform.GetOutputStreamInfo(0, &information);
    return information.cbSize;
}

HRESULT TakeOne(IMFTransform& transform, TimedBytes& output) {
    const Ptr<IMFSample> sample = NewSample();
    sample->AddBuffer(NewBuffer(OutputBytesOf(transform)).get());
    MFT_OUTPUT_DATA_BUFFER buffer = {};
    buffer.pSample = sample.get();
    DWORD status = 0;
    const HRESULT result = transform.ProcessOutput(0, 1, &buffer, &status);
    if (SUCCEEDED(result)) output = ContentOf(*sample);
    return result;
}

std::vector<TimedBytes> TakeAll(IMFTransform& transform) {
    std::vector<TimedBytes> all;
    TimedBytes output;
    while (SUCCEEDED(TakeOne(transform, output)))
        all.push_back(output);
    return all;
}

HRESULT Tell(IMFTransform& transform, MFT_MESSAGE_TYPE message) {
    return transform.ProcessMessage(message, 0);
}
