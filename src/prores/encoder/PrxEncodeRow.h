#pragma once

#include "prores/encoder/PrxEncodeContext.h"
#include "prores/encoder/PrxEncodePicture.h"
#include "prores/encoder/PrxSlice.h"

#include <cstdint>
#include <span>

/// One row of macroblocks, the unit that is handed to a worker.
struct PrxEncodeRowJob {
    const PrxEncodePicture* picture;
    std::span<PrxSlice> slices; ///< those of the row, from left to right
    uint8_t* rows;              ///< first pixel of its first row in the caller's picture
    int32_t rowCount;           ///< rows inside the picture, 1 to 16
    bool outOfMemory;           ///< set by the worker: there was no memory for the row
};

/// Does the picture's pass on one row. Called in a worker.
void PrxEncodeRow(PrxEncodeRowJob* job, PrxEncodeContext* context);
