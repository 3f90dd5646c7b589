#pragma once

#include <cstdint>

/// The constants of a codec type that the standard leaves to an encoder.
struct PrxProfile {
    uint32_t startQuantIndex; ///< quantisation index of the first pass
    int32_t matrixIndex;      ///< see `PrxLumaWeights`
};
PrxProfile PrxGetProfile(uint32_t codecType);

/// What rate control aims for in one picture.
struct PrxRateTarget {
    uint32_t startQuantIndex;
    int32_t matrixIndex;
    int32_t targetHigh;   ///< bytes that the picture may not pass
    int32_t targetLow;    ///< bytes that it aims for
    int32_t chromaFormat; ///< 2 or 3
    int32_t colorMatrix;  ///< 1, 6 or 9: by what RGB input is converted
};
