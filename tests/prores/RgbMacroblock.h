#pragma once

#include "RgbModel.h"
#include "prores/MacroblockFixture.h"
#include "prores/PrxWriters.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <random>
#include <vector>

/// A 4:4:4 macroblock with alpha, and what the RGB writers make of it.
class RgbMacroblock {
public:
    static constexpr int32_t side = 16;

    RgbMacroblock() : samples_(prxChroma444), alpha_(2 * side * side) {}

    void SetPixel(int32_t x, int32_t y, int32_t luma, int32_t cb, int32_t cr) {
        samples_.Luma(x, y) = static_cast<int16_t>(luma);
        samples_.Cb(x, y) = static_cast<int16_t>(cb);
        samples_.Cr(x, y) = static_cast<int16_t>(cr);
    }

    /// Sets every sample to what `next` gives, and alpha to random bytes.
    void Fill(std::mt19937& random, const std::function<int32_t()>& next) {
        samples_.Fill([&next] { return static_cast<int16_t>(next()); });
        std::generate(alpha_.begin(), alpha_.end(), [&] { return static_cast<uint8_t>(random()); });
    }

    YcbcrModel Ycbcr(int32_t x, int32_t y) const {
        return {samples_.Luma(x, y) + 3584, static_cast<double>(samples_.Cb(x, y)),
                static_cast<double>(samples_.Cr(x, y))};
    }

    /// How a writer of `format` is called for the whole macroblock.
    WriterCall Call(uint32_t format, int32_t colorMatrix, bool hasAlpha) const {
        return {.rowBytes = side * PixelBytesModel(format),
                .alphaRowBytes = hasAlpha ? side * AlphaBytesModel(format) : 0,
                .alpha = alpha_,
                .setup = {0, 0, colorMatrix}};
    }

    std::vector<uint8_t> Write(PrxMacroblockWriter writer, const WriterCall& call) const {
        return RunWriter(writer, samples_, call);
    }

    std::vector<uint8_t> Write(PrxMacroblockWriter writer, uint32_t format, int32_t colorMatrix,
                               bool hasAlpha) const {
        return Write(writer, Call(format, colorMatrix, hasAlpha));
    }

    /// What has to come out of that.
    std::vector<uint8_t> Expected(uint32_t format, int32_t colorMatrix, bool hasAlpha) const {
        std::vector<uint8_t> pixels;
        for (int32_t y = 0; y < side; ++y) {
            for (int32_t x = 0; x < side; ++x) {
                const auto codes = CodesModel(Ycbcr(x, y), colorMatrix, OutMaxModel(format), 32);
                const uint32_t alpha = AlphaModel(format, hasAlpha ? AlphaAt(format, x, y) : nullptr);
                const std::vector<uint8_t> pixel = PixelModel(format, codes, alpha);
                pixels.insert(pixels.end(), pixel.begin(), pixel.end());
            }
        }
        return pixels;
    }

private:
    const uint8_t* AlphaAt(uint32_t format, int32_t x, int32_t y) const {
        return &alpha_[static_cast<size_t>(y * side + x) * AlphaBytesModel(format)];
    }

    TestMacroblock samples_;
    std::vector<uint8_t> alpha_;
};

/// Ways to draw samples: of the transform's range, of all 16 bits, and the extremes.
inline std::vector<std::function<int32_t()>> SampleSources(std::mt19937& random) {
    const auto among = [&random](int32_t low, int32_t high) {
        return [&random, low, high] { return std::uniform_int_distribution<int32_t>(low, high)(random); };
    };
    const auto either = [&random](int32_t a, int32_t b) {
        return [&random, a, b] { return random() % 2 == 0 ? a : b; };
    };
    return {among(-4096, 4095), among(-32768, 32767), either(-32768, 32767), either(-3584, 3424),
            either(-3585, 0)};
}
