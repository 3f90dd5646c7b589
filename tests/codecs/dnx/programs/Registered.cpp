// Loads the module and says on standard error what of the DNx back-end is registered, and that all others are
// there: back-ends register once for a process.

#include "framework/CxAVCodecRegistry.h"

#include <algorithm>
#include <cstdio>

int main() {
    std::vector<CxEncoderInfo> rows;
    CxAVCodecRegistry::ListAllCodecs(true, rows);
    const auto dnx =
        std::ranges::count_if(rows, [](const CxEncoderInfo& row) { return row.name.starts_with("DNx"); });
    std::fprintf(stderr, "%d DNx encoders, %d and %d decoders\n", static_cast<int>(dnx),
                 CxAVCodecRegistry::CanCreateDecoder(FourCC("AVdn")),
                 CxAVCodecRegistry::CanCreateDecoder(FourCC("AVdh")));
    if (CxAVCodecRegistry::CanCreateDecoder(FourCC("apch")) &&
        CxAVCodecRegistry::CanCreateDecoder(FourCC("v210")))
        std::fputs("others are there\n", stderr);
}
