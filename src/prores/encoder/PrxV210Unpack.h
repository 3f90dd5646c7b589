#pragma once

#include "prores/encoder/PrxRowBuffer.h"
#include "prores/encoder/PrxStrip.h"

#include <cstdint>

/// `v210` to `v216`: a group of four little-endian words of 32 bits, with three codes of 10 bits each, the
/// first in the low bits, becomes the twelve words of six pixels, with the codes in their high bits.

/// Unpacks `count` groups of 16 bytes, at any alignment, to 24 bytes each, and writes 8 bytes more.
using PrxV210Unpacker = void (*)(const uint8_t* groups, uint8_t* pixels, int32_t count);

/// The fastest form that this machine runs, and the reference form.
PrxV210Unpacker PrxSelectV210Unpacker();
void PrxUnpackV210Groups(const uint8_t* groups, uint8_t* pixels, int32_t count);

/// Unpacks the rows of `strip` into those of `buffer`, which has room for them: whole groups, and so up to
/// five pixels behind the width. Rows that lie closer together, upwards or downwards, than whole groups of
/// the width take are not read, and come out black.
void PrxUnpackV210Rows(const PrxStrip& strip, const PrxRowBuffer& buffer);
