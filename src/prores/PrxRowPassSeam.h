#pragma once

#include "prores/PrxRowPass.h"

#include <cstdint>

/// The pass that finishes a row of a 4:2:2 stream in `y416` or `r4fl`; null for any other format.
///
/// Chroma of an odd pixel is the mean of its neighbours', and the right neighbour of a macroblock's last
/// pixel lies in the next macroblock. The writers leave that pixel with its left neighbour's chroma; this
/// pass gives it the mean, for every macroblock of the stretch but the last of the row, which has no
/// successor. A successor behind the stretch's end is taken as the target holds it. For pictures of full
/// width, whose target rows hold whole macroblocks.
PrxRowPass PrxSelectSeamPass(uint32_t pixelFormat);
