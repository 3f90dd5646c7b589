#include "rawsdk/Object.h"

#include "rawsdk/Control.h"

namespace rawsdk {

namespace {

struct Name {
    IID identifier;
    std::string_view text;
};
constexpr Name names[] = {
    {IID_IUnknown, "IUnknown"},
    {IID_RawConstants, "RawConstants"},
    {IID_RawExtras, "RawExtras"},
    {IID_RawPipelineSetup, "RawPipelineSetup"},
    {IID_RawManualFlowCpu, "RawManualFlow cpub"},
    {IID_RawManualFlowDevice, "RawManualFlow"},
    {IID_RawClipReader, "RawClipReader"},
    {IID_RawFrameSize, "RawFrameSize"},
    {IID_Control, "Control"},
};

} // namespace

std::atomic<uint64_t> liveObjects = 0;

std::string_view NameOf(REFIID identifier) {
    for (const Name& name : names)
        if (name.identifier == identifier) return name.text;
    return "unknown";
}

} // namespace rawsdk
