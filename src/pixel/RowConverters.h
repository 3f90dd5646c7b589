#pragma once

#include "host/Image.h"
#include "pixel/RowPacking.h"

#include <cstdint>

/// What every row converter is given beside the image and the row. Read only.
struct RowContext {
    int32_t marker;   ///< 32: pixels carry alpha; always so
    int32_t rowBytes; ///< bytes from one blob row to the next, 0 or more
    uint8_t* blob;    ///< the top row of the picture

    /// Start of blob row `row`, counted from the top.
    uint8_t* Row(int32_t row) const { return blob + int64_t{row} * rowBytes; }
};
inline constexpr int32_t rowMarkerWithAlpha = 32;

/// Image row, counted from the bottom, that belongs to blob row `row`, counted from the top.
inline int32_t ImageRowOf(const Image& image, int32_t row) { return image.Height - 1 - row; }

/// The converters below are for `Image::DoMultiProcess`: (image, `RowContext*`, blob row). They move one row
/// through the image's accessors, touch `BytesPerPixel` times `Width` bytes of the blob row (of each plane's
/// row) and no others, and may run for different rows at once if the accessors may. They are the reference
/// for every faster form.

/// Converter from image to blob, or null if the packing is only read.
Image::RowFunction ScalarRowWriter(RowPacking packing);

/// Converter from blob to image.
Image::RowFunction ScalarRowReader(RowPacking packing);
