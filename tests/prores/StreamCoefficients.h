#pragma once

#include "prores/StreamBits.h"

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

/// The entropy-coded stretches of a slice (SMPTE RDD 36, 7.1), as a writer makes them.
namespace stream {

/// Quantised coefficients of an 8 by 8 block in raster order. The DC is the coded one, 0 for mid grey. The
/// code takes AC values from -16383 to 16383, as far as a decoder follows, and DC values of 16 bits.
using Block = std::array<int16_t, 64>;

/// A macroblock's blocks in coded order. Luma: top left, top right, bottom left, bottom right. Chroma: top,
/// bottom in 4:2:2; top left, bottom left, top right, bottom right in 4:4:4.
struct Macroblock {
    std::array<Block, 4> luma{};
    std::array<Block, 4> cb{};
    std::array<Block, 4> cr{};
};

/// The macroblock at (x, y), in macroblocks, of the `picture`-th coded picture of the frame.
using MacroblockSource = std::function<Macroblock(int picture, int x, int y)>;

/// Raster position of the n-th coded coefficient.
using Scan = std::array<uint8_t, 64>;
const Scan& ScanOrder(bool interlaced);

/// Code books by what was coded before; for tests that write single codes.
inline constexpr uint8_t firstDcBook = 0xb8;
uint8_t DcBook(int previousDelta);
uint8_t RunBook(int previousRun);
uint8_t LevelBook(int previousLevel);

/// The DC code of the first block, and the one of a later block after a delta of `previousDelta` (3 before
/// the first).
void PutFirstDc(BitWriter& bits, int dc);
void PutDcDelta(BitWriter& bits, int delta, int previousDelta);

/// One component: all DC values, then all AC values, which go through the blocks one frequency after the
/// other. The number of blocks is a power of two.
Bytes CodeComponent(std::span<const Block> blocks, const Scan& scan);

/// Alpha samples (at most 255 for `depth` 8) in coding order; `depth` is 8 or 16.
Bytes CodeAlpha(std::span<const uint16_t> samples, int depth);

/// A macroblock source whose pictures have one colour. A step of a DC value is worth matrix * quantiser / 32
/// codes of 10 bits.
MacroblockSource FlatColour(int lumaDc, int cbDc, int crDc);

/// Coefficients such as a camera picture gives: slowly moving DC values, and AC values that decay with the
/// frequency. The same `seed` gives the same picture.
MacroblockSource NaturalPicture(uint32_t seed);

/// Coefficients at and near the ends of their range, many zeros and long runs between them.
MacroblockSource ExtremePicture(uint32_t seed);

} // namespace stream
