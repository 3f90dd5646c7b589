#pragma once

#include <cstddef>
#include <cstdint>

/// Reads the alpha plane of a slice (SMPTE RDD 36): `width` by `rows` samples go to `dst`, whose rows
/// are `dstStride` bytes apart, in the sample type of the output format: the address and the distance are
/// multiples of that type's size. Returns whether every sample has the stream's largest value. Bits that run
/// out read as 0, so the area is always filled: each missing value is one more than the value before it.
/// Kept.
using PrxAlphaDecoder = bool (*)(const uint8_t* data, size_t size, uint8_t* dst, ptrdiff_t dstStride,
                                 int32_t width, int32_t rows);

/// The decoder from a stream of `alphaType` 1 (8 bits) or 2 (16 bits) to the alpha samples of `pixelFormat`;
/// null for any other type and for a format without alpha.
PrxAlphaDecoder PrxSelectAlphaDecoder(uint32_t alphaType, uint32_t pixelFormat);
