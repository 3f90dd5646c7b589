#pragma once

#include "host/Image.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

// Pictures that carry a number, which can be read back from what a lossy codec leaves of them.
//
// The number stands in black and white blocks of 16x16 pixels, one for each bit, and below these a second
// time with all bits inverted, on every row of pixels alike. The rest of the picture is a texture that moves.

/// A picture's size in pixels, at least 128x32 and even.
struct PictureSize {
    int width = 192;
    int height = 112;
};

/// Numbers are below this.
constexpr int numberLimit = 256;

/// Draws a picture as 8-bit 4:2:0 planes of video range, and appends these.
/// @param isInterlaced  the texture of the odd rows is half a picture later
void AppendPicture(int number, PictureSize size, bool isInterlaced, std::vector<uint8_t>& planes);

/// Brightness of a pixel from 0 to 65535; row 0 is the top row.
using BrightnessFunction = std::function<int(int x, int y)>;

/// Reads the number of a picture.
/// @return nothing if the picture is too small, a bit and its inverse do not differ, or the even and the odd
///         rows disagree
std::optional<int> ReadNumber(PictureSize size, const BrightnessFunction& brightness);
std::optional<int> ReadNumber(Image& image);
