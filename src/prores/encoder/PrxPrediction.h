#pragma once

#include "prores/encoder/PrxSlice.h"

#include <cstdint>

/// How rate control tells from one pass what another would take. All arithmetic is of integers.

/// The scale, as 16.16, at which a size becomes `target`, if it falls linearly with the scale's logarithm
/// from `sizeBefore` at `scaleBefore` to `sizeAfter` at `scaleAfter`, three times that. `scaleAfter` if it
/// does not fall; never below `scaleBefore`.
int64_t PrxInterpolateScale(int64_t target, int64_t scaleBefore, int64_t sizeBefore, int64_t scaleAfter,
                            int64_t sizeAfter);

/// The size at `scale` of a plane that takes `before` bytes at the scale `previous` and `after` bytes at
/// three times that, by the same law. `before` up to `previous`, and if either scale is 0.
int32_t PrxPlaneAt(int64_t scale, int64_t previous, int32_t before, int32_t after);

/// What a slice would take at 3^`step` (1 to 7) times the scale of the pass that its `outcome` is of.
/// `chromaFormat` is 2 or 3.
PrxSliceEstimate PrxPredictSlice(const PrxSlice& slice, int32_t chromaFormat, uint32_t step);
