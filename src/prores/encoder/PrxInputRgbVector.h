#pragma once

#include "prores/encoder/PrxInputRgb.h"

#include <cstdint>

/// The converters from RGB in the vectors of this machine's best instruction set: the same bits as the
/// reference forms. Null where those are null, and on machines without vectors of the kind.
PrxConvertMacroblock PrxGetVectorRgbConverter(uint32_t pixelFormat);
PrxConvertRgbRow PrxGetVectorRgbRowConverter(uint32_t pixelFormat);
