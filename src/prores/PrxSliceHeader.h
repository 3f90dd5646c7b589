#pragma once

#include "prores/PrxBufferPiece.h"

#include <cstdint>

/// Slice header (SMPTE RDD 36). Sizes in bytes; the stretches of luma, Cb, Cr and alpha follow the
/// header in this order.
struct PrxSliceHeader {
    uint32_t headerSize;
    int32_t quantiser; ///< 1 to 512
    uint32_t lumaSize;
    uint32_t cbSize;
    uint32_t crSize;
    uint32_t alphaSize; ///< 0 in a stream without alpha
};

/// Reads the header of the slice of `sliceSize` bytes at the chain's start. `streamHasAlpha`: the frame's
/// `alphaType` is not 0. Returns the header's size, or 0 for a slice that is refused.
uint32_t PrxReadSliceHeader(const PrxBufferPiece& slice, uint32_t sliceSize, bool streamHasAlpha,
                            PrxSliceHeader* header);

/// Quantiser of a quantisation index: 1 to 128 as they stand, then in steps of 4 up to 512. 0 counts as 1,
/// and values above 224 as 224.
int32_t PrxQuantiserOf(uint32_t quantIndex);
