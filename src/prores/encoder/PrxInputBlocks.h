#pragma once

#include <cstdint>

/// The samples of a macroblock's blocks by their places in their planes: luma is 16 by 16, chroma 16 by 16 or
/// in 4:2:2 8 by 16.
class PrxInputBlocks {
public:
    explicit PrxInputBlocks(int16_t* blocks) : blocks_(blocks) {}

    int16_t& Luma(int32_t x, int32_t y) const { return Sample(2 * (y / 8) + x / 8, x, y); }
    int16_t& Cb(int32_t x, int32_t y) const { return Sample(4 + 2 * (y / 8) + 4 * (x / 8), x, y); }
    int16_t& Cr(int32_t x, int32_t y) const { return Sample(5 + 2 * (y / 8) + 4 * (x / 8), x, y); }

private:
    int16_t& Sample(int32_t block, int32_t x, int32_t y) const {
        return blocks_[64 * block + 8 * (y % 8) + x % 8];
    }

    int16_t* blocks_;
};
