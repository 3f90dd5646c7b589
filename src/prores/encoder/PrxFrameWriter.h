#pragma once

#include "prores/PrxHeaders.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// Bytes of a frame before its first picture: its size, its tag and the frame header.
inline constexpr uint32_t prxFrameHeaderSize = 148;
inline constexpr uint32_t prxFirstPictureOffset = 8 + prxFrameHeaderSize;

/// The fields of a frame header that a decoder has no use for.
struct PrxFrameRateCodes {
    int32_t aspectRatio; ///< code of SMPTE RDD 36, 6.1.1: 0 to 3, 0 for unknown
    int32_t frameRate;   ///< likewise: 0 to 8
};

/// Code of an encoder's input format in the frame header; 0 for one that has none.
uint8_t PrxSourceFormatCode(uint32_t pixelFormat);

/// Writes the first `prxFirstPictureOffset` bytes of a frame of `frameSize` bytes in all, with both matrices.
/// `header.headerSize` and the load flags are taken for what is written; weights of 255 are written as 63.
void PrxWriteFrameHeader(const PrxFrameHeader& header, const PrxFrameRateCodes& codes, uint32_t frameSize,
                         uint8_t* out);

/// Adds zeros to a frame that takes the first `used` bytes of `output`, 50 to 65 of them, so that its size is
/// a multiple of 16; none at all if there is no room for them. Returns the frame's size.
size_t PrxAddStuffing(std::span<uint8_t> output, size_t used);
