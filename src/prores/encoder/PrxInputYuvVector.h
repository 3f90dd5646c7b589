#pragma once

#include "prores/encoder/PrxInputConverter.h"

#include <cstdint>

/// The converters from Y'CbCr in the vectors of this machine's best instruction set: the same samples as the
/// reference form. Null where that is null, and on machines without vectors.
PrxConvertMacroblock PrxGetVectorYuvConverter(uint32_t pixelFormat, int32_t chromaFormat);
