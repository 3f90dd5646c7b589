#pragma once

#include <cstdint>

/// The size rules of compressed frames in 64 bits, for callers that test a buffer against them. Free of
/// state: callable from any thread.

/// Pixels of a picture; 0 if a side is negative, and never above 2^40, where each bound below is beyond every
/// size of 32 bits. Pictures of more pixels, which no stream can hold, all get the `targetFrameSize` of 2^40.
int64_t PrxCountPixels(int32_t width, int32_t height);

/// The bytes that the colour of a compressed frame of `pixels` pixels (0 to 2^40) stays within: a multiple of
/// 4096. `pixelFormat` is that of the encoder's input, or 0 for none: a 4:2:2 input lowers the bound of the
/// 4:4:4:4 codecs.
int64_t PrxGetTargetSize(uint32_t codecType, int64_t pixels, uint32_t pixelFormat);

/// The most bytes that a compressed frame takes, its alpha included: `PrxGetMaxFrameSize` without its limit.
int64_t PrxGetFrameSizeBound(uint32_t codecType, bool hasAlpha, int32_t width, int32_t height);
