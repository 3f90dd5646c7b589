#pragma once

#include "prores/encoder/PrxChromaLowPass.h"

/// The filters of integer formats in the vectors of this machine's best instruction set: the same results as
/// the reference form. Null for other formats, `r4fl` included, whose rows take longer to load than to
/// filter, and on machines without vectors.
PrxChromaLowPass PrxSelectVectorChromaLowPass(uint32_t pixelFormat);
