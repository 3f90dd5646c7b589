#pragma once

#include "prores/encoder/PrxSlice.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// Writes a picture (SMPTE RDD 36, 5.2) of finished slices, in their order, to the start of `output`: header,
/// slice table and slices, each followed by its alpha. Returns its size in bytes. No byte is written outside
/// `output`, which must have room for all.
size_t PrxWritePicture(std::span<const PrxSlice> slices, std::span<uint8_t> output);
