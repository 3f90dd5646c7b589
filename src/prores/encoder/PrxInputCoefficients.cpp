#include "prores/encoder/PrxInputCoefficients.h"

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
using MatrixCoefficients = std::array<std::array<PrxInputCoefficients, 3>, 2>;

constexpr MatrixCoefficients AllOf(const LumaWeights& weights) {
    constexpr std::array<int32_t, 3> maxima = {255, 1023, 65535};
    MatrixCoefficients all = {};
    for (size_t i = 0; i < maxima.size(); ++i) {
        all[prxInputTargetSamples][i] = Scaled(weights, 219.0 * 16 / maxima[i], 224.0 * 16 / maxima[i]);
        all[prxInputTargetWords][i] = Scaled(weights, 219.0 * 256 / maxima[i], 224.0 * 64 / maxima[i]);
    }
    return all;
}

constexpr MatrixCoefficients ofBt709 = AllOf(bt709);
constexpr MatrixCoefficients ofBt601 = AllOf(bt601);
constexpr MatrixCoefficients ofBt2020 = AllOf(bt2020);

const MatrixCoefficients& OfMatrix(int32_t colorMatrix) {
    switch (colorMatrix) {
    case 1: return ofBt709;
    case 9: return ofBt2020;
    default: return ofBt601;
    }
}

constexpr size_t InputIndex(int32_t inMax) { return inMax == 255 ? 0 : inMax == 1023 ? 1 : 2; }

} // namespace

const PrxInputCoefficients& PrxGetInputCoefficients(int32_t colorMatrix, int32_t inMax,
                                                    PrxInputTarget target) {
    return OfMatrix(colorMatrix)[target][InputIndex(inMax)];
}
