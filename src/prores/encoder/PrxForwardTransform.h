#pragma once

#include <cstdint>

/// Transforms `blockCount` blocks of 64 samples that stand one behind the other, row by row, in place: half
/// of the orthonormal discrete cosine transform, to within 1 for pictures of 12 bits and 1.5 for anything of
/// 12 bits. Larger samples can saturate on the way. A block of equal samples is exact: 4 times the sample, in
/// its low 16 bits, and zeros. The blocks need no alignment, and nothing outside them is touched. Any thread
/// may call.
using PrxForwardTransform = void (*)(int16_t* blocks, int32_t blockCount);

/// The fastest form that this machine runs.
PrxForwardTransform PrxSelectForwardTransform();

/// The reference form of the same, and that for one block.
void PrxScalarForwardTransform(int16_t* blocks, int32_t blockCount);
void PrxForwardDct(int16_t* block);
