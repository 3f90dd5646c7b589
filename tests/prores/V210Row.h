#pragma once

#include "prores/PrxRowPassV210.h"
#include "support/GuardedBytes.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

/// A row of `w216` pixels, with nothing readable behind its last pair, and a target row of the least size,
/// with nothing behind that either. Two rows of both, the target's with a gap between them.
class V210Rows {
public:
    static constexpr uint8_t untouched = 0x5A;
    static constexpr int32_t rowCount = 2;
    static constexpr int32_t gap = 32;

    V210Rows(int32_t width, std::mt19937& random)
        : width_(width), rowStride_((width + 1) / 2 * 8), rowBytes_((width + 5) / 6 * 16),
          row_(static_cast<size_t>(rowCount * rowStride_), GuardedBytes::Guard::Behind),
          target_(static_cast<size_t>(rowCount * (rowBytes_ + gap) - gap), GuardedBytes::Guard::Behind) {
        std::generate(row_.begin(), row_.end(), [&random] { return static_cast<uint8_t>(random()); });
        std::fill(target_.begin(), target_.end(), untouched);
    }

    /// Word `index` of a row of pixels.
    uint16_t Word(int32_t row, int32_t index) const {
        const uint8_t* word = row_.data() + row * rowStride_ + 2 * index;
        return static_cast<uint16_t>(word[0] | word[1] << 8);
    }
    void SetWord(int32_t row, int32_t index, uint16_t word) {
        std::memcpy(row_.data() + row * rowStride_ + 2 * index, &word, sizeof(word));
    }

    PrxRowPassJob Job(int32_t firstPixel, int32_t endPixel) {
        return {row_.data(), rowStride_, nullptr,    0,        target_.data(), rowBytes_ + gap,
                rowBytes_,   width_,     firstPixel, endPixel, rowCount};
    }
    void Run(PrxRowPass pass, int32_t firstPixel, int32_t endPixel) {
        pass(Job(firstPixel, endPixel), {0, 0, 1});
    }
    void Run(PrxRowPass pass) { Run(pass, 0, width_); }

    std::vector<uint8_t> Target() const { return {target_.begin(), target_.end()}; }
    uint32_t Packed(int32_t row, int32_t index) const {
        uint32_t packed;
        std::memcpy(&packed, target_.data() + row * (rowBytes_ + gap) + 4 * index, sizeof(packed));
        return packed;
    }
    /// Code `index` of a row: three to a word, the first in the low bits.
    uint32_t Code(int32_t row, int32_t index) const {
        return Packed(row, index / 3) >> (10 * (index % 3)) & 0x3FF;
    }
    bool IsTouched(int32_t row, int32_t group) const {
        const uint8_t* first = target_.data() + row * (rowBytes_ + gap) + 16 * group;
        return std::any_of(first, first + 16, [](uint8_t byte) { return byte != untouched; });
    }

private:
    int32_t width_;
    int32_t rowStride_;
    int32_t rowBytes_;
    GuardedBytes row_;
    GuardedBytes target_;
};
