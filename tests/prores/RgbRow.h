#pragma once

#include "RgbModel.h"
#include "prores/PrxRowPass.h"
#include "support/GuardedBytes.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <span>
#include <vector>

/// Rows of `v216` with alpha, in memory that ends or starts at a forbidden page, and what the RGB row passes
/// make of them.
class RgbRows {
public:
    static constexpr uint8_t untouched = 0xA5;

    RgbRows(int32_t width, int32_t rows, GuardedBytes::Guard guard)
        : width_(width), rows_(rows), guard_(guard), rowStride_((width + 1) / 2 * 8 + 64),
          alphaStride_(2 * width + 6), words_(Size(rowStride_, (width + 1) / 2 * 8), guard),
          alpha_(Size(alphaStride_, 2 * width), guard) {}

    int32_t width() const { return width_; }

    void Fill(std::mt19937& random, const std::function<uint16_t()>& nextWord) {
        for (size_t i = 0; i + 1 < words_.size(); i += 2) {
            const uint16_t word = nextWord();
            words_.data()[i] = static_cast<uint8_t>(word);
            words_.data()[i + 1] = static_cast<uint8_t>(word >> 8);
        }
        std::generate(alpha_.begin(), alpha_.end(), [&] { return static_cast<uint8_t>(random()); });
    }

    /// Sets the words Cb, Y0, Cr, Y1 of a pair of row 0.
    void SetPair(int32_t pair, const std::vector<int32_t>& words) {
        for (size_t i = 0; i < 4; ++i) {
            words_.data()[static_cast<size_t>(pair) * 8 + 2 * i] = static_cast<uint8_t>(words[i]);
            words_.data()[static_cast<size_t>(pair) * 8 + 2 * i + 1] = static_cast<uint8_t>(words[i] >> 8);
        }
    }

    /// Pixel `x` of a row, in a stretch that ends before pixel `end`.
    YcbcrModel Ycbcr(int32_t x, int32_t row, int32_t end) const {
        const int32_t pair = x / 2;
        const int32_t next = std::min(pair + 1, (end - 1) / 2);
        const double cb = Word(row, pair, 0) - 32768;
        const double cr = Word(row, pair, 2) - 32768;
        const int32_t y = Word(row, pair, x % 2 == 0 ? 1 : 3) - 4096;
        if (x % 2 == 0) return {y, cb, cr};
        return {y, (cb + Word(row, next, 0) - 32768) / 2, (cr + Word(row, next, 2) - 32768) / 2};
    }

    const uint8_t* AlphaAt(uint32_t format, int32_t x, int32_t row) const {
        return alpha_.data() + row * alphaStride_ + x * static_cast<ptrdiff_t>(AlphaBytesModel(format));
    }

    /// Runs a pass on pixels `first` to `end` - 1. The target's rows, all of them untouched before, follow
    /// each other with `gap` bytes between.
    std::vector<uint8_t> Convert(PrxRowPass pass, uint32_t format, int32_t matrix, bool hasAlpha,
                                 int32_t first, int32_t end, ptrdiff_t gap = 0) const {
        const auto rowBytes = static_cast<ptrdiff_t>(PixelBytesModel(format)) * width_;
        const ptrdiff_t stride = rowBytes + gap;
        const GuardedBytes target(Size(stride, rowBytes), guard_);
        std::fill(target.begin(), target.end(), untouched);
        const PrxRowPassJob job{words_.data(),
                                rowStride_,
                                hasAlpha ? alpha_.data() : nullptr,
                                hasAlpha ? alphaStride_ : 0,
                                target.data(),
                                stride,
                                static_cast<int32_t>(stride),
                                width_,
                                first,
                                end,
                                rows_};
        pass(job, PrxWriterSetup{0, 0, matrix});
        return {target.begin(), target.end()};
    }

    /// What has to come out of that.
    std::vector<uint8_t> Expected(uint32_t format, int32_t matrix, bool hasAlpha, int32_t first, int32_t end,
                                  ptrdiff_t gap = 0) const {
        const auto rowBytes = static_cast<ptrdiff_t>(PixelBytesModel(format)) * width_;
        std::vector<uint8_t> pixels(Size(rowBytes + gap, rowBytes), untouched);
        for (int32_t row = 0; row < rows_; ++row) {
            for (int32_t x = first; x < end; ++x) {
                const auto codes = CodesModel(Ycbcr(x, row, end), matrix, OutMaxModel(format), 256);
                const uint32_t alpha = AlphaModel(format, hasAlpha ? AlphaAt(format, x, row) : nullptr);
                const std::vector<uint8_t> pixel = PixelModel(format, codes, alpha);
                std::copy(pixel.begin(), pixel.end(),
                          pixels.begin() + row * (rowBytes + gap) +
                              x * static_cast<ptrdiff_t>(PixelBytesModel(format)));
            }
        }
        return pixels;
    }

private:
    size_t Size(ptrdiff_t stride, ptrdiff_t lastRow) const {
        return static_cast<size_t>(stride * (rows_ - 1) + lastRow);
    }
    int32_t Word(int32_t row, int32_t pair, int32_t word) const {
        const uint8_t* bytes = words_.data() + row * rowStride_ + pair * 8 + word * 2;
        return bytes[0] | bytes[1] << 8;
    }

    int32_t width_;
    int32_t rows_;
    GuardedBytes::Guard guard_;
    ptrdiff_t rowStride_;
    ptrdiff_t alphaStride_;
    GuardedBytes words_;
    GuardedBytes alpha_;
};

/// Ways to draw the words of a row: as the writer of `v216` leaves them, any, and the extremes.
inline std::vector<std::function<uint16_t()>> WordSources(std::mt19937& random) {
    return {
        [&random] { return static_cast<uint16_t>(random() & 0xFFF8); },
        [&random] { return static_cast<uint16_t>(random()); },
        [&random] { return static_cast<uint16_t>(random() % 2 == 0 ? 0 : 0xFFFF); },
        [] { return uint16_t{0}; },
        [] { return uint16_t{0xFFFF}; },
    };
}
