#pragma once

#include <cstdint>

/// Filters the chroma of one row of `width` pixels, 1 or more, in place, with the weights 1, 2, 1: that of
/// the even pixels, which are all that a 4:2:2 stream keeps. The odd pixels stay as they are. The first pixel
/// is its own left neighbour, and a last even one its own right neighbour. Touches no byte outside the row,
/// and changes none before pixel `first`, which is even: 0 for the whole row.
using PrxChromaLowPass = void (*)(uint8_t* row, int32_t width, int32_t first);

/// The filter for rows of `pixelFormat`, in the fastest form that this machine runs, and in the reference
/// form: integers are rounded with halves up, floats computed in double precision and rounded once. Null for
/// formats that are no Y'CbCr 4:4:4.
PrxChromaLowPass PrxGetChromaLowPass(uint32_t pixelFormat);
PrxChromaLowPass PrxGetScalarChromaLowPass(uint32_t pixelFormat);

/// The reference forms of the integer formats; `r408` has that of `y408`.
void PrxLowPassY408(uint8_t* row, int32_t width, int32_t first);
void PrxLowPassV408(uint8_t* row, int32_t width, int32_t first);
void PrxLowPassY416(uint8_t* row, int32_t width, int32_t first);
