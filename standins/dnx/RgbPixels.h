#pragma once

#include "dnx/VideoMatrix.h"

#include <cstddef>
#include <cstdint>

namespace dnx {

// Rows of Y'CbCr to words A R G B. Each step has a form with the instructions of this processor, which gives
// the same bits, reads nothing behind the last sample and writes nothing behind the last pixel.

constexpr float noChroma = 32768; ///< chroma of no colour, in words

/// A row with a chroma sample for each pixel.
struct YCbCrRow {
    const uint16_t* luma; ///< codes
    float scale;          ///< from codes to words
    const float* cb;      ///< in words, from `noChroma` on, like `cr`
    const float* cr;
};

/// Gives each pixel its chroma, in words from `noChroma` on. A sample stands on the first pixel of its two,
/// and the second takes the mean of the samples on both sides.
/// @param codes  (width + 1) / 2 samples
/// @param first  pair of pixels to begin with
/// @param chroma row of `width` pixels
void SpreadChroma(const uint16_t* codes, float scale, size_t first, size_t width, float* chroma);
void SpreadChromaVector(const uint16_t* codes, float scale, size_t width, float* chroma);

/// Writes pixels in their place of the row `output`: opaque, colours rounded to nearest and limited to
/// 0..65535.
/// @param first  pixel to begin with
void StoreRgbPixels(const YCbCrRow& row, const VideoMatrix& matrix, size_t first, size_t width,
                    uint8_t* output);
void StoreRgbPixelsVector(const YCbCrRow& row, const VideoMatrix& matrix, size_t width, uint8_t* output);

} // namespace dnx
