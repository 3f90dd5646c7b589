#include "prores/PrxColorCoefficients.h"

#include "prores/PrxColorTable.h"

#include <array>
#include <cstddef>

namespace {

/// Factors from chroma in -0.5..0.5 to RGB in 0..1.
struct BaseCoefficients {
    double crToR;
    double cbToG;
    double crToG;
    double cbToB;
};

constexpr BaseCoefficients bt709 = {1.5748, -0.18732427, -0.46812427, 1.8556};
constexpr BaseCoefficients bt601 = {1.402, -0.34413629, -0.71413629, 1.772};
constexpr BaseCoefficients bt2020 = {1.4746, -0.16455313, -0.57135313, 1.8814};

constexpr PrxColorCoefficients Scaled(const BaseCoefficients& base, int32_t outMax, int32_t inputScale) {
    const double luma = outMax / (219.0 * inputScale);
    const double chroma = outMax / (224.0 * inputScale);
    return {static_cast<float>(luma), static_cast<float>(base.crToR * chroma),
            static_cast<float>(base.cbToG * chroma), static_cast<float>(base.crToG * chroma),
            static_cast<float>(base.cbToB * chroma)};
}

/// By input scale, then by output range.
using MatrixCoefficients = std::array<std::array<PrxColorCoefficients, prxRgbRanges.size()>, 2>;

constexpr MatrixCoefficients AllOf(const BaseCoefficients& base) {
    MatrixCoefficients all = {};
    for (size_t scale = 0; scale < 2; ++scale) {
        const int32_t inputScale = scale == 0 ? prxInputScaleSample : prxInputScaleWord;
        for (size_t range = 0; range < prxRgbRanges.size(); ++range)
            all[scale][range] = Scaled(base, prxRgbRanges[range], inputScale);
    }
    return all;
}

constexpr PrxByColorMatrix<MatrixCoefficients> factorTables = {AllOf(bt709), AllOf(bt601), AllOf(bt2020)};

} // namespace

const PrxColorCoefficients& PrxGetColorCoefficients(int32_t colorMatrix, int32_t outMax,
                                                    PrxInputScale inputScale) {
    const size_t scale = inputScale == prxInputScaleSample ? 0 : 1;
    return factorTables[colorMatrix][scale][PrxRgbRangeIndex(outMax)];
}

int32_t PrxColorMatrixFor(int32_t matrixCoefficients, uint32_t height) {
    const bool known = matrixCoefficients == 1 || matrixCoefficients == 6 || matrixCoefficients == 9;
    if (known) return matrixCoefficients;
    return height < 720 ? 6 : 1;
}

PrxColorCoefficients PrxHalveChromaFactors(const PrxColorCoefficients& factors) {
    return {factors.yScale, 0.5f * factors.crToR, 0.5f * factors.cbToG, 0.5f * factors.crToG,
            0.5f * factors.cbToB};
}
