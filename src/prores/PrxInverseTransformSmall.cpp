#include "prores/PrxInverseTransformSmall.h"

#include "prores/PrxFixedPoint.h"
#include "prores/PrxRoundToNearest.h"

#include <cmath>
#include <numbers>

namespace {

/// Factors of a block's first and second coefficient, at a scale of 2^18 for samples of no bits.
struct PairFactors {
    double first;
    double second;
};

PairFactors MakePairFactors() {
    const double c4 = std::cos(std::numbers::pi / 4);
    const double q = std::cos(std::numbers::pi / 16) + std::cos(3 * std::numbers::pi / 16) +
                     std::cos(5 * std::numbers::pi / 16) + std::cos(7 * std::numbers::pi / 16);
    return {32 * c4 * c4, 8 * c4 * q};
}

/// A coefficient times its table entry, halved: in 32 bits, unlike in the larger blocks.
int32_t DequantiseWide(int16_t coefficient, int16_t factor) { return (coefficient * factor) >> 1; }

int16_t RoundToSample(double value) { return static_cast<int16_t>(std::llrint(value)); }

/// Blocks of two coefficients, the second of which has its table entry at `secondPosition`.
void TransformPairs(const int16_t* coefficients, int16_t* samples, int32_t blockCount, int32_t depth,
                    const int16_t* quantTable, int32_t secondPosition) {
    static const PairFactors factors = MakePairFactors();
    const double scale = std::ldexp(1.0, depth - 18);
    for (int32_t block = 0; block < blockCount; ++block, coefficients += 2, samples += 2) {
        const double even = factors.first * DequantiseWide(coefficients[0], quantTable[0]);
        const double odd = factors.second * DequantiseWide(coefficients[1], quantTable[secondPosition]);
        samples[0] = RoundToSample((even + odd) * scale);
        samples[1] = RoundToSample((even - odd) * scale);
    }
}

/// Blocks of one coefficient.
void TransformSingles(const int16_t* coefficients, int16_t* samples, int32_t blockCount, int32_t depth,
                      int16_t factor) {
    const double scale = std::ldexp(1.0, depth - 14);
    for (int32_t block = 0; block < blockCount; ++block)
        samples[block] = RoundToSample(DequantiseWide(coefficients[block], factor) * scale);
}

} // namespace

void PrxInverseTransform2x2(const int16_t* coefficients, int16_t* samples, int32_t blockCount, int32_t depth,
                            const int16_t* quantTable) {
    const int32_t shift = 26 - depth;
    const int32_t half = (1 << shift) >> 1;
    for (int32_t block = 0; block < blockCount; ++block, coefficients += 4, samples += 4) {
        const int32_t x00 = PrxDequantise(coefficients[0], quantTable[0]);
        const int32_t x01 = PrxDequantise(coefficients[1], quantTable[1]);
        const int32_t x10 = PrxDequantise(coefficients[2], quantTable[8]);
        const int32_t x11 = PrxDequantise(coefficients[3], quantTable[9]);
        const int32_t top[2] = {4096 * (x00 + x01), 4096 * (x00 - x01)};
        const int32_t bottom[2] = {4096 * (x10 + x11), 4096 * (x10 - x11)};
        // Sums of four values of 15 bits have 17, of which at least one is shifted out: nothing saturates.
        for (int32_t x = 0; x < 2; ++x) {
            samples[x] = PrxSaturate16((top[x] + bottom[x] + half) >> shift);
            samples[2 + x] = PrxSaturate16((top[x] - bottom[x] + half) >> shift);
        }
    }
}

void PrxInverseTransform2x1(const int16_t* coefficients, int16_t* samples, int32_t blockCount, int32_t depth,
                            const int16_t* quantTable) {
    PrxRunRoundingToNearest<&TransformPairs>(coefficients, samples, blockCount, depth, quantTable, 1);
}

void PrxInverseTransform1x2(const int16_t* coefficients, int16_t* samples, int32_t blockCount, int32_t depth,
                            const int16_t* quantTable) {
    PrxRunRoundingToNearest<&TransformPairs>(coefficients, samples, blockCount, depth, quantTable, 8);
}

void PrxInverseTransform1x1(const int16_t* coefficients, int16_t* samples, int32_t blockCount, int32_t depth,
                            const int16_t* quantTable) {
    PrxRunRoundingToNearest<&TransformSingles>(coefficients, samples, blockCount, depth, quantTable[0]);
}
