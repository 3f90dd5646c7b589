#pragma once

#include <cstdint>

/// One piece of a segmented input. Pieces are borrowed: neither bytes nor successors are owned, and both must
/// outlive every chain made from them. No function here writes to them or can fail: what lies past the end of
/// the input reads as 0.
struct PrxBufferPiece {
    const uint8_t* data = nullptr;
    uint64_t size = 0;
    const PrxBufferPiece* next = nullptr;
};

/// Byte at `offset` of the chain; 0 past its end.
uint8_t PrxByteAt(const PrxBufferPiece& chain, uint64_t offset);

/// Big-endian values at `offset` of the chain; bytes past its end are 0.
uint16_t PrxRead16At(const PrxBufferPiece& chain, uint64_t offset);
uint32_t PrxRead32At(const PrxBufferPiece& chain, uint64_t offset);

/// The chain without its first `count` bytes; an empty piece, with a `data` that isn't null, if there are no
/// more than that.
PrxBufferPiece PrxAdvance(const PrxBufferPiece& chain, uint64_t count);

/// Bytes in all pieces.
uint64_t PrxTotalSize(const PrxBufferPiece& chain);

/// Copies `count` bytes from the chain's start to `out`; bytes past the chain's end are 0.
void PrxCopyBytes(const PrxBufferPiece& chain, uint64_t count, uint8_t* out);
