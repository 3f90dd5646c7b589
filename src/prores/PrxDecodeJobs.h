#pragma once

#include "prores/PrxPicture.h"

#include <cstdint>
#include <vector>

/// One row of macroblocks, the unit that is handed to a worker. There is no record of single slices: a frame
/// header can claim sixteen million of them in a few bytes. The worker finds them by reading the row's part
/// of the slice table.
struct PrxRowJob {
    const PrxPictureContext* picture;
    uint64_t dataOffset;  ///< of the row's first slice, from the start of the slice table
    uint64_t dataSize;    ///< bytes of all its slices, cut at the input's end
    uint8_t* outRow;      ///< first output byte; null without output rows
    uint32_t tableOffset; ///< of the row's first entry in the slice table, bytes
    int32_t rows;         ///< output rows; 0: nothing to do
    /// Set by the worker: every slice was decoded, and no sample of the stream's alpha, if it has any, was
    /// left out or below full value. A row without output rows is not looked at and keeps false.
    bool allOk;
    bool outOfMemory; ///< set by the worker: there was no memory for the row, which is as it was
};
static_assert(sizeof(PrxRowJob) <= 48);

/// Appends the jobs of `picture`, which is borrowed for their life, from its top down.
void PrxAppendRowJobs(const PrxPictureContext& picture, std::vector<PrxRowJob>* jobs);
