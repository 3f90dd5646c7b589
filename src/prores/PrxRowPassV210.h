#pragma once

#include "prores/PrxRowPass.h"

#include <cstdint>

/// The pass that ends a row in `v210`, from `w216` pixels in the row buffer: six pixels become four 32-bit
/// little-endian words of three 10-bit codes each. A last, partial group is filled with black: 0x1000 for a
/// missing pixel's luma and 0x8000 for a missing pair's chroma, as words.
///
/// Stretches begin and end inside of groups. A group is written whole if any of its pixels lies in the
/// stretch; its pixels outside are taken from the row buffer too. So the row buffer must hold defined pixels
/// across, black in the columns of refused slices, and the two stretches that share a group write the same.
/// Reads nothing of a row of the row buffer behind the picture's width made even; writes nothing behind
/// (width + 5) / 6 * 16 bytes of a target row, and nothing at all if `targetRowBytes` is below that.

/// The fastest form that this machine runs.
PrxRowPass PrxSelectV210RowPass();

/// The reference form of the same.
void PrxScalarV210RowPass(const PrxRowPassJob& job, const PrxWriterSetup& setup);

/// Packs `count` whole groups: from 24 bytes of `w216` to 16 bytes of `v210` each, at any alignment.
using PrxV210Packer = void (*)(const uint8_t* pixels, uint8_t* groups, int32_t count);

/// The reference form of the same.
void PrxPackV210Groups(const uint8_t* pixels, uint8_t* groups, int32_t count);

/// The pass with `pack` for the groups that lie in the picture as a whole.
void PrxRunV210RowPass(const PrxRowPassJob& job, PrxV210Packer pack);
