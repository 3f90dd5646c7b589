#pragma once

#include "prores/RgbModel.h"
#include "prores/encoder/PrxInputConverter.h"
#include "prores/encoder/PrxInputRgb.h"
#include "support/GuardedBytes.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <vector>

/// A model of RGB input, independent of the engine: the matrix from its definition, and the arithmetic step
/// by step, in single precision as the engine promises it and in double precision.
namespace rgb_input_model {

inline constexpr uint32_t macroblockFormats[] = {prxFormatArgb, prxFormatB64a, prxFormatR10k, prxFormatR210,
                                                 prxFormatN302};
inline constexpr uint32_t rowFormats[] = {prxFormatArgb, prxFormatB64a, prxFormatR10k, prxFormatR210};

using Codes = std::array<int32_t, 3>; ///< R, G, B

/// Widths of the ranges of luma and chroma.
struct Ranges {
    double luma;
    double chroma;
};
inline constexpr Ranges samples = {3504, 3584};
inline constexpr Ranges words = {56064, 14336};

template <typename T>
struct Ycbcr {
    T y;
    T cb;
    T cr;
    bool operator==(const Ycbcr&) const = default;
};

/// Y'CbCr of RGB in double precision.
inline Ycbcr<double> Exact(const std::array<double, 3>& rgb, int32_t colorMatrix, Ranges ranges, double max) {
    const double kr = colorMatrix == 1 ? 0.2126 : colorMatrix == 9 ? 0.2627 : 0.299;
    const double kb = colorMatrix == 1 ? 0.0722 : colorMatrix == 9 ? 0.0593 : 0.114;
    const double l = kr * rgb[0] + (1 - kr - kb) * rgb[1] + kb * rgb[2];
    return {ranges.luma / max * l, ranges.chroma / max * ((rgb[2] - l) / (2 * (1 - kb))),
            ranges.chroma / max * ((rgb[0] - l) / (2 * (1 - kr)))};
}
inline Ycbcr<double> Exact(const Codes& codes, int32_t colorMatrix, Ranges ranges, double max) {
    return Exact(std::array<double, 3>{double(codes[0]), double(codes[1]), double(codes[2])}, colorMatrix,
                 ranges, max);
}

/// The same in single precision, each operation rounded, terms in the order `order` of channels.
inline Ycbcr<float> Single(const Codes& codes, int32_t colorMatrix, Ranges ranges, double max,
                           const std::array<size_t, 3>& order = {1, 0, 2}) {
    Ycbcr<float> sum = {};
    for (size_t i = 0; i < 3; ++i) {
        std::array<double, 3> unit = {};
        unit[order[i]] = 1;
        const Ycbcr<double> factors = Exact(unit, colorMatrix, ranges, max);
        const auto code = static_cast<float>(codes[order[i]]);
        const auto add = [code, i](float& total, double factor) {
            const float term = ProductModel(static_cast<float>(factor), code);
            total = i == 0 ? term : SumModel(total, term);
        };
        add(sum.y, factors.y);
        add(sum.cb, factors.cb);
        add(sum.cr, factors.cr);
    }
    return sum;
}

inline std::vector<uint8_t> Pack(uint32_t format, const std::vector<Codes>& pixels, uint32_t alpha = 0x5A) {
    std::vector<uint8_t> bytes;
    for (const Codes& codes : pixels) {
        const auto pixel = PixelModel(format, codes, alpha);
        bytes.insert(bytes.end(), pixel.begin(), pixel.end());
    }
    return bytes;
}

/// `count` pixels: random, or, to find the ends of all ranges, each channel empty or full.
inline std::vector<Codes> RandomPixels(size_t count, int32_t max, bool extreme, std::mt19937& random) {
    std::vector<Codes> pixels(count);
    for (Codes& codes : pixels)
        for (int32_t& code : codes) {
            const auto bits = static_cast<uint32_t>(random());
            code = extreme ? (bits >> 31 != 0 ? max : 0) : static_cast<int32_t>(bits) & max;
        }
    return pixels;
}

/// The blocks of 16 by 16 pixels.
inline std::vector<int16_t> BlocksModel(const std::vector<Codes>& pixels, int32_t colorMatrix, double max) {
    std::vector<int16_t> blocks(12 * 64);
    for (size_t i = 0; i < pixels.size(); ++i) {
        const size_t x = i % 16;
        const size_t y = i / 16;
        const Ycbcr<float> pixel = Single(pixels[i], colorMatrix, samples, max);
        const size_t place = 8 * (y % 8) + x % 8;
        const size_t cb = std::array<size_t, 4>{4, 8, 6, 10}[2 * (y / 8) + x / 8];
        blocks[64 * (2 * (y / 8) + x / 8) + place] = static_cast<int16_t>(NearestEvenModel(pixel.y) - 1792);
        blocks[64 * cb + place] = static_cast<int16_t>(NearestEvenModel(pixel.cb));
        blocks[64 * (cb + 1) + place] = static_cast<int16_t>(NearestEvenModel(pixel.cr));
    }
    return blocks;
}

/// The words of a row of `v216`, which has whole pairs.
inline std::vector<uint16_t> RowModel(const std::vector<Codes>& pixels, int32_t colorMatrix, double max) {
    const auto at = [&](size_t x) {
        return Single(pixels[std::min(x, pixels.size() - 1)], colorMatrix, words, max);
    };
    const auto word = [](float value) { return static_cast<uint16_t>(NearestEvenModel(value) + 32768); };
    const auto filter = [](float left, float own, float right) {
        return SumModel(ProductModel(2, own), SumModel(right, left));
    };
    std::vector<uint16_t> row;
    for (size_t x = 0; x < pixels.size(); x += 2) {
        const auto left = at(x == 0 ? 0 : x - 1);
        const auto own = at(x);
        const auto right = at(x + 1);
        row.push_back(word(filter(left.cb, own.cb, right.cb)));
        row.push_back(word(SumModel(own.y, -28672)));
        row.push_back(word(filter(left.cr, own.cr, right.cr)));
        row.push_back(word(SumModel(right.y, -28672)));
    }
    return row;
}

/// The existing part of a macroblock in memory with nothing around it on one side.
struct Placement {
    int32_t rows = 16;
    int32_t columns = 16;
    size_t gap = 0;       ///< bytes between rows
    bool upwards = false; ///< each row stands before the one above it
    GuardedBytes::Guard guard = GuardedBytes::Guard::Behind;
};

/// Blocks by `convert` of the upper left of the pixels of a macroblock.
inline std::vector<int16_t> ConvertBlocks(PrxConvertMacroblock convert, uint32_t format,
                                          const std::vector<Codes>& pixels, int32_t colorMatrix,
                                          const Placement& placed = {}) {
    const size_t rowSize = static_cast<size_t>(placed.columns) * PixelBytesModel(format);
    const auto stride = static_cast<ptrdiff_t>(rowSize + placed.gap);
    const GuardedBytes source(static_cast<size_t>(stride * (placed.rows - 1)) + rowSize, placed.guard);
    const ptrdiff_t rowBytes = placed.upwards ? -stride : stride;
    uint8_t* top = source.data() + (placed.upwards ? (placed.rows - 1) * stride : 0);
    for (ptrdiff_t y = 0; y < placed.rows; ++y) {
        const auto first = pixels.begin() + 16 * y;
        std::ranges::copy(Pack(format, {first, first + placed.columns}), top + y * rowBytes);
    }
    const GuardedBytes blocks(12 * 64 * sizeof(int16_t), placed.guard);
    auto* first = reinterpret_cast<int16_t*>(blocks.data());
    convert({top, rowBytes, placed.rows, placed.columns, first}, colorMatrix);
    return {first, first + 12 * 64};
}

/// The words by `convert`, with memory on one side of source and result that may not be touched.
inline std::vector<uint16_t> ConvertRow(PrxConvertRgbRow convert, uint32_t format,
                                        const std::vector<Codes>& pixels, int32_t colorMatrix,
                                        GuardedBytes::Guard guard = GuardedBytes::Guard::Behind) {
    const auto packed = Pack(format, pixels);
    const GuardedBytes source(packed.size(), guard);
    std::ranges::copy(packed, source.data());
    std::vector<uint16_t> row((pixels.size() + 1) / 2 * 4);
    const GuardedBytes result(2 * row.size(), guard);
    convert(source.data(), static_cast<int32_t>(pixels.size()), colorMatrix, result.data());
    std::memcpy(row.data(), result.data(), result.size());
    return row;
}

} // namespace rgb_input_model
