#include "media/ProResTags.h"

#include "prores/PrxColorCoefficients.h"
#include "prores/PrxFormats.h"

#include <algorithm>
#include <array>

extern "C" {
#include <libavutil/pixfmt.h>
}

namespace {

// Places in a frame: its size and tag, then the frame header (SMPTE RDD 36, 5.1 and 5.1.1).
constexpr size_t tagPlace = 4;
constexpr size_t headerSizePlace = 8;
constexpr size_t primariesPlace = 22;
constexpr size_t transferPlace = 23;
constexpr size_t leastHeaderSize = 20;

constexpr uint8_t notTold = 2;

uint8_t PrimariesCode(int primaries) {
    switch (primaries) {
    case AVCOL_PRI_BT709:
    case AVCOL_PRI_BT470BG:
    case AVCOL_PRI_SMPTE170M:
    case AVCOL_PRI_BT2020:
    case AVCOL_PRI_SMPTE431:
    case AVCOL_PRI_SMPTE432: return static_cast<uint8_t>(primaries); // the numbers are the same
    default: return notTold;
    }
}

uint8_t TransferCode(int transfer) {
    switch (transfer) {
    case AVCOL_TRC_BT709:
    case AVCOL_TRC_SMPTE170M:
    case AVCOL_TRC_BT2020_10:
    case AVCOL_TRC_BT2020_12: return AVCOL_TRC_BT709; // one curve, to which RDD 36 gives one code
    case AVCOL_TRC_SMPTE2084:
    case AVCOL_TRC_ARIB_STD_B67: return static_cast<uint8_t>(transfer);
    default: return notTold;
    }
}

bool HasFrameHeader(std::span<const uint8_t> frame) {
    constexpr std::array<uint8_t, 4> tag = {'i', 'c', 'p', 'f'};
    if (frame.size() < headerSizePlace + leastHeaderSize) return false;
    if (!std::equal(tag.begin(), tag.end(), frame.begin() + tagPlace)) return false;
    return (frame[headerSizePlace] << 8 | frame[headerSizePlace + 1]) >= int{leastHeaderSize};
}

} // namespace

bool IsProRes(uint32_t fourCC) { return PrxIsCodec(fourCC); }

int ProResMatrix(int height) { return PrxColorMatrixFor(notTold, static_cast<uint32_t>(height)); }

void TagProResFrame(const MovieTrackSettings& settings, std::span<uint8_t> frame) {
    if (!HasFrameHeader(frame)) return;
    frame[primariesPlace] = PrimariesCode(settings.colorPrimaries);
    frame[transferPlace] = TransferCode(settings.colorTransfer);
}
