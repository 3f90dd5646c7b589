#include "mediafoundation/Transform.h"

#include <algorithm>

namespace mediafoundation {

namespace {

constexpr DWORD theStream = 0;

template <typename... Pointers>
bool AnyNull(Pointers... pointers) {
    return ((pointers == nullptr) || ...);
}

} // namespace

HRESULT Transform::GetStreamLimits(DWORD* leastInputs, DWORD* mostInputs, DWORD* leastOutputs,
                                   DWORD* mostOutputs) {
    if (AnyNull(leastInputs, mostInputs, leastOutputs, mostOutputs)) return E_POINTER;
    *leastInputs = *mostInputs = *leastOutputs = *mostOutputs = 1;
    return S_OK;
}

HRESULT Transform::GetStreamCount(DWORD* inputs, DWORD* outputs) {
    if (AnyNull(inputs, outputs)) return E_POINTER;
    *inputs = *outputs = 1;
    return S_OK;
}

HRESULT Transform::GetInputStreamInfo(DWORD stream, MFT_INPUT_STREAM_INFO* information) {
    if (information == nullptr) return E_POINTER;
    if (stream != theStream) return MF_E_INVALIDSTREAMNUMBER;
    *information = {};
    return S_OK;
}

HRESULT Transform::GetOutputStreamInfo(DWORD stream, MFT_OUTPUT_STREAM_INFO* information) {
    if (information == nullptr) return E_POINTER;
    if (stream != theStream) return MF_E_INVALIDSTREAMNUMBER;
    *information = {};
    information->dwFlags = MFT_OUTPUT_STREAM_WHOLE_SAMPLES | MFT_OUTPUT_STREAM_SINGLE_SAMPLE_PER_BUFFER;
    information->cbSize = OutputBytes();
    return S_OK;
}

HRESULT Transform::GiveAvailableType(Side side, DWORD stream, DWORD index, IMFMediaType** type) {
    if (type == nullptr) return E_POINTER;
    *type = nullptr;
    if (stream != theStream) return MF_E_INVALIDSTREAMNUMBER;
    if (!IsOpen(side)) return MF_E_TRANSFORM_TYPE_NOT_SET;
    return Guarded([&] {
        *type = AvailableType(side, index).release();
        return *type != nullptr ? S_OK : MF_E_NO_MORE_TYPES;
    });
}

HRESULT Transform::GetInputAvailableType(DWORD stream, DWORD index, IMFMediaType** type) {
    return GiveAvailableType(Side::Input, stream, index, type);
}

HRESULT Transform::GetOutputAvailableType(DWORD stream, DWORD index, IMFMediaType** type) {
    return GiveAvailableType(Side::Output, stream, index, type);
}

HRESULT Transform::SetType(Side side, DWORD stream, IMFMediaType* type, DWORD flags) {
    if (stream != theStream) return MF_E_INVALIDSTREAMNUMBER;
    if (type == nullptr || flags != 0) return E_INVALIDARG;
    if (!IsOpen(side)) return MF_E_TRANSFORM_TYPE_NOT_SET;
    return Guarded([&] {
        Held<MediaType> copy = Make<MediaType>(GUID{});
        if (const HRESULT result = PrepareFor(side, *type); FAILED(result)) return result;
        if (const HRESULT result = type->CopyAllItems(copy.get()); FAILED(result)) return result;
        if (side == leading_) Unset(side == Side::Input ? Side::Output : Side::Input);
        TypeOf(side) = std::move(copy);
        return S_OK;
    });
}

HRESULT Transform::SetInputType(DWORD stream, IMFMediaType* type, DWORD flags) {
    return SetType(Side::Input, stream, type, flags);
}

HRESULT Transform::SetOutputType(DWORD stream, IMFMediaType* type, DWORD flags) {
    return SetType(Side::Output, stream, type, flags);
}

HRESULT Transform::GiveCurrentType(Side side, DWORD stream, IMFMediaType** type) {
    if (type == nullptr) return E_POINTER;
    *type = nullptr;
    if (stream != theStream) return MF_E_INVALIDSTREAMNUMBER;
    if (TypeOf(side) == nullptr) return MF_E_TRANSFORM_TYPE_NOT_SET;
    return Guarded([&] {
        Held<MediaType> copy = Make<MediaType>(GUID{});
        const HRESULT result = TypeOf(side)->CopyAllItems(copy.get());
        if (SUCCEEDED(result)) *type = copy.release();
        return result;
    });
}

HRESULT Transform::GetInputCurrentType(DWORD stream, IMFMediaType** type) {
    return GiveCurrentType(Side::Input, stream, type);
}

HRESULT Transform::GetOutputCurrentType(DWORD stream, IMFMediaType** type) {
    return GiveCurrentType(Side::Output, stream, type);
}

HRESULT Transform::GetInputStatus(DWORD stream, DWORD* flags) {
    if (flags == nullptr) return E_POINTER;
    if (stream != theStream) return MF_E_INVALIDSTREAMNUMBER;
    if (!IsSetUp()) return MF_E_TRANSFORM_TYPE_NOT_SET;
    *flags = HasOutput() ? DWORD{0} : DWORD{MFT_INPUT_STATUS_ACCEPT_DATA};
    return S_OK;
}

HRESULT Transform::GetOutputStatus(DWORD* flags) {
    if (flags == nullptr) return E_POINTER;
    if (!IsSetUp()) return MF_E_TRANSFORM_TYPE_NOT_SET;
    *flags = HasOutput() ? DWORD{MFT_OUTPUT_STATUS_SAMPLE_READY} : DWORD{0};
    return S_OK;
}

HRESULT Transform::ProcessMessage(MFT_MESSAGE_TYPE message, ULONG_PTR) {
    return Guarded([&] {
        switch (message) {
        case MFT_MESSAGE_COMMAND_FLUSH: Flush(); return S_OK;
        case MFT_MESSAGE_COMMAND_DRAIN: Drain(); return S_OK;
        case MFT_MESSAGE_SET_D3D_MANAGER: return E_NOTIMPL;
        default: return S_OK;
        }
    });
}

HRESULT Transform::ProcessInput(DWORD stream, IMFSample* sample, DWORD flags) {
    if (stream != theStream) return MF_E_INVALIDSTREAMNUMBER;
    if (sample == nullptr || flags != 0) return E_INVALIDARG;
    if (!IsSetUp()) return MF_E_TRANSFORM_TYPE_NOT_SET;
    if (HasOutput()) return MF_E_NOTACCEPTING;
    return Guarded([&] { return Take(*sample); });
}

HRESULT Transform::ProcessOutput(DWORD flags, DWORD count, MFT_OUTPUT_DATA_BUFFER* outputs, DWORD* status) {
    if (AnyNull(outputs, status)) return E_POINTER;
    if (flags != 0 || count != 1 || outputs[0].pSample == nullptr) return E_INVALIDARG;
    if (outputs[0].dwStreamID != theStream) return MF_E_INVALIDSTREAMNUMBER;
    *status = 0;
    outputs[0].dwStatus = 0;
    outputs[0].pEvents = nullptr;
    if (!IsSetUp()) return MF_E_TRANSFORM_TYPE_NOT_SET;
    if (!HasOutput()) return MF_E_TRANSFORM_NEED_MORE_INPUT;
    return Guarded([&] {
        constexpr DWORD formatChange = 0x100; // MFT_OUTPUT_DATA_BUFFER_FORMAT_CHANGE
        const HRESULT result = Give(*outputs[0].pSample);
        if (result == MF_E_TRANSFORM_STREAM_CHANGE) outputs[0].dwStatus = formatChange;
        return result;
    });
}

HRESULT Transform::IsSupported(const GUID* property) {
    if (property == nullptr) return E_POINTER;
    return KnowsProperty(*property) ? S_OK : E_NOTIMPL;
}

HRESULT Transform::SetValue(const GUID* property, VARIANT* value) {
    if (AnyNull(property, value)) return E_POINTER;
    if (!KnowsProperty(*property)) return E_NOTIMPL;
    if (value->vt != VT_UI4) return E_INVALIDARG;
    return Guarded([&] {
        const auto found = std::ranges::find(properties_, *property, &std::pair<GUID, UINT32>::first);
        if (found != properties_.end()) {
            found->second = value->ulVal;
        } else {
            properties_.emplace_back(*property, value->ulVal);
        }
        return S_OK;
    });
}

UINT32 Transform::Property(REFGUID property, UINT32 otherwise) const {
    const auto found = std::ranges::find(properties_, property, &std::pair<GUID, UINT32>::first);
    return found != properties_.end() ? found->second : otherwise;
}

} // namespace mediafoundation
