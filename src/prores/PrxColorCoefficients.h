#pragma once

#include <cstdint>

/// What the Y'CbCr values that enter a conversion are multiples of: an 8-bit code is this many units.
enum PrxInputScale : int32_t {
    prxInputScaleSample = 32, ///< samples of 13 bits
    prxInputScaleWord = 256,  ///< words of 16 bits
};

/// Factors from Y'CbCr in video range, luma black and neutral chroma at 0, to RGB in full range:
/// R = yScale Y + crToR Cr, G = yScale Y + cbToG Cb + crToG Cr, B = yScale Y + cbToB Cb.
struct PrxColorCoefficients {
    float yScale;
    float crToR;
    float cbToG;
    float crToG;
    float cbToB;
};

/// The factors for a `colorMatrix` of 1 (BT.709), 6 (BT.601) or 9 (BT.2020) to RGB codes up to `outMax`: 255,
/// 1023 or 65535. Each is a product in double precision, rounded once.
const PrxColorCoefficients& PrxGetColorCoefficients(int32_t colorMatrix, int32_t outMax,
                                                    PrxInputScale inputScale);

/// The same for chroma that comes as the sum of two samples. Halving is exact.
PrxColorCoefficients PrxHalveChromaFactors(const PrxColorCoefficients& factors);

/// The `colorMatrix` of a frame of `height` lines whose stream or writer says `matrixCoefficients`: the value
/// itself if it is one of those above, else that of BT.601 below 720 lines and of BT.709 from there on.
int32_t PrxColorMatrixFor(int32_t matrixCoefficients, uint32_t height);
