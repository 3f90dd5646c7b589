#include "prores/PrxSliceHeader.h"

#include <algorithm>

int32_t PrxQuantiserOf(uint32_t quantIndex) {
    const auto index = static_cast<int32_t>(std::clamp<uint32_t>(quantIndex, 1, 224));
    return index <= 128 ? index : index * 4 - 384;
}

namespace {

/// The size that the header's first byte gives.
uint32_t HeaderSizeOf(uint8_t firstByte) {
    // 0x7F means 8 bytes, although the size field in its upper bits is 15. Kept.
    return firstByte == 0x7F ? 8 : firstByte >> 3;
}

} // namespace

uint32_t PrxReadSliceHeader(const PrxBufferPiece& slice, uint32_t sliceSize, bool streamHasAlpha,
                            PrxSliceHeader* header) {
    const uint32_t headerSize = HeaderSizeOf(PrxByteAt(slice, 0));
    // Sizes too small for the fields are taken as they stand, except 0, which is the result of a refusal.
    // Kept.
    if (headerSize == 0 || headerSize >= sliceSize) return 0;

    // The fields are read where they stand, even behind the end of a slice or of a header that is too short
    // to hold them. Kept.
    const uint32_t lumaSize = PrxRead16At(slice, 2);
    const uint32_t cbSize = PrxRead16At(slice, 4);
    const uint32_t crSize = streamHasAlpha ? PrxRead16At(slice, 6) : 0;
    const uint32_t given = headerSize + lumaSize + cbSize + crSize;
    if (given > sliceSize) return 0;

    const uint32_t remaining = sliceSize - given;
    *header = {.headerSize = headerSize,
               .quantiser = PrxQuantiserOf(PrxByteAt(slice, 1)),
               .lumaSize = lumaSize,
               .cbSize = cbSize,
               .crSize = streamHasAlpha ? crSize : remaining,
               .alphaSize = streamHasAlpha ? remaining : 0};
    return headerSize;
}
