#include "codecs/DNXMetadata.h"

#include "codecs/DNXRecords.h"
#include "codecs/DNXTables.h"
#include "framework/ImageMetadata.h"
#include "host/CxID.h"

namespace {

const char* SamplingName(uint32_t sampling) {
    switch (sampling) {
    case dnxSampling444: return "444";
    case dnxSampling420: return "420";
    default: return "422";
    }
}

const char* DepthName(uint32_t depth) {
    switch (depth) {
    case 10: return "10bit";
    case 12: return "12bit";
    default: return "8bit";
    }
}

const char* AlphaName(const DNXFrameInformation& information) {
    if (information.alpha == 0) return "No";
    return information.losslessAlpha != 0 ? "Lossless" : "Yes";
}

} // namespace

void WriteDNXMetadata(const DNXFrameInformation& information, Image& image) {
    ScriptVal& metadata = MetadataTable(image);
    metadata.FindKey("Compression") = CxID(FindDNXCompression(information.compressionId).name, true);
    metadata.FindKey("SubSampling") = SamplingName(information.sampling);
    metadata.FindKey("ColorFormat") = information.colorFormat == dnxColorRgb ? "RGB" : "YCbCr";
    metadata.FindKey("Depth") = DepthName(information.depth);
    metadata.FindKey("AlphaChannel") = AlphaName(information);
}
