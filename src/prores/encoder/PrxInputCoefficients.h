#pragma once

#include <cstdint>

/// What RGB becomes.
enum PrxInputTarget : int32_t {
    prxInputTargetSamples, ///< samples of blocks: 16 for each code of 8 bits
    /// Words of 16 bits: luma 256 for each code of 8 bits, chroma a quarter of that, because a chroma word is
    /// a sum over pixels with weights 1, 2 and 1.
    prxInputTargetWords,
};

/// Factors from RGB codes in full range to Y'CbCr in video range, luma black and neutral chroma at 0:
/// Y = yG G + yR R + yB B, and Cb and Cr likewise.
struct PrxInputCoefficients {
    float yR;
    float yG;
    float yB;
    float cbR;
    float cbG;
    float cbB;
    float crR;
    float crG;
    float crB;
};

/// The factors for a `colorMatrix` of 1 (BT.709), 9 (BT.2020) or anything else (BT.601) from RGB codes up to
/// `inMax`: 255, 1023 or 65535. Each is computed in double precision and rounded once.
const PrxInputCoefficients& PrxGetInputCoefficients(int32_t colorMatrix, int32_t inMax,
                                                    PrxInputTarget target);
