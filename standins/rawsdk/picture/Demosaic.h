#pragma once

#include "rawsdk/picture/Samples.h"

#include <cstdint>

namespace rawsdk {

/// Interpolates the colours that the sensor lacks at each place, linearly from the neighbours of the same
/// colour and corrected by the second differences of the colour that is there (H. S. Malvar, L. He, R.
/// Cutler: High-quality linear interpolation for demosaicing of Bayer-patterned color images, 2004). Beyond
/// its edges the picture goes on as it ends. Samples stay as they are, planes without curvature come out
/// exactly, and everything is limited to the range of samples.
/// @param samples   of the whole picture, rows without padding; each at most `mostSample`
/// @param picture   of at least 4 by 4; rows `firstRow` to `firstRow + rows - 1` are written
void Demosaic(const uint16_t* samples, const PlanarPicture& picture, uint32_t firstRow, uint32_t rows);

} // namespace rawsdk
