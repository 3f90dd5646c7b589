#include "prores/encoder/PrxInputCoefficients.h"

#include "prores/PrxColorTable.h"

#include <array>
#include <cstddef>

namespace {

/// Shares of red and blue in luma; green has the rest.
struct LumaWeights {
    double r;
    double b;
};

constexpr LumaWeights bt709 = {0.2126, 0.0722};
constexpr LumaWeights bt601 = {0.299, 0.114};
constexpr LumaWeights bt2020 = {0.2627, 0.0593};

/// `luma` and `chroma` are the widths of the video ranges, for RGB in 0..1.
constexpr PrxInputCoefficients Scaled(const LumaWeights& weights, double luma, double chroma) {
    const double green = 1 - weights.r - weights.b;
    const double cb = chroma / (2 * (1 - weights.b));
    const double cr = chroma / (2 * (1 - weights.r));
    const auto rounded = [](double factor) { return static_cast<float>(factor); };
    return {rounded(luma * weights.r), rounded(luma * green), rounded(luma * weights.b),
            rounded(-cb * weights.r),  rounded(-cb * green),  rounded(chroma / 2),
            rounded(chroma / 2),       rounded(-cr * green),  rounded(-cr * weights.b)};
}

/// By target, then by input range.
using MatrixCoefficients = std::array<std::array<PrxInputCoefficients, prxRgbRanges.size()>, 2>;

constexpr MatrixCoefficients AllOf(const LumaWeights& weights) {
    MatrixCoefficients all = {};
    for (size_t i = 0; i < prxRgbRanges.size(); ++i) {
        const int32_t largest = prxRgbRanges[i];
        all[prxInputTargetSamples][i] = Scaled(weights, 219.0 * 16 / largest, 224.0 * 16 / largest);
        all[prxInputTargetWords][i] = Scaled(weights, 219.0 * 256 / largest, 224.0 * 64 / largest);
    }
    return all;
}

constexpr PrxByColorMatrix<MatrixCoefficients> factorTables = {AllOf(bt709), AllOf(bt601), AllOf(bt2020)};

} // namespace

const PrxInputCoefficients& PrxGetInputCoefficients(int32_t colorMatrix, int32_t inMax,
                                                    PrxInputTarget target) {
    return factorTables[colorMatrix][target][PrxRgbRangeIndex(inMax)];
}
