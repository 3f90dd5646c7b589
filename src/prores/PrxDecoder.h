#pragma once

#include "prores/Prx.h"
#include "prores/PrxBufferPiece.h"
#include "prores/PrxDecodeJobs.h"
#include "prores/PrxOutputTarget.h"
#include "prores/PrxThreadPool.h"
#include "prores/PrxThreads.h"

#include <cstdint>
#include <vector>

/// Decodes frames on worker threads of its own, one frame at a time. Used by one thread at a time.
///
/// Beside its threads it keeps, from frame to frame, the jobs of the largest frame yet and what its workers
/// hold. Both have bounds that no frame header can pass: 48 bytes for each of at most 4096 rows of
/// macroblocks, and what `PrxWorkerContext` states for each worker.
class PrxDecoder {
public:
    /// Starts `workerCount` workers, at most `prxMaxWorkers`; 0 or less means one for each usable processor.
    /// Each calls `threadStartHook`, if it isn't null, before its first job. Throws `std::bad_alloc` if they
    /// can't start. Each worker is made by `startThread`.
    PrxDecoder(int32_t workerCount, PrxThreadStartHook threadStartHook,
               PrxThreadStarter startThread = PrxStartThread);

    PrxDecoder(const PrxDecoder&) = delete;
    PrxDecoder& operator=(const PrxDecoder&) = delete;

    /// Decodes the frame in the chain `input` into `target` and returns when the whole picture has been
    /// written. The chain is borrowed for the call.
    ///
    /// `mode`: 1 full size; 2 half height; 3 top field, 4 bottom field, 5 first coded field, of an interlaced
    /// frame only; 6 half size, 7 half size from a quarter of the coefficients, 8 half width and quarter
    /// height, 9 quarter size, 10 quarter width and eighth height, 11 eighth size. Of an interlaced frame all
    /// but 1 decode one field. Reduced pictures are of use in `2vuy`, `r408` and `y408` only: in any other
    /// format the call succeeds and the picture means nothing, but stays within the target.
    ///
    /// `*isOpaque`, if it isn't null, becomes 1 on success if the stream has no alpha, or if all of its alpha
    /// was decoded and is opaque; else 0. Unchanged on failure.
    ///
    /// Returns the frame's size, or a failure as `PrxDecodeFrame` does; -3 also stands for a mode that is
    /// none of the above or doesn't fit the frame. Throws `std::bad_alloc` if there is no memory for a larger
    /// frame than before; rows may then be missing in the picture. The decoder stays usable after any
    /// failure.
    int32_t decodeFrame(const PrxBufferPiece& input, const PrxOutputTarget& target, int32_t mode,
                        bool ignoreAlpha, uint8_t* isOpaque);

private:
    std::vector<PrxRowJob> rows_;
    PrxThreadStartHook threadStartHook_; ///< read by each worker as it starts
    PrxThreadPoolPtr pool_;
};
