#pragma once

#include "prores/PrxScratchBuffer.h"

#include <cstddef>
#include <cstdint>

/// A worker's 16 rows of `v216` pixels. Its memory grows and is never shrunk.
class PrxRowBuffer {
public:
    /// Rows that the buffer has.
    static constexpr int32_t rowCount = 16;

    /// Makes room for rows of `width` pixels, 1 or more, and leaves what they hold undefined. Returns whether
    /// there is memory for them; without, there is room for none.
    bool EnsureWidth(int32_t width);

    /// The first pixel of row `row`, 0 to 15, on a boundary of 64 bytes.
    uint8_t* Row(int32_t row) const { return rows_ + row * rowBytes_; }

    /// From one row to the next: a multiple of 64, and 4 for each of `width` + 16 pixels or more, so that a
    /// row's last group of pixels may be stored as a whole.
    ptrdiff_t RowBytes() const { return rowBytes_; }

private:
    PrxScratchBuffer memory_;
    uint8_t* rows_ = nullptr;
    ptrdiff_t rowBytes_ = 0;
};
