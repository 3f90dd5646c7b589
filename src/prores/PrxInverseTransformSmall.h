#pragma once

#include "prores/PrxInverseTransform.h"

/// The transforms of the four smallest blocks, whose sides are at most 2.

/// 2 by 2 values: butterflies of 32-bit integers.
void PrxInverseTransform2x2(const int16_t* coefficients, int16_t* samples, int32_t blockCount, int32_t depth,
                            const int16_t* quantTable);

/// 2 values across, 2 values down, and one value: in double precision, rounded to the nearest integer with
/// ties to even. Samples beyond 16 bits keep their low 16 bits.
void PrxInverseTransform2x1(const int16_t* coefficients, int16_t* samples, int32_t blockCount, int32_t depth,
                            const int16_t* quantTable);
void PrxInverseTransform1x2(const int16_t* coefficients, int16_t* samples, int32_t blockCount, int32_t depth,
                            const int16_t* quantTable);
void PrxInverseTransform1x1(const int16_t* coefficients, int16_t* samples, int32_t blockCount, int32_t depth,
                            const int16_t* quantTable);
