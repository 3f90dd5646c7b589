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

/// `ColorToRgb` from bytes to bytes, in integers of 16 bits:
///
///     y = (2^8 Y * luma >> 16) + offset
///     R = y + (2^8 (Cr - zero) * crToRed >> 15), and so on; >> 15 is to nearest
///
/// Sums are 2^7 times what they are without integers, and 0 of them stands for 128, the middle.
struct ColorBytesToRgb {
    uint16_t luma;   ///< times 2^15
    int16_t offset;  ///< takes black to -128, and half a step up for the rounding
    int16_t crToRed; ///< this and the others times 2^14
    int16_t cbToGreen;
    int16_t crToGreen;
    int16_t halfCbToBlue; ///< half of it, to be added twice: the whole may be above 2
};

/// @param selector  1 BT.709, 0 and 2 BT.601; anything else is taken as BT.709
/// @param white     value of white and of opaque in the image: 255, 65535 or 1
ColorToRgb MakeColorToRgb(int64_t selector, const ColorRange& range, double white);
ColorFromRgb MakeColorFromRgb(int64_t selector, const ColorRange& range, double white);
/// @param matrix  from bytes in video or full range, with white at 255
ColorBytesToRgb MakeColorBytesToRgb(const ColorToRgb& matrix);
