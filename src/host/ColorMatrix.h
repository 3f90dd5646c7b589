#pragma once

#include "host/ColorLayout.h"

#include <array>

/// From the codes of a layout to R, G, B, A on a scale where white is the image's own:
///
///     y = (Y - black) * luma      R = y + crToRed * (Cr - zero)
///     A = A * alpha               G = y + cbToGreen * (Cb - zero) + crToGreen * (Cr - zero)
///                                 B = y + cbToBlue * (Cb - zero)
struct ColorToRgb {
    double black;
    double zero;
    double luma;
    double crToRed;
    double cbToGreen;
    double crToGreen;
    double cbToBlue;
    double alpha;
};

/// From R, G, B, A to the codes of a layout, not limited and not rounded. Each row of weights is for R, G, B.
struct ColorFromRgb {
    using Weights = std::array<double, 3>;

    Weights luma;
    Weights cb;
    Weights cr;
    double black; ///< added to luma
    double zero;  ///< added to Cb and Cr
    double alpha;
};

/// @param selector  1 BT.709, 0 and 2 BT.601; anything else is taken as BT.709
/// @param white     value of white and of opaque in the image: 255, 65535 or 1
ColorToRgb MakeColorToRgb(int64_t selector, const ColorRange& range, double white);
ColorFromRgb MakeColorFromRgb(int64_t selector, const ColorRange& range, double white);
