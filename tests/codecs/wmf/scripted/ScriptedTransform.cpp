// The transform and its properties.

#include "codecs/WMFPointer.h"
#include "codecs/wmf/scripted/ScriptedObjects.h"

#include <algorithm>
#include <cstdio>
#include <new>

namespace {

std::string Text(LONGLONG number) { return std::to_string(number); }

std::string Hex(const std::vector<uint8_t>& bytes) {
    std::string text;
    for (const uint8_t byte : bytes) {
        char digits[3] = {};
        std::snprintf(digits, sizeof(digits), "%02x", byte);
        text += digits;
    }
    return text;
}

std::vector<uint8_t> ContentOf(IMFSample& sample) {
    const OwnCalls own;
    CxWMF::WMFPointer<IMFMediaBuffer> buffer;
    BYTE* bytes = nullptr;
    DWORD length = 0;
    CxWMF::Obtain(buffer, [&](IMFMediaBuffer** made) { return sample.ConvertToContiguousBuffer(made); });
    buffer->Lock(&bytes, nullptr, &length);
    std::vector<uint8_t> content(bytes, bytes + length);
    buffer->Unlock();
    return content;
}

/// What a sample holds, and its time, which is 0 if it has none.
std::string TextOf(IMFSample& sample, LONGLONG& time) {
    const std::string content = Hex(ContentOf(sample));
    const OwnCalls own;
    LONGLONG duration = 0;
    const bool hasTime = SUCCEEDED(sample.GetSampleTime(&time));
    const bool hasDuration = SUCCEEDED(sample.GetSampleDuration(&duration));
    return content + (hasTime ? " at " + Text(time) : "") + (hasDuration ? " for " + Text(duration) : "");
}

std::string NameOfMessage(MFT_MESSAGE_TYPE message) {
    switch (message) {
    case MFT_MESSAGE_COMMAND_FLUSH: return "FLUSH";
    case MFT_MESSAGE_COMMAND_DRAIN: return "DRAIN";
    case MFT_MESSAGE_NOTIFY_BEGIN_STREAMING: return "BEGIN_STREAMING";
    case MFT_MESSAGE_NOTIFY_END_STREAMING: return "END_STREAMING";
    case MFT_MESSAGE_NOTIFY_END_OF_STREAM: return "END_OF_STREAM";
    default: return "other";
    }
}

class Properties : public Counted<ICodecAPI> {
public:
    HRESULT SetValue(const GUID* property, VARIANT* value) override {
        const std::string kind = value->vt == VT_UI4 ? "" : " of another kind";
        return Enter("SetValue " + NameOf(*property) + "=" + Text(value->ulVal) + kind);
    }

    HRESULT IsSupported(const GUID*) override { return E_NOTIMPL; }
    HRESULT IsModifiable(const GUID*) override { return E_NOTIMPL; }
    HRESULT GetParameterRange(const GUID*, VARIANT*, VARIANT*, VARIANT*) override { return E_NOTIMPL; }
    HRESULT GetParameterValues(const GUID*, VARIANT**, ULONG*) override { return E_NOTIMPL; }
    HRESULT GetDefaultValue(const GUID*, VARIANT*) override { return E_NOTIMPL; }
    HRESULT GetValue(const GUID*, VARIANT*) override { return E_NOTIMPL; }
    HRESULT RegisterForEvent(const GUID*, LONG_PTR) override { return E_NOTIMPL; }
    HRESULT UnregisterForEvent(const GUID*) override { return E_NOTIMPL; }
    HRESULT SetAllDefaults() override { return E_NOTIMPL; }
    HRESULT SetValueWithNotify(const GUID*, VARIANT*, GUID**, ULONG*) override { return E_NOTIMPL; }
    HRESULT SetAllDefaultsWithNotify(GUID**, ULONG*) override { return E_NOTIMPL; }
    HRESULT GetAllSettings(IStream*) override { return E_NOTIMPL; }
    HRESULT SetAllSettings(IStream*) override { return E_NOTIMPL; }
    HRESULT SetAllSettingsWithNotify(IStream*, GUID**, ULONG*) override { return E_NOTIMPL; }
};

class Transform : public Counted<IMFTransform> {
public:
    HRESULT QueryInterface(REFIID interfaceId, void** object) override {
        if (const HRESULT result = Enter("QueryInterface " + NameOf(interfaceId)); FAILED(result))
            return result;
        if (!Script().hasProperties) return E_NOINTERFACE;
        *object = new Properties;
        return S_OK;
    }
    HRESULT GetStreamIDs(DWORD, DWORD* inputs, DWORD, DWORD* outputs) override {
        // E_NOTIMPL promises nothing of what was written.
        *inputs = 7;
        *outputs = 9;
        return Enter("GetStreamIDs");
    }
    HRESULT GetOutputStreamInfo(DWORD stream, MFT_OUTPUT_STREAM_INFO* information) override {
        information->cbSize = Script().outputSize;
        return Enter("GetOutputStreamInfo " + Text(stream));
    }
    HRESULT GetInputAvailableType(DWORD stream, DWORD index, IMFMediaType** type) override {
        const std::vector<GUID>& own = Script().inputTypes;
        return AvailableType("GetInputAvailableType ", own.empty() ? decoderInput : own, stream, index, type);
    }
    HRESULT GetOutputAvailableType(DWORD stream, DWORD index, IMFMediaType** type) override {
        const std::vector<GUID>& own = Script().outputTypes;
        const std::vector<GUID>& types = own.empty() ? decoderOutput : own;
        return AvailableType("GetOutputAvailableType ", types, stream, index, type, Script().isOutputAudio);
    }
    HRESULT SetInputType(DWORD stream, IMFMediaType* type, DWORD) override {
        return SetType("SetInputType ", stream, *type);
    }
    HRESULT SetOutputType(DWORD stream, IMFMediaType* type, DWORD) override {
        const std::vector<uint8_t>& header = Script().sequenceHeader;
        if (!header.empty())
            type->SetBlob(MF_MT_MPEG_SEQUENCE_HEADER, header.data(), static_cast<UINT32>(header.size()));
        return SetType("SetOutputType ", stream, *type);
    }
    HRESULT GetInputStatus(DWORD stream, DWORD* flags) override {
        *flags = Script().inputStatus;
        return Enter("GetInputStatus " + Text(stream));
    }
    HRESULT GetOutputStatus(DWORD*) override { return Enter("GetOutputStatus"); }
    HRESULT ProcessMessage(MFT_MESSAGE_TYPE message, ULONG_PTR parameter) override {
        try {
            const HRESULT result = Enter("ProcessMessage " + NameOfMessage(message) + " " +
                                         Text(static_cast<LONGLONG>(parameter)));
            if (SUCCEEDED(result) && Script().onMessage) Script().onMessage(message);
            return result;
        } catch (const std::bad_alloc&) {
            // Codecs end a transform while a test keeps the heap short.
            return E_OUTOFMEMORY;
        }
    }
    HRESULT ProcessInput(DWORD stream, IMFSample* sample, DWORD flags) override {
        LONGLONG time = 0;
        const HRESULT result = Enter("ProcessInput " + Text(stream) + " " + TextOf(*sample, time) +
                                     (flags != 0 ? " with flags" : ""));
        if (SUCCEEDED(result) && Script().onInput) Script().onInput(time);
        return result;
    }
    HRESULT ProcessOutput(DWORD flags, DWORD count, MFT_OUTPUT_DATA_BUFFER* outputs, DWORD*) override {
        const HRESULT result =
            Enter("ProcessOutput " + Text(flags) + " " + Text(count) + " " + Text(outputs->dwStreamID));
        if (FAILED(result)) return result;
        if (Script().outputs.empty()) return MF_E_TRANSFORM_NEED_MORE_INPUT;
        const MFOutput output = Script().outputs.front();
        Script().outputs.pop_front();
        if (output.result == MF_E_TRANSFORM_STREAM_CHANGE && Script().changedOutputSize != 0)
            Script().outputSize = Script().changedOutputSize;
        Replace(outputs->pSample, output.sample);
        if (SUCCEEDED(output.result) && outputs->pSample != nullptr) Fill(*outputs->pSample, output);
        return output.result;
    }

    HRESULT GetStreamLimits(DWORD*, DWORD*, DWORD*, DWORD*) override { return E_NOTIMPL; }
    HRESULT GetStreamCount(DWORD*, DWORD*) override { return E_NOTIMPL; }
    HRESULT GetInputStreamInfo(DWORD, MFT_INPUT_STREAM_INFO*) override { return E_NOTIMPL; }
    HRESULT GetAttributes(IMFAttributes**) override { return E_NOTIMPL; }
    HRESULT GetInputStreamAttributes(DWORD, IMFAttributes**) override { return E_NOTIMPL; }
    HRESULT GetOutputStreamAttributes(DWORD, IMFAttributes**) override { return E_NOTIMPL; }
    HRESULT DeleteInputStream(DWORD) override { return E_NOTIMPL; }
    HRESULT AddInputStreams(DWORD, DWORD*) override { return E_NOTIMPL; }
    HRESULT GetInputCurrentType(DWORD, IMFMediaType**) override { return E_NOTIMPL; }
    HRESULT GetOutputCurrentType(DWORD, IMFMediaType**) override { return E_NOTIMPL; }
    HRESULT SetOutputBounds(LONGLONG, LONGLONG) override { return E_NOTIMPL; }
    HRESULT ProcessEvent(DWORD, IMFMediaEvent*) override { return E_NOTIMPL; }

private:
    /// The first type is of audio, and so are all if `isAudio`: none that is looked for, whatever its
    /// subtype.
    static HRESULT AvailableType(const char* function, const std::vector<GUID>& types, DWORD stream,
                                 DWORD index, IMFMediaType** type, bool isAudio = false) {
        const HRESULT result = Enter(function + Text(stream) + " " + Text(index));
        if (FAILED(result)) return result;
        if (Script().typesNeverEnd) {
            *type = new MediaType(MFMediaType_Video, GUID{});
            return S_OK;
        }
        if (index > types.size()) return MF_E_NO_MORE_TYPES;
        const GUID audio = {0x73647561, 0, 0x10, {0x80, 0, 0, 0xaa, 0, 0x38, 0x9b, 0x71}};
        const bool isVideo = index != 0 && !isAudio;
        *type = new MediaType(isVideo ? MFMediaType_Video : audio, types[std::max(index, DWORD{1}) - 1]);
        return S_OK;
    }
    static HRESULT SetType(const char* function, DWORD stream, IMFMediaType& type) {
        GUID subtype = {};
        type.GetGUID(MF_MT_SUBTYPE, &subtype);
        return Enter(function + Text(stream) + " " + NameOf(subtype));
    }
    static void Replace(IMFSample*& sample, MFSample kind) {
        if (kind == MFSample::Given) return;
        sample = nullptr;
        if (kind == MFSample::None) return;
        const OwnCalls own;
        IMFMediaBuffer* buffer = nullptr;
        MFCreateSample(&sample);
        MFCreateMemoryBuffer(Script().outputSize, &buffer);
        sample->AddBuffer(buffer);
        buffer->Release();
    }
    static void Fill(IMFSample& sample, const MFOutput& output) {
        const OwnCalls own;
        if (output.time) sample.SetSampleTime(*output.time);
        if (output.duration) sample.SetSampleDuration(*output.duration);
        if (output.cleanPoint) sample.SetUINT32(MFSampleExtension_CleanPoint, *output.cleanPoint);
        IMFMediaBuffer* buffer = nullptr;
        BYTE* bytes = nullptr;
        DWORD capacity = 0;
        sample.ConvertToContiguousBuffer(&buffer);
        buffer->Lock(&bytes, &capacity, nullptr);
        const size_t size = std::min<size_t>(capacity, output.bytes.size());
        std::copy_n(output.bytes.begin(), size, bytes);
        buffer->Unlock();
        buffer->SetCurrentLength(static_cast<DWORD>(size));
        buffer->Release();
    }

    static inline const std::vector<GUID> decoderInput = {MFVideoFormat_H264};
    static inline const std::vector<GUID> decoderOutput = {GUID{1, 2, 3, {}}, MFVideoFormat_YUY2};
};

} // namespace

IMFTransform* NewTransform() { return new Transform; }
