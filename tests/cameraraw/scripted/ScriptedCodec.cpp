// The factory, the codec and its interfaces.

#include "cameraraw/automation/BstrText.h"
#include "cameraraw/scripted/ScriptedClip.h"
#include "cameraraw/scripted/ScriptedJob.h"
#include "cameraraw/scripted/ScriptedObject.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <new>

namespace {

/// Guards what threads enter into the script.
std::mutex& Entering() {
    static auto* const mutex = new std::mutex;
    return *mutex;
}

std::string CodeText(uint32_t code) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8)
        text += static_cast<char>(code >> shift);
    return text;
}

class ScriptedConstants final : public ScriptedObject<RawConstants> {
public:
    ScriptedConstants() : ScriptedObject("RawConstants") {}

    HRESULT GetClipAttributeRange(BSTR camera, uint32_t attribute, VARIANT* minimum, VARIANT* maximum,
                                  bool* readOnly) override {
        return GiveRange("GetClipAttributeRange ", camera, attribute, minimum, maximum, readOnly);
    }
    HRESULT GetAttributeList(BSTR camera, uint32_t attribute, VARIANT* values, uint32_t* count,
                             bool* readOnly) override {
        Script().lastText = TextOfBstr(camera);
        const std::string what = values != nullptr ? " values" : " count";
        if (const HRESULT result = Enter("GetAttributeList " + CodeText(attribute) + what); result != S_OK)
            return result;
        const std::vector<std::string>& names = Script().gamuts;
        for (uint32_t i = 0; values != nullptr && i < *count && i < names.size(); ++i) {
            values[i].vt = VT_BSTR;
            values[i].bstrVal = BstrOfText(names[i]);
        }
        *count = TakeCount().value_or(static_cast<uint32_t>(names.size()));
        *readOnly = true;
        return S_OK;
    }
    HRESULT GetFrameAttributeRange(BSTR camera, uint32_t attribute, VARIANT* minimum, VARIANT* maximum,
                                   bool* readOnly) override {
        return GiveRange("GetFrameAttributeRange ", camera, attribute, minimum, maximum, readOnly);
    }

private:
    static std::optional<uint32_t> TakeCount() {
        std::vector<uint32_t>& counts = Script().listCounts;
        if (counts.empty()) return std::nullopt;
        const uint32_t count = counts.front();
        counts.erase(counts.begin());
        return count;
    }
    HRESULT GiveRange(const std::string& call, BSTR camera, uint32_t attribute, VARIANT* minimum,
                      VARIANT* maximum, bool* readOnly) const {
        Script().lastText = TextOfBstr(camera);
        if (const HRESULT result = Enter(call + CodeText(attribute)); result != S_OK) return result;
        *readOnly = true;
        if (attribute == rawWhiteBalanceKelvin) {
            minimum->vt = maximum->vt = VT_UI4;
            minimum->ulVal = 6000;
            maximum->ulVal = 9000;
        } else if (attribute == rawWhiteBalanceTint) {
            minimum->vt = maximum->vt = VT_I2;
            minimum->iVal = -50;
            maximum->iVal = -10;
        } else {
            minimum->vt = maximum->vt = VT_R4;
            minimum->fltVal = -1.0F;
            maximum->fltVal = 4.0F;
        }
        return S_OK;
    }
};

class ScriptedExtras final : public ScriptedObject<RawExtras> {
public:
    ScriptedExtras() : ScriptedObject("RawExtras") {}
};

class ScriptedSetup final : public ScriptedObject<RawPipelineSetup> {
public:
    ScriptedSetup() : ScriptedObject("RawPipelineSetup") {}

    HRESULT SetPipeline(uint32_t pipeline, void* context, void* queue) override {
        const bool isPlain = context == nullptr && queue == nullptr;
        return Enter("SetPipeline " + CodeText(pipeline) + (isPlain ? "" : " with a device"));
    }
    HRESULT SetPipelineOption(uint32_t option) override {
        return Enter("SetPipelineOption " + std::to_string(option));
    }
};

/// Takes the next result from a list; success from an empty one.
HRESULT TakeResult(std::vector<HRESULT>& results) {
    if (results.empty()) return S_OK;
    const HRESULT result = results.front();
    results.erase(results.begin());
    return result;
}

/// What stands in a frame state.
struct State {
    uint64_t frame;
};

void FillPlanes(uint64_t frame, void* output, uint32_t size) {
    const uint32_t pixels = Script().processedWidth * Script().processedHeight;
    for (uint32_t word = 0; word < size / 2; ++word) {
        const uint16_t sample = ScriptedSample(frame, word / pixels, word % pixels);
        std::memcpy(static_cast<uint8_t*>(output) + size_t{word} * 2, &sample, 2);
    }
}

class ScriptedFlow final : public ScriptedObject<RawManualFlow> {
public:
    ScriptedFlow() : ScriptedObject("RawManualFlow") {}

    HRESULT FillFrameState(RawFrame* frame, RawClipSettings*, RawFrameSettings*, void* state,
                           uint32_t stateSize) override {
        const State known{NumberOf(frame)};
        if (stateSize < sizeof(known)) return E_INVALIDARG;
        std::memset(state, 0, stateSize);
        std::memcpy(state, &known, sizeof(known));
        return Enter("FillFrameState");
    }
    HRESULT GetFrameStateSize(uint32_t* size) override {
        *size = Script().stateSize;
        return Enter("GetFrameStateSize");
    }
    HRESULT GetDecodedSize(void*, uint32_t* size) override {
        *size = Script().decodedSize;
        return Enter("GetDecodedSize");
    }
    HRESULT GetProcessedSize(void*, uint32_t* size) override {
        *size = ProcessedSize();
        return Enter("GetProcessedSize");
    }
    HRESULT CreateDecodeJob(void*, void* bitstream, void* decoded, RawJob** job) override {
        return Give("CreateDecodeJob", job, [=] {
            return NewScriptedJob("decode", [=](IRavenlightRawCallback& callback, RawJob* self) {
                std::fill_n(static_cast<uint8_t*>(decoded), Script().decodedSize,
                            *static_cast<uint8_t*>(bitstream));
                callback.DecodeFinished(self, TakeResult(Script().decodeResults));
            });
        });
    }
    HRESULT CreateProcessJob(void* state, void*, void* processed, void* lutTable, RawJob** job) override {
        Script().lutTable = lutTable;
        return Give("CreateProcessJob", job, [=] {
            return NewScriptedJob("process", [=](IRavenlightRawCallback& callback, RawJob* self) {
                State known = {};
                std::memcpy(&known, state, sizeof(known));
                FillPlanes(known.frame, processed, ProcessedSize());
                IUnknown* const picture = Script().hasPicture ? NewScriptedPicture() : nullptr;
                callback.ProcessFinished(self, TakeResult(Script().processResults), picture);
                if (picture != nullptr) picture->Release();
            });
        });
    }

private:
    static uint32_t ProcessedSize() {
        return Script().processedSize.value_or(Script().processedWidth * Script().processedHeight * 6);
    }
};

class ScriptedCodec final : public ScriptedObject<RawCodec> {
public:
    ScriptedCodec() : ScriptedObject("RawCodec") {}

    HRESULT QueryInterface(REFIID identifier, void** interface) override {
        if (identifier == IID_RawConstants)
            return GiveInterface<ScriptedConstants>("RawConstants", interface);
        if (identifier == IID_RawExtras) return GiveInterface<ScriptedExtras>("RawExtras", interface);
        if (identifier == IID_RawPipelineSetup)
            return GiveInterface<ScriptedSetup>("RawPipelineSetup", interface);
        if (identifier == IID_RawManualFlowCpu)
            return GiveInterface<ScriptedFlow>("RawManualFlow", interface);
        return ScriptedObject::QueryInterface(identifier, interface);
    }
    HRESULT OpenClip(BSTR path, RawClip** clip) override {
        Script().lastText = TextOfBstr(path);
        return Give("OpenClip", clip, NewScriptedClip);
    }
    HRESULT SetCallback(IRavenlightRawCallback* callback) override {
        const HRESULT result = Enter(callback != nullptr ? "SetCallback" : "SetCallback null");
        if (result == S_OK) SetJobCallback(callback);
        return result;
    }
};

class ScriptedFactory final : public ScriptedObject<RawFactory> {
public:
    ScriptedFactory() : ScriptedObject("RawFactory") {}

    HRESULT CreateCodec(RawCodec** codec) override {
        return Give("CreateCodec", codec, [] { return new ScriptedCodec; });
    }
};

} // namespace

ScriptedRaw& Script() {
    static auto* const script = new ScriptedRaw;
    return *script;
}

void ResetScript() {
    JoinThreads();
    Script() = {};
}

namespace {

/// Enters a call, and gives its name; empty without memory.
std::string Note(std::string_view object, std::string_view operation) noexcept {
    try {
        std::string name = std::string(object).append(operation.empty() ? "" : ".").append(operation);
        const std::lock_guard guard(Entering());
        Script().calls.push_back(name);
        return name;
    } catch (const std::bad_alloc&) {
        return {};
    }
}

} // namespace

void NoteEnd(std::string_view object) noexcept {
    try {
        Note(std::string("~").append(object), "");
    } catch (const std::bad_alloc&) {
        // Left out.
    }
}

HRESULT Call(std::string_view object, std::string_view operation) noexcept {
    const std::string name = Note(object, operation);
    const auto failing = Script().failing.find(name);
    if (failing == Script().failing.end() || failing->second == 0) return S_OK;
    --failing->second;
    return Script().nextFailure++;
}

void CountObject(int change) {
    const std::lock_guard guard(Entering());
    Script().objects += change;
}

bool IsGivingNull(std::string_view object, std::string_view operation) {
    const auto& names = Script().givingNull;
    return !names.empty() && names.contains(std::string(object).append(".").append(operation));
}

__attribute__((visibility("default"))) RawFactory* CreateRavenlightRawFactoryInstance() {
    Note("CreateRavenlightRawFactoryInstance", "");
    return Script().hasFactory ? new ScriptedFactory : nullptr;
}
