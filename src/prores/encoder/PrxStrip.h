#pragma once

#include <cstddef>
#include <cstdint>

/// Up to 16 picture rows on their way to macroblocks. A row holds the bytes of its `width` pixels and no
/// more, but whole pairs in packed 4:2:2 and whole groups of six pixels in `v210`.
struct PrxStrip {
    uint8_t* rows;        ///< first pixel of the top row, at any address
    ptrdiff_t rowBytes;   ///< from one row to the next; may be negative
    uint32_t pixelFormat; ///< of these rows
    int32_t width;        ///< pixels, 1 or more
    int32_t rowCount;     ///< 1 to 16
};
