#include "codecs/WMFTransform.h"

#include "codecs/WMFLibrary.h"

namespace CxWMF {

namespace {

/// What was found by MFTEnumEx; released with this.
struct Activates {
    Activates() = default;
    Activates(const Activates&) = delete;
    Activates& operator=(const Activates&) = delete;
    ~Activates() {
        for (UINT32 i = 0; list != nullptr && i < count; ++i)
            if (list[i] != nullptr) list[i]->Release();
        if (list != nullptr) MediaFoundation().CoTaskMemFree(static_cast<void*>(list));
    }
    bool AreNone() const { return list == nullptr || count == 0 || list[0] == nullptr; }

    IMFActivate** list = nullptr;
    UINT32 count = 0;
};

bool HasSubtype(IMFMediaType& type, REFGUID subtype) {
    GUID ownSubtype = {};
    return SUCCEEDED(type.GetGUID(MF_MT_SUBTYPE, &ownSubtype)) && ownSubtype == subtype;
}

/// Whether a type is video of a subtype.
bool IsVideo(IMFMediaType& type, REFGUID subtype) {
    GUID majorType = {};
    return SUCCEEDED(type.GetMajorType(&majorType)) && majorType == MFMediaType_Video &&
           HasSubtype(type, subtype);
}

} // namespace

HRESULT WMFTransform::Find(REFGUID category) {
    constexpr UINT32 flags = MFT_ENUM_FLAG_SYNCMFT | MFT_ENUM_FLAG_LOCALMFT | MFT_ENUM_FLAG_SORTANDFILTER;
    const MFT_REGISTER_TYPE_INFO input = {MFMediaType_Video, inputSubtype};
    const MFT_REGISTER_TYPE_INFO output = {MFMediaType_Video, outputSubtype};
    Activates found;
    const HRESULT result =
        MediaFoundation().MFTEnumEx(category, flags, &input, &output, &found.list, &found.count);
    if (FAILED(result)) return result;
    if (found.AreNone()) return MF_E_TOPO_CODEC_NOT_FOUND;
    return ObtainInterface(
        transform, [&](void** made) { return found.list[0]->ActivateObject(IID_IMFTransform, made); });
}

void WMFTransform::End() {
    if (!IsFound()) return;
    transform->ProcessMessage(MFT_MESSAGE_NOTIFY_END_STREAMING, 0);
    Tell(MFT_MESSAGE_COMMAND_FLUSH);
    Drop();
}

HRESULT WMFTransform::AskForStreams() {
    inputStream = 0;
    outputStream = 0;
    const HRESULT result = transform->GetStreamIDs(1, &inputStream, 1, &outputStream);
    if (result != E_NOTIMPL) return result;
    inputStream = 0;
    outputStream = 0;
    return S_OK;
}

HRESULT WMFTransform::AvailableType(WMFSide side, DWORD index, WMFPointer<IMFMediaType>& type) const {
    return Obtain(type, [&](IMFMediaType** made) {
        return side == WMFSide::Input ? transform->GetInputAvailableType(inputStream, index, made)
                                      : transform->GetOutputAvailableType(outputStream, index, made);
    });
}

HRESULT WMFTransform::FirstType(WMFSide side, TypeTest isWanted, WMFPointer<IMFMediaType>& type) const {
    // A transform that goes on for ever has none.
    constexpr DWORD mostTypes = 1024;
    const GUID& subtype = side == WMFSide::Input ? inputSubtype : outputSubtype;
    HRESULT result = S_OK;
    for (DWORD index = 0; index < mostTypes && result != MF_E_NO_MORE_TYPES; ++index) {
        // A type that can't be had is passed over.
        result = AvailableType(side, index, type);
        if (SUCCEEDED(result) && isWanted(*type, subtype)) return S_OK;
    }
    type.reset();
    return MF_E_NO_MORE_TYPES;
}

HRESULT WMFTransform::FindType(WMFSide side, WMFPointer<IMFMediaType>& type) const {
    return FirstType(side, IsVideo, type);
}

HRESULT WMFTransform::SetType(WMFSide side, IMFMediaType& type) const {
    return side == WMFSide::Input ? transform->SetInputType(inputStream, &type, 0)
                                  : transform->SetOutputType(outputStream, &type, 0);
}

HRESULT WMFTransform::Begin() const {
    DWORD status = 0;
    const HRESULT result = transform->GetInputStatus(inputStream, &status);
    if (FAILED(result)) return result;
    if (status != MFT_INPUT_STATUS_ACCEPT_DATA) return MF_E_NOTACCEPTING;
    return transform->ProcessMessage(MFT_MESSAGE_NOTIFY_BEGIN_STREAMING, 0);
}

HRESULT WMFTransform::Tell(MFT_MESSAGE_TYPE message) const {
    return Twice([&] { return transform->ProcessMessage(message, 0); });
}

HRESULT WMFTransform::Give(IMFSample& sample) const {
    return transform->ProcessInput(inputStream, &sample, 0);
}

HRESULT WMFTransform::OutputSize(DWORD& size) const {
    MFT_OUTPUT_STREAM_INFO information = {};
    const HRESULT result = transform->GetOutputStreamInfo(outputStream, &information);
    size = information.cbSize;
    return result;
}

HRESULT WMFTransform::AskForOutputStatus() const {
    DWORD status = 0;
    return transform->GetOutputStatus(&status);
}

HRESULT WMFTransform::Fill(WMFPointer<IMFSample>& sample) const {
    MFT_OUTPUT_DATA_BUFFER output = {};
    output.dwStreamID = outputStream;
    output.pSample = sample.get();
    DWORD status = 0;
    const HRESULT result = transform->ProcessOutput(0, 1, &output, &status);
    if (output.pEvents != nullptr) reinterpret_cast<IUnknown*>(output.pEvents)->Release();
    // A sample of the transform's own comes with a reference, as everything that is handed out.
    if (output.pSample != sample.get()) sample.reset(output.pSample);
    return SUCCEEDED(result) && sample == nullptr ? E_POINTER : result;
}

void WMFTransform::RenewOutputType() const {
    WMFPointer<IMFMediaType> type;
    // Of what kind of media it is, is not asked again. Kept.
    if (SUCCEEDED(FirstType(WMFSide::Output, HasSubtype, type)))
        Twice([&] { return SetType(WMFSide::Output, *type); });
}

WMFPointer<ICodecAPI> WMFTransform::Properties() const {
    WMFPointer<ICodecAPI> properties;
    ObtainInterface(properties, [&](void** made) { return transform->QueryInterface(IID_ICodecAPI, made); });
    return properties;
}

} // namespace CxWMF
