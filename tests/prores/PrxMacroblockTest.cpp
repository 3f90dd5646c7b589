// Where the samples of a macroblock stand. Each sample's value is its position among all samples.

#include "prores/PrxMacroblock.h"

#include "Reductions.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <numeric>
#include <string>

namespace {

constexpr size_t mostSamples = 12 * 64;

std::array<int16_t, mostSamples> Positions() {
    std::array<int16_t, mostSamples> samples;
    std::iota(samples.begin(), samples.end(), int16_t{0});
    return samples;
}

/// The blocks of a component by their place.
struct BlockGrid {
    int32_t topLeft;
    int32_t topRight;
    int32_t bottomLeft;
    int32_t bottomRight;

    int32_t At(bool right, bool bottom) const {
        if (bottom) return right ? bottomRight : bottomLeft;
        return right ? topRight : topLeft;
    }
};

using Sample = std::function<int16_t(int32_t x, int32_t y)>;

/// Checks a component that is `columns` blocks wide and two high: blocks of the reduced size follow each
/// other without a gap, each stored row by row.
void ExpectBlocks(const Sample& sample, const BlockGrid& grid, int32_t columns, Reduction reduction) {
    const int32_t width = 8 >> reduction.hShift;
    const int32_t height = 8 >> reduction.vShift;
    for (int32_t y = 0; y < 2 * height; ++y) {
        for (int32_t x = 0; x < columns * width; ++x) {
            const int32_t block = grid.At(x >= width, y >= height);
            EXPECT_EQ(sample(x, y), block * width * height + y % height * width + x % width)
                << "sample " << x << ", " << y << " reduced by 2^" << reduction.hShift << ", 2^"
                << reduction.vShift;
        }
    }
}

template <int32_t ChromaFormat>
void ForEachReduction(
    const std::function<void(const PrxMacroblockView<ChromaFormat>& view, Reduction reduction)>& check) {
    const auto samples = Positions();
    for (const Reduction reduction : reductions)
        check({samples.data(), reduction.hShift, reduction.vShift}, reduction);
}

TEST(PrxMacroblock, LumaBlocksGoAcrossFirstAtEachReduction) {
    const auto check = [](const auto& view, Reduction reduction) {
        ExpectBlocks([&](int32_t x, int32_t y) { return view.Luma(x, y); }, {0, 1, 2, 3}, 2, reduction);
    };
    ForEachReduction<prxChroma422>(check);
    ForEachReduction<prxChroma444>(check);
}

TEST(PrxMacroblock, ChromaBlocksOf422GoDownAtEachReduction) {
    ForEachReduction<prxChroma422>([](const auto& view, Reduction reduction) {
        ExpectBlocks([&](int32_t x, int32_t y) { return view.Cb(x, y); }, {4, -1, 6, -1}, 1, reduction);
        ExpectBlocks([&](int32_t x, int32_t y) { return view.Cr(x, y); }, {5, -1, 7, -1}, 1, reduction);
    });
}

TEST(PrxMacroblock, ChromaBlocksOf444GoDownFirstThenAcrossAtEachReduction) {
    ForEachReduction<prxChroma444>([](const auto& view, Reduction reduction) {
        ExpectBlocks([&](int32_t x, int32_t y) { return view.Cb(x, y); }, {4, 8, 6, 10}, 2, reduction);
        ExpectBlocks([&](int32_t x, int32_t y) { return view.Cr(x, y); }, {5, 9, 7, 11}, 2, reduction);
    });
}

} // namespace
