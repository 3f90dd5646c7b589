#include "codecs/WMFAvcHeaders.h"

#include "framework/AvcIntraTables.h"

namespace CxWMF {

std::span<const uint8_t> AvcHeader(int32_t width) {
    constexpr int32_t full = 1920;
    constexpr int32_t narrow = 1440;
    constexpr int32_t smallest = 1280;
    // Pictures count as progressive whatever the track says, so those of fields get a header that is not
    // theirs. Kept.
    if (width >= full) return avcIntraProgressive1920;
    if (width == narrow) return avcIntraAny1440;
    if (width <= smallest) return avcIntraAny1280;
    return {};
}

} // namespace CxWMF
