#include "ffmpeg/AvcIntraParameterSets.h"

#include "framework/AvcIntraTables.h"

namespace CxFFMPEG {

std::span<const uint8_t> AvcIntraParameterSets(int32_t width, int32_t fieldOrder) {
    constexpr int32_t progressive = 1;
    switch (width) {
    case 1920:
        if (fieldOrder == progressive) return avcIntraProgressive1920;
        return avcIntraInterlaced1920;
    case 1440: return avcIntraAny1440;
    case 1280: return avcIntraAny1280;
    default: return {};
    }
}

} // namespace CxFFMPEG
