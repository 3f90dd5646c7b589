#pragma once

#include "prores/PrxOutputTarget.h"
#include "prores/StreamFrame.h"

#include <cstdint>

/// Decodes by plain composition: the coefficients that `spec` gives its stream, the reference transform, the
/// reference writer and the reference row pass, one macroblock after the other, with no headers, slices or
/// threads between them. `spec` must have a source of coefficients; no slice may be damaged.
void ModelDecode(const stream::FrameSpec& spec, const PrxOutputTarget& target, int32_t mode,
                 bool ignoreAlpha);

/// Reduction of `mode` on a frame, in pixels and in lines of the frame.
struct ModelReduction {
    int32_t hShift;
    int32_t vShift;
};
ModelReduction ReductionOf(int32_t mode);
