// Clips, frames, settings and metadata.

#include "cameraraw/scripted/ScriptedClip.h"

#include "cameraraw/automation/BstrText.h"
#include "cameraraw/scripted/ScriptedJob.h"
#include "cameraraw/scripted/ScriptedObject.h"

#include <cstring>

namespace {

BSTR BstrOf(const std::u16string& text) {
    return SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

std::string CodeText(uint32_t code) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8)
        text += static_cast<char>(code >> shift);
    return text;
}

struct FillValue {
    VARIANT& value;
    void operator()(uint32_t number) const { value.vt = VT_UI4, value.ulVal = number; }
    void operator()(uint16_t number) const { value.vt = VT_UI2, value.uiVal = number; }
    void operator()(int16_t number) const { value.vt = VT_I2, value.iVal = number; }
    void operator()(float number) const { value.vt = VT_R4, value.fltVal = number; }
    void operator()(const std::string& text) const { value.vt = VT_BSTR, value.bstrVal = BstrOfText(text); }
};

HRESULT GiveAttribute(HRESULT entered, uint32_t attribute, VARIANT* value) {
    const auto found = Script().attributes.find(attribute);
    if (entered != S_OK) return entered;
    if (found == Script().attributes.end()) return E_INVALIDARG;
    std::visit(FillValue{*value}, found->second);
    return S_OK;
}

class ScriptedIterator final : public ScriptedObject<RawMetadataIterator> {
public:
    explicit ScriptedIterator(const std::vector<ScriptedEntry>& entries)
        : ScriptedObject("RawMetadataIterator"), entries_(entries) {}

    HRESULT Next() override {
        if (const HRESULT result = Enter("Next"); result != S_OK) return result;
        return ++at_ < entries_.size() ? S_OK : S_FALSE;
    }
    HRESULT GetKey(BSTR* key) override {
        const HRESULT result = Enter("GetKey");
        if (result != S_OK || at_ >= entries_.size()) return result != S_OK ? result : S_FALSE;
        *key = BstrOf(entries_[at_].key);
        return S_OK;
    }
    HRESULT GetData(VARIANT* value) override {
        if (const HRESULT result = Enter("GetData"); result != S_OK) return result;
        entries_[at_].fill(*value);
        return S_OK;
    }

private:
    const std::vector<ScriptedEntry> entries_;
    size_t at_ = 0;
};

class ScriptedLut final : public ScriptedObject<RawLut> {
public:
    explicit ScriptedLut(bool hasTable) : ScriptedObject("RawLut"), hasTable_(hasTable) {}

    HRESULT GetTable(void** table) override {
        const HRESULT result = Enter("GetTable");
        *table = result == S_OK && hasTable_ ? &table_ : nullptr;
        return result;
    }

private:
    bool hasTable_;
    int table_ = 0;
};

class ScriptedClipSettings final : public ScriptedObject<RawClipSettings> {
public:
    ScriptedClipSettings() : ScriptedObject("RawClipSettings") {
        const auto mode = Script().attributes.find(rawLutMode);
        if (mode != Script().attributes.end()) lutMode_ = std::get<std::string>(mode->second);
    }

    HRESULT GetAttribute(uint32_t attribute, VARIANT* value) override {
        return GiveAttribute(Enter("GetAttribute " + CodeText(attribute)), attribute, value);
    }
    HRESULT SetAttribute(uint32_t attribute, VARIANT* value) override {
        const std::string text = TextOfBstr(value->bstrVal);
        const HRESULT result = Enter("SetAttribute " + CodeText(attribute) + "=" + text);
        if (result == S_OK) lutMode_ = text;
        return result;
    }
    HRESULT GetLut(RawLut** lut) override {
        const auto found = Script().luts.find(lutMode_);
        return Give("GetLut", lut, [&]() -> RawLut* {
            return found != Script().luts.end() ? new ScriptedLut(found->second) : nullptr;
        });
    }

private:
    std::string lutMode_ = "Disabled";
};

class ScriptedFrameSettings final : public ScriptedObject<RawFrameSettings> {
public:
    ScriptedFrameSettings() : ScriptedObject("RawFrameSettings") {}

    HRESULT GetAttribute(uint32_t attribute, VARIANT* value) override {
        return GiveAttribute(Enter("GetAttribute " + CodeText(attribute)), attribute, value);
    }
};

class ScriptedFrameSize final : public ScriptedObject<RawFrameSize> {
public:
    ScriptedFrameSize() : ScriptedObject("RawFrameSize") {}

    HRESULT GetProcessedDimensions(uint32_t* width, uint32_t* height) override {
        const HRESULT result = Enter("GetProcessedDimensions");
        if (result != S_OK) return result;
        *width = Script().processedWidth;
        *height = Script().processedHeight;
        return S_OK;
    }
};

class ScriptedFrame final : public ScriptedObject<RawFrame> {
public:
    explicit ScriptedFrame(uint64_t number) : ScriptedObject("RawFrame"), number(number) {}

    HRESULT QueryInterface(REFIID identifier, void** interface) override {
        if (identifier == IID_RawFrameSize)
            return GiveInterface<ScriptedFrameSize>("RawFrameSize", interface);
        return ScriptedObject::QueryInterface(identifier, interface);
    }
    HRESULT GetMetadataIterator(RawMetadataIterator** iterator) override {
        return Give("GetMetadataIterator", iterator,
                    [] { return new ScriptedIterator(Script().frameMetadata); });
    }
    HRESULT CloneFrameSettings(RawFrameSettings** settings) override {
        return Give("CloneFrameSettings", settings, [] { return new ScriptedFrameSettings; });
    }
    HRESULT SetResolutionScale(uint32_t scale) override {
        return Enter("SetResolutionScale " + CodeText(scale));
    }
    HRESULT SetResourceFormat(uint32_t format) override {
        return Enter("SetResourceFormat " + CodeText(format));
    }

    const uint64_t number;
};

class ScriptedReader final : public ScriptedObject<RawClipReader> {
public:
    ScriptedReader() : ScriptedObject("RawClipReader") {}

    HRESULT GetBitstreamBound(uint32_t* size) override {
        *size = Script().bitstreamBound;
        return Enter("GetBitstreamBound");
    }
    HRESULT CreateReadJob(uint64_t frame, void* buffer, uint32_t size, RawJob** job) override {
        return Give("CreateReadJob " + std::to_string(frame), job, [=] {
            return NewScriptedJob("read", [=](IRavenlightRawCallback& callback, RawJob* self) {
                std::memset(buffer, static_cast<int>(frame), size);
                RawFrame* const product = Script().hasFrame ? new ScriptedFrame(frame) : nullptr;
                callback.ReadFinished(self, Script().readResult, product);
                if (product != nullptr) product->Release();
            });
        });
    }
};

class ScriptedClip final : public ScriptedObject<RawClip> {
public:
    ScriptedClip() : ScriptedObject("RawClip") {}

    HRESULT QueryInterface(REFIID identifier, void** interface) override {
        if (identifier == IID_RawClipReader) return GiveInterface<ScriptedReader>("RawClipReader", interface);
        return ScriptedObject::QueryInterface(identifier, interface);
    }
    HRESULT GetWidth(uint32_t* width) override { return Tell("GetWidth", Script().width, width); }
    HRESULT GetHeight(uint32_t* height) override { return Tell("GetHeight", Script().height, height); }
    HRESULT GetFrameRate(float* rate) override { return Tell("GetFrameRate", Script().frameRate, rate); }
    HRESULT GetFrameCount(uint64_t* count) override {
        return Tell("GetFrameCount", Script().frameCount, count);
    }
    HRESULT GetTimecode(uint64_t frame, BSTR* timecode) override {
        std::u16string text = Script().timeCode;
        if (!text.empty()) text += static_cast<char16_t>(u'0' + frame);
        const HRESULT result = Enter("GetTimecode " + std::to_string(frame));
        if (result == S_OK) *timecode = BstrOf(text);
        return result;
    }
    HRESULT GetMetadataIterator(RawMetadataIterator** iterator) override {
        return Give("GetMetadataIterator", iterator,
                    [] { return new ScriptedIterator(Script().clipMetadata); });
    }
    HRESULT GetCameraType(BSTR* camera) override {
        const HRESULT result = Enter("GetCameraType");
        if (result == S_OK) *camera = BstrOf(u"Ravenlight Heron");
        return result;
    }
    HRESULT CloneClipSettings(RawClipSettings** settings) override {
        return Give("CloneClipSettings", settings, [] { return new ScriptedClipSettings; });
    }

private:
    template <typename Value>
    HRESULT Tell(const char* call, Value value, Value* out) const {
        const HRESULT result = Enter(call);
        if (result == S_OK) *out = value;
        return result;
    }
};

class ScriptedPicture final : public ScriptedObject<IUnknown> {
public:
    ScriptedPicture() : ScriptedObject("Picture") {}
};

} // namespace

RawClip* NewScriptedClip() { return new ScriptedClip; }

IUnknown* NewScriptedPicture() { return new ScriptedPicture; }

uint64_t NumberOf(RawFrame* frame) { return static_cast<ScriptedFrame*>(frame)->number; }
