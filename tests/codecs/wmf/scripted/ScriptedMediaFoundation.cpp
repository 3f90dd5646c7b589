// The functions of the library, its samples and its buffers.

#include "codecs/wmf/scripted/ScriptedMediaFoundation.h"

#include "codecs/wmf/scripted/ScriptedObjects.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

MFScript& Script() {
    static auto* const script = new MFScript;
    return *script;
}

HRESULT Enter(const std::string& call) {
    Script().calls.push_back(call);
    const auto next = Script().results.find(call.substr(0, call.find(' ')));
    if (next == Script().results.end() || next->second.empty()) return S_OK;
    const HRESULT result = next->second.front();
    next->second.pop_front();
    return result;
}

std::string NameOf(REFGUID identifier) {
    static const std::pair<GUID, const char*> names[] = {
        {MFT_CATEGORY_VIDEO_DECODER, "decoder"},
        {MFT_CATEGORY_VIDEO_ENCODER, "encoder"},
        {MFMediaType_Video, "video"},
        {MFVideoFormat_H264, "H264"},
        {MFVideoFormat_YUY2, "YUY2"},
        {MF_MT_FRAME_SIZE, "FRAME_SIZE"},
        {MF_MT_FRAME_RATE, "FRAME_RATE"},
        {MF_MT_PIXEL_ASPECT_RATIO, "PIXEL_ASPECT_RATIO"},
        {MF_MT_INTERLACE_MODE, "INTERLACE_MODE"},
        {MF_MT_AVG_BITRATE, "AVG_BITRATE"},
        {MF_MT_MAX_KEYFRAME_SPACING, "MAX_KEYFRAME_SPACING"},
        {MF_MT_MPEG2_PROFILE, "MPEG2_PROFILE"},
        {MF_MT_MPEG_SEQUENCE_HEADER, "MPEG_SEQUENCE_HEADER"},
        {IID_IMFTransform, "IMFTransform"},
        {IID_ICodecAPI, "ICodecAPI"},
    };
    for (const auto& [known, name] : names)
        if (known == identifier) return name;
    // Others by their first number.
    char text[9] = {};
    std::snprintf(text, sizeof(text), "%08x", static_cast<unsigned>(identifier.Data1));
    return text;
}

namespace {

class Buffer : public Counted<IMFMediaBuffer> {
public:
    explicit Buffer(DWORD capacity) : bytes(new BYTE[capacity]), size(capacity) {
        // What was in the memory before.
        std::fill_n(bytes.get(), size, BYTE{0xcd});
    }

    HRESULT Lock(BYTE** data, DWORD* capacity, DWORD* filled) override {
        if (const HRESULT result = Enter("Lock"); FAILED(result)) return result;
        *data = bytes.get();
        if (capacity != nullptr) *capacity = std::min(size, Script().mostLocked);
        if (filled != nullptr) *filled = length;
        return S_OK;
    }
    HRESULT Unlock() override { return Enter("Unlock"); }
    HRESULT GetCurrentLength(DWORD* filled) override {
        *filled = length;
        return Enter("GetCurrentLength");
    }
    ULONG Release() override {
        Enter("Release buffer");
        return Counted::Release();
    }
    HRESULT SetCurrentLength(DWORD filled) override {
        if (const HRESULT result = Enter("SetCurrentLength " + std::to_string(filled)); FAILED(result))
            return result;
        length = filled;
        return S_OK;
    }
    HRESULT GetMaxLength(DWORD* capacity) override {
        *capacity = size;
        return S_OK;
    }

private:
    std::unique_ptr<BYTE[]> bytes; ///< of exactly the size, so that a byte too many is seen
    DWORD size;
    DWORD length = 0;
};

class Sample : public Attributes<IMFSample> {
public:
    ~Sample() override {
        const OwnCalls own;
        if (buffer != nullptr) buffer->Release();
    }

    ULONG Release() override {
        Enter("Release sample");
        return Counted::Release();
    }
    HRESULT GetSampleTime(LONGLONG* value) override {
        return Give("GetSampleTime", time, MF_E_NO_SAMPLE_TIMESTAMP, value);
    }
    HRESULT SetSampleTime(LONGLONG value) override {
        time = value;
        return S_OK;
    }
    HRESULT GetSampleDuration(LONGLONG* value) override {
        return Give("GetSampleDuration", duration, MF_E_NO_SAMPLE_DURATION, value);
    }
    HRESULT SetSampleDuration(LONGLONG value) override {
        duration = value;
        return S_OK;
    }
    HRESULT ConvertToContiguousBuffer(IMFMediaBuffer** contiguous) override {
        if (const HRESULT result = Enter("ConvertToContiguousBuffer"); FAILED(result)) return result;
        if (Script().empty.contains("ConvertToContiguousBuffer")) return S_OK;
        buffer->AddRef();
        *contiguous = buffer;
        return S_OK;
    }
    HRESULT AddBuffer(IMFMediaBuffer* added) override {
        if (const HRESULT result = Enter("AddBuffer"); FAILED(result)) return result;
        added->AddRef();
        buffer = added;
        return S_OK;
    }

    HRESULT GetSampleFlags(DWORD*) override { return E_NOTIMPL; }
    HRESULT SetSampleFlags(DWORD) override { return E_NOTIMPL; }
    HRESULT GetBufferCount(DWORD*) override { return E_NOTIMPL; }
    HRESULT GetBufferByIndex(DWORD, IMFMediaBuffer**) override { return E_NOTIMPL; }
    HRESULT RemoveBufferByIndex(DWORD) override { return E_NOTIMPL; }
    HRESULT RemoveAllBuffers() override { return E_NOTIMPL; }
    HRESULT GetTotalLength(DWORD*) override { return E_NOTIMPL; }
    HRESULT CopyToBuffer(IMFMediaBuffer*) override { return E_NOTIMPL; }

private:
    static HRESULT Give(const char* function, const std::optional<LONGLONG>& held, HRESULT missing,
                        LONGLONG* value) {
        if (const HRESULT result = Enter(function); FAILED(result)) return result;
        if (!held) return missing;
        *value = *held;
        return S_OK;
    }

    IMFMediaBuffer* buffer = nullptr;
    std::optional<LONGLONG> time;
    std::optional<LONGLONG> duration;
};

class Activate : public Attributes<IMFActivate> {
public:
    HRESULT ActivateObject(REFIID interfaceId, void** object) override {
        const HRESULT result = Enter("ActivateObject " + NameOf(interfaceId));
        if (SUCCEEDED(result) && !Script().empty.contains("ActivateObject")) *object = NewTransform();
        return result;
    }
    HRESULT ShutdownObject() override { return E_NOTIMPL; }
    HRESULT DetachObject() override { return E_NOTIMPL; }
};

} // namespace

HRESULT MFTEnumEx(GUID category, UINT32 flags, const MFT_REGISTER_TYPE_INFO* input,
                  const MFT_REGISTER_TYPE_INFO* output, IMFActivate*** activates, UINT32* count) {
    const HRESULT result = Enter("MFTEnumEx " + NameOf(category) + " " + std::to_string(flags) + " " +
                                 NameOf(input->guidMajorType) + " " + NameOf(input->guidSubtype) + " " +
                                 NameOf(output->guidMajorType) + " " + NameOf(output->guidSubtype));
    if (FAILED(result) || !Script().hasTransform) return result;
    // Of several the first is taken.
    std::unique_ptr<Activate> made[] = {std::make_unique<Activate>(), std::make_unique<Activate>(),
                                        std::make_unique<Activate>()};
    *activates = new IMFActivate*[std::size(made)];
    *count = std::size(made);
    std::ranges::transform(made, *activates, [](auto& one) { return one.release(); });
    ++Script().arrays;
    return result;
}

HRESULT MFCreateMemoryBuffer(DWORD capacity, IMFMediaBuffer** buffer) {
    const HRESULT result = Enter("MFCreateMemoryBuffer " + std::to_string(capacity));
    if (SUCCEEDED(result) && !Script().empty.contains("MFCreateMemoryBuffer")) *buffer = new Buffer(capacity);
    return result;
}

HRESULT MFCreateSample(IMFSample** sample) {
    const HRESULT result = Enter("MFCreateSample");
    if (SUCCEEDED(result) && !Script().empty.contains("MFCreateSample")) *sample = new Sample;
    return result;
}

HRESULT CoInitializeEx(void*, DWORD flags) {
    const HRESULT result = Enter("CoInitializeEx " + std::to_string(flags));
    if (SUCCEEDED(result)) ++Script().started;
    return result;
}

void CoUninitialize() {
    Enter("CoUninitialize");
    --Script().started;
}

void CoTaskMemFree(void* memory) {
    delete[] static_cast<IMFActivate**>(memory);
    --Script().arrays;
}
