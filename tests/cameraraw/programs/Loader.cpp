// Has the module inside and opens a clip by the class that the host finds for it, twice, and with a context.
// Says on standard output how that went, and that the module's codecs are there: the SDK is looked for once
// in a process.

#include "cameraraw/VrelDecoderContext.h"
#include "framework/CxAVCodecRegistry.h"
#include "host/ImageFormat.h"
#include "host/Registry.h"

#include <cstdio>
#include <memory>

namespace {

bool OpensClip() {
    const std::vector<Registry*> formats = Registry::FormatsForExtension(".vrel");
    if (formats.empty()) return false;
    const std::unique_ptr<Object> object = formats.front()->Create(ScriptVal(), TagList());
    auto* const format = dynamic_cast<ImageFormat*>(object.get());
    TagList tags;
    return format != nullptr &&
           format->LoadHeaderTagList(CxID(CLSID_DataType_Image, true), "clip.vrel", tags);
}

} // namespace

int main() {
    for (int i = 0; i < 2; ++i)
        std::puts(OpensClip() ? "opened" : "refused");
    VrelDecoderContext context;
    CxAlignedBuffer output;
    std::puts(context.OpenClip("clip.vrel") && context.DecodeFrame(0, output) ? "decoded" : "refused");
    if (CxAVCodecRegistry::CanCreateDecoder(FourCC("apch"))) std::puts("others are there");
}
