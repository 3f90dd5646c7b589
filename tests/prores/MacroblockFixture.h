#pragma once

#include "prores/PrxMacroblock.h"
#include "support/GuardedBytes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

/// A macroblock as three planes of samples, and the blocks that a writer of full size takes.
class TestMacroblock {
public:
    explicit TestMacroblock(int32_t chromaFormat) : chromaFormat_(chromaFormat) {}

    int32_t ChromaFormat() const { return chromaFormat_; }
    int32_t ChromaWidth() const { return chromaFormat_ == prxChroma444 ? 16 : 8; }
    int16_t& Luma(int32_t x, int32_t y) { return luma_[Index(x, y)]; }
    int16_t& Cb(int32_t x, int32_t y) { return cb_[Index(x, y)]; }
    int16_t& Cr(int32_t x, int32_t y) { return cr_[Index(x, y)]; }
    int16_t Luma(int32_t x, int32_t y) const { return luma_[Index(x, y)]; }
    int16_t Cb(int32_t x, int32_t y) const { return cb_[Index(x, y)]; }
    int16_t Cr(int32_t x, int32_t y) const { return cr_[Index(x, y)]; }

    /// Gives each sample a value of its own from `next`.
    void Fill(const std::function<int16_t()>& next) {
        for (auto* plane : {&luma_, &cb_, &cr_})
            std::generate(plane->begin(), plane->end(), next);
    }

    /// Four luma blocks across and down, then pairs of Cb and Cr: down, and for 4:4:4 the same again for the
    /// right half.
    std::vector<int16_t> Blocks() const {
        std::vector<int16_t> blocks;
        for (const auto& [x, y] : {At{0, 0}, At{8, 0}, At{0, 8}, At{8, 8}})
            Append(luma_, x, y, &blocks);
        for (int32_t x = 0; x < ChromaWidth(); x += 8) {
            for (const int32_t y : {0, 8}) {
                Append(cb_, x, y, &blocks);
                Append(cr_, x, y, &blocks);
            }
        }
        return blocks;
    }

private:
    using Plane = std::array<int16_t, 256>;
    struct At {
        int32_t x;
        int32_t y;
    };
    static size_t Index(int32_t x, int32_t y) { return static_cast<size_t>(16 * y + x); }
    static void Append(const Plane& plane, int32_t left, int32_t top, std::vector<int16_t>* blocks) {
        for (int32_t y = top; y < top + 8; ++y)
            for (int32_t x = left; x < left + 8; ++x)
                blocks->push_back(plane[Index(x, y)]);
    }

    int32_t chromaFormat_;
    Plane luma_ = {};
    Plane cb_ = {};
    Plane cr_ = {};
};

/// Ways to fill a macroblock: samples in the range of the writers, of all 16 bits, and extremes.
inline std::vector<std::function<int16_t()>> SampleFills(std::mt19937& random) {
    const auto between = [&random](int32_t lowest, int32_t highest) {
        return [&random, lowest, highest] {
            return static_cast<int16_t>(std::uniform_int_distribution<int32_t>(lowest, highest)(random));
        };
    };
    return {between(-4100, 4100),
            between(-512, 512),
            between(INT16_MIN, INT16_MAX),
            [] { return INT16_MIN; },
            [] { return INT16_MAX; },
            [odd = false]() mutable { return (odd = !odd) ? INT16_MIN : INT16_MAX; }};
}

/// How a writer is called.
struct WriterCall {
    int32_t rows = 16;
    size_t rowBytes;                 ///< what 16 pixels take
    size_t gap = 0;                  ///< bytes between rows of pixels, and of alpha
    size_t alphaRowBytes = 0;        ///< what the alpha of 16 pixels takes; 0 without alpha
    std::vector<uint8_t> alpha = {}; ///< 16 rows
    GuardedBytes::Guard guard = GuardedBytes::Guard::Behind;
    PrxWriterSetup setup = {0, 0, 1};
};

/// Calls a writer on memory that holds no byte more than it may touch on one side, and returns its rows with
/// the gaps, which held 0x5A.
inline std::vector<uint8_t> RunWriter(PrxMacroblockWriter writer, const TestMacroblock& macroblock,
                                      const WriterCall& call) {
    const std::vector<int16_t> blocks = macroblock.Blocks();
    const GuardedBytes samples(blocks.size() * sizeof(int16_t), call.guard);
    std::memcpy(samples.data(), blocks.data(), samples.size());

    const auto rows = static_cast<size_t>(call.rows);
    const size_t stride = call.rowBytes + call.gap;
    const GuardedBytes pixels(rows * stride - call.gap, call.guard);
    std::fill(pixels.begin(), pixels.end(), uint8_t{0x5A});

    const bool hasAlpha = call.alphaRowBytes != 0;
    const size_t alphaStride = call.alphaRowBytes + call.gap;
    const GuardedBytes alpha(hasAlpha ? rows * alphaStride - call.gap : 1, call.guard);
    for (size_t row = 0; hasAlpha && row < rows; ++row)
        std::memcpy(alpha.data() + row * alphaStride, call.alpha.data() + row * call.alphaRowBytes,
                    call.alphaRowBytes);

    writer({reinterpret_cast<const int16_t*>(samples.data()), hasAlpha ? alpha.data() : nullptr,
            static_cast<ptrdiff_t>(alphaStride), pixels.data(), static_cast<ptrdiff_t>(stride), call.rows},
           call.setup);
    return {pixels.begin(), pixels.end()};
}
