#pragma once

namespace dnx {

/// Luma weights of a Y'CbCr matrix.
struct LumaWeights {
    float red;
    float blue;
};

inline constexpr LumaWeights weightsBT709 = {0.2126f, 0.0722f};
inline constexpr LumaWeights weightsBT2020 = {0.2627f, 0.0593f};

/// A Y'CbCr matrix between codes of video range, at one depth: R', G', B' and Y' have 219 steps from black to
/// white where Cb and Cr have 224 from one extreme to the other. Chroma counts from its middle code.
struct VideoMatrix {
    float red, green, blue; ///< Y' = red R' + green G' + blue B'
    float cbScale, crScale; ///< Cb = cbScale (B' - Y'), Cr = crScale (R' - Y')
    float redFromCr;        ///< R' = Y' + redFromCr Cr
    float greenFromCb;      ///< G' = Y' + greenFromCb Cb + greenFromCr Cr
    float greenFromCr;
    float blueFromCb; ///< B' = Y' + blueFromCb Cb

    explicit constexpr VideoMatrix(LumaWeights weights)
        : red(weights.red), green(1 - weights.red - weights.blue), blue(weights.blue),
          cbScale(1 / (2 * (1 - blue)) * 224 / 219), crScale(1 / (2 * (1 - red)) * 224 / 219),
          redFromCr(1 / crScale), greenFromCb(-blue / green / cbScale), greenFromCr(-red / green / crScale),
          blueFromCb(1 / cbScale) {}
};

} // namespace dnx
