// Loads the module and says on standard error what of the Media Foundation back-end is registered: back-ends
// register once for a process.

#include "framework/CxAVCodecRegistry.h"

#include <algorithm>
#include <cstdio>

namespace {

void SayFactories(const char* code, uint32_t fourCC) {
    std::fprintf(stderr, "%s:", code);
    for (const CxAbstractCodecFactory* factory : CxAVCodecRegistry::GetDecoderFactories(fourCC))
        std::fprintf(stderr, " %s", factory->GetName().c_str());
    std::fputs("\n", stderr);
}

} // namespace

int main() {
    std::vector<CxEncoderInfo> rows;
    CxAVCodecRegistry::ListAllCodecs(true, rows);
    const auto encoders =
        std::ranges::count_if(rows, [](const CxEncoderInfo& row) { return row.name == "H.264"; });
    SayFactories("avc1", FourCC("avc1"));
    SayFactories("avci", FourCC("avci"));
    std::fprintf(stderr, "%d encoders of H.264\n", static_cast<int>(encoders));
}
