#pragma once

#include "prores/PrxHeaders.h"

#include <cstdint>

/// Weight of a coefficient that is dropped: its level is always 0.
inline constexpr uint8_t prxDroppedWeight = 255;

/// Weights of the encoder's five pairs of quantisation matrices, finest first; `matrixIndex` is 0 to 4.
const PrxQuantMatrix& PrxLumaWeights(int32_t matrixIndex);
const PrxQuantMatrix& PrxChromaWeights(int32_t matrixIndex);
