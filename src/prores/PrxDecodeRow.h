#pragma once

#include "prores/PrxDecodeJobs.h"
#include "prores/PrxWorkerContext.h"

/// Decodes one row of macroblocks in a worker: its slices, then the pass that ends the row, then the target's
/// width resampler. Slices that are refused keep what the target held, apart from pixels that the target's
/// format groups with pixels of a good slice. Sets `allOk` and `outOfMemory` of the job.
void PrxDecodeRow(PrxRowJob* job, PrxWorkerContext* context);
