#pragma once

#include "prores/PrxBufferPiece.h"
#include "prores/PrxPicture.h"
#include "prores/PrxWorkerContext.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// One slice of a row, and where its pixels go.
struct PrxSliceJob {
    const PrxPictureContext* picture;
    PrxBufferPiece data; ///< from the slice's first byte on
    uint32_t size;       ///< bytes, at most 65535; the chain may hold fewer
    uint32_t mbCount;    ///< macroblocks: 1, 2, 4 or 8
    int32_t rows;        ///< output rows, at least 1
    uint8_t* dst;        ///< first output byte
    ptrdiff_t dstStride;
    uint8_t* alpha; ///< where the slice's alpha goes, rows << vShift rows of it; null: it isn't decoded
    ptrdiff_t alphaStride;
};

enum class PrxSliceResult {
    refused, ///< the slice's header is damaged; nothing was stored
    decoded, ///< stored, with alpha that isn't opaque or wasn't decoded
    opaque,  ///< stored; without alpha in the stream, or with all of it at full value
};

/// Slices that are decoded together.
inline constexpr size_t prxSlicesAtOnce = 2;

/// Decodes up to `prxSlicesAtOnce` slices of one picture and stores their macroblocks. `results` gets what
/// became of each.
void PrxDecodeSlices(std::span<const PrxSliceJob> slices, PrxWorkerContext* context, PrxSliceResult* results);
