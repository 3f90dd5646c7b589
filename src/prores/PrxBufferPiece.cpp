#include "prores/PrxBufferPiece.h"

#include <algorithm>
#include <cstring>

namespace {

/// What the empty piece points to.
constexpr uint8_t nothing = 0;

} // namespace

PrxBufferPiece PrxAdvance(const PrxBufferPiece& chain, uint64_t count) {
    const PrxBufferPiece* piece = &chain;
    for (; piece != nullptr; piece = piece->next) {
        if (count < piece->size) return {piece->data + count, piece->size - count, piece->next};
        count -= piece->size;
    }
    return {&nothing, 0, nullptr};
}

uint8_t PrxByteAt(const PrxBufferPiece& chain, uint64_t offset) { return *PrxAdvance(chain, offset).data; }

uint16_t PrxRead16At(const PrxBufferPiece& chain, uint64_t offset) {
    uint8_t bytes[2];
    PrxCopyBytes(PrxAdvance(chain, offset), sizeof(bytes), bytes);
    return static_cast<uint16_t>(bytes[0] << 8 | bytes[1]);
}

uint32_t PrxRead32At(const PrxBufferPiece& chain, uint64_t offset) {
    uint8_t bytes[4];
    PrxCopyBytes(PrxAdvance(chain, offset), sizeof(bytes), bytes);
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

uint64_t PrxTotalSize(const PrxBufferPiece& chain) {
    uint64_t size = 0;
    for (const PrxBufferPiece* piece = &chain; piece != nullptr; piece = piece->next)
        size += piece->size;
    return size;
}

void PrxCopyBytes(const PrxBufferPiece& chain, uint64_t count, uint8_t* out) {
    for (const PrxBufferPiece* piece = &chain; piece != nullptr && count > 0; piece = piece->next) {
        const uint64_t taken = std::min(count, piece->size);
        if (taken > 0) std::memcpy(out, piece->data, taken);
        out += taken;
        count -= taken;
    }
    if (count > 0) std::memset(out, 0, count);
}
