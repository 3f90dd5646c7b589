#pragma once

#include <cstddef>
#include <cstdint>

/// `v210` to `v216`: a group of four little-endian words of 32 bits, with three codes of 10 bits each, the
/// first in the low bits, becomes the twelve words of six pixels, with the codes in their high bits.

/// Unpacks `count` groups of 16 bytes, at any alignment, to 24 bytes each, and writes 8 bytes more.
using PrxV210Unpacker = void (*)(const uint8_t* groups, uint8_t* pixels, int32_t count);

/// The fastest form that this machine runs, and the reference form.
PrxV210Unpacker PrxSelectV210Unpacker();
void PrxUnpackV210Groups(const uint8_t* groups, uint8_t* pixels, int32_t count);

/// What serves for rows of `width` pixels that lie `rowBytes` apart, upwards or downwards, in the frame that
/// they belong to. Where that is less than whole groups take, it reads nothing and writes black.
PrxV210Unpacker PrxSelectV210UnpackerFor(int32_t width, ptrdiff_t rowBytes);

/// Groups that a row of `width` pixels, 1 or more, takes.
constexpr int32_t PrxCountV210Groups(int32_t width) { return (width + 5) / 6; }
