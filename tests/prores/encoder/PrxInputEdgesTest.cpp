#include "prores/encoder/PrxInputEdges.h"

#include "prores/encoder/InputConversion.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using input_model::Format;
using input_model::FormatOf;
using input_model::PackedPixels;
using input_model::Pixels;

Pixels RandomPixels(const Format& format, std::mt19937& random) {
    Pixels pixels;
    pixels.Fill(input_model::Fills(format, random)[0]);
    return pixels;
}

void ExpectBlocks(const Format& format, const PackedPixels& packed, int32_t chromaFormat,
                  const std::vector<int16_t>& expected) {
    for (const auto convert : {PrxGetConverter(format.pixelFormat, chromaFormat),
                               PrxGetScalarConverter(format.pixelFormat, chromaFormat)})
        ASSERT_EQ(Convert(convert, packed, chromaFormat), expected)
            << format.name << " to " << chromaFormat << ", " << packed.GetShape().columns << " by "
            << packed.GetShape().rows;
}

/// `packed` gives the blocks of the part of `pixels` that it has, extended by the model.
void ExpectExtended(const Format& format, const Pixels& pixels, const PackedPixels& packed) {
    const auto& shape = packed.GetShape();
    for (const int32_t chromaFormat : StreamsOf(format))
        ExpectBlocks(format, packed, chromaFormat,
                     BlocksOf(format, pixels, chromaFormat, shape.rows, shape.columns));
}

/// `packed` gives the blocks of all of `pixels`.
void ExpectBlocksOf(const Format& format, const Pixels& pixels, const PackedPixels& packed) {
    for (const int32_t chromaFormat : StreamsOf(format))
        ExpectBlocks(format, packed, chromaFormat, BlocksOf(format, pixels, chromaFormat, 16, 16));
}

} // namespace

TEST(PrxInputEdges, EverySizeIsExtendedAndNothingElseIsRead) {
    std::mt19937 random = MakeRandom();
    for (const Format& format : input_model::Formats()) {
        const Pixels pixels = RandomPixels(format, random);
        for (int32_t rows = 1; rows <= 16; ++rows)
            for (int32_t columns = 1; columns <= 16; ++columns)
                for (const auto guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before})
                    ExpectExtended(format, pixels,
                                   PackedPixels(format, pixels, {rows, columns, columns % 3, false}, guard));
    }
}

TEST(PrxInputEdges, RowsThatGoUpwardsAreExtendedDownTheirOwnWay) {
    std::mt19937 random = MakeRandom();
    for (const Format& format : input_model::Formats()) {
        const Pixels pixels = RandomPixels(format, random);
        for (int32_t rows = 1; rows <= 16; ++rows)
            for (const int32_t columns : {17 - rows, 16})
                for (const auto guard : {GuardedBytes::Guard::Behind, GuardedBytes::Guard::Before})
                    ExpectExtended(format, pixels,
                                   PackedPixels(format, pixels, {rows, columns, 5, true}, guard));
    }
}

TEST(PrxInputEdges, AWidthOfOnePixelGives16CopiesOnEachRow) {
    std::mt19937 random = MakeRandom();
    for (const Format& format : input_model::Formats()) {
        const Pixels pixels = RandomPixels(format, random);
        Pixels copies = pixels;
        for (auto& channel : copies.values)
            for (auto& row : channel)
                row.fill(row[0]);
        ExpectBlocksOf(format, copies, PackedPixels(format, pixels, {16, 1, 0, false}));
    }
}

TEST(PrxInputEdges, AStripOfOneRowRepeatsIt16Times) {
    std::mt19937 random = MakeRandom();
    for (const Format& format : input_model::Formats()) {
        const Pixels pixels = RandomPixels(format, random);
        Pixels copies = pixels;
        for (auto& channel : copies.values)
            channel.fill(channel[0]);
        ExpectBlocksOf(format, copies, PackedPixels(format, pixels, {1, 16, 0, false}));
    }
}

TEST(PrxInputEdges, AnOddRowOfPackedPixelsKeepsItsLastPairsChromaAndItsEvenPixelsLuma) {
    // The odd pixel of the pair, with luma 200, lies outside.
    const std::array<uint8_t, 4> vuy = {10, 20, 30, 200};
    const std::array<uint8_t, 4> yuv = {20, 10, 200, 30};
    alignas(64) std::array<int16_t, 512> blocks;
    for (const auto& [format, pair] : {std::pair{prxFormat2vuy, vuy}, std::pair{prxFormatYuvs, yuv}}) {
        PrxGetConverter(format, prxChroma422)({pair.data(), 4, 1, 1, blocks.data()}, 1);
        EXPECT_TRUE(std::all_of(&blocks[0], &blocks[256], [](int16_t s) { return s == (20 - 128) * 16; }));
        for (size_t i = 0; i < 64; ++i) {
            EXPECT_EQ(blocks[256 + i], (10 - 128) * 16);
            EXPECT_EQ(blocks[320 + i], (30 - 128) * 16);
        }
    }
}
