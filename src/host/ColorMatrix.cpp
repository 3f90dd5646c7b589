#include "host/ColorMatrix.h"

#include <cmath>

namespace {

/// Share of red and blue in luma.
struct LumaShares {
    double red;
    double blue;

    double Green() const { return 1 - red - blue; }
};

constexpr LumaShares bt601 = {0.299, 0.114};   // Recommendation ITU-R BT.601-7, 2.5.1
constexpr LumaShares bt709 = {0.2126, 0.0722}; // Recommendation ITU-R BT.709-6, 3.2

const LumaShares& SharesOf(int64_t selector) { return selector == 0 || selector == 2 ? bt601 : bt709; }

} // namespace

ColorToRgb MakeColorToRgb(int64_t selector, const ColorRange& range, double white) {
    const LumaShares& shares = SharesOf(selector);
    const double chroma = white / range.chromaSpan;
    const double red = 2 * (1 - shares.red);
    const double blue = 2 * (1 - shares.blue);
    return {
        .black = range.black,
        .zero = range.zero,
        .luma = white / range.lumaSpan,
        .crToRed = red * chroma,
        .cbToGreen = -blue * shares.blue / shares.Green() * chroma,
        .crToGreen = -red * shares.red / shares.Green() * chroma,
        .cbToBlue = blue * chroma,
        .alpha = white / range.opaque,
    };
}

ColorFromRgb MakeColorFromRgb(int64_t selector, const ColorRange& range, double white) {
    const LumaShares& shares = SharesOf(selector);
    const double luma = range.lumaSpan / white;
    const double cb = range.chromaSpan / white / (2 * (1 - shares.blue));
    const double cr = range.chromaSpan / white / (2 * (1 - shares.red));
    return {
        .luma = {shares.red * luma, shares.Green() * luma, shares.blue * luma},
        .cb = {-shares.red * cb, -shares.Green() * cb, (1 - shares.blue) * cb},
        .cr = {(1 - shares.red) * cr, -shares.Green() * cr, -shares.blue * cr},
        .black = range.black,
        .zero = range.zero,
        .alpha = range.opaque / white,
    };
}

ColorBytesToRgb MakeColorBytesToRgb(const ColorToRgb& matrix) {
    const auto scaled = [](double value) { return static_cast<int16_t>(std::lround(value * (1 << 14))); };
    // The product of luma is cut off, half a unit below the exact one on average.
    const double offset = 128 * (0.5 - 128 - matrix.black * matrix.luma) + 0.5;
    return {
        .luma = static_cast<uint16_t>(std::lround(matrix.luma * (1 << 15))),
        .offset = static_cast<int16_t>(std::lround(offset)),
        .crToRed = scaled(matrix.crToRed),
        .cbToGreen = scaled(matrix.cbToGreen),
        .crToGreen = scaled(matrix.crToGreen),
        .halfCbToBlue = scaled(matrix.cbToBlue / 2),
    };
}
