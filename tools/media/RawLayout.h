#pragma once

#include "media/AvHandles.h"

#include <cstdint>
#include <vector>

/// The code under which the codec registry knows a track: the container's code, first character most
/// significant, with these exceptions.
///
/// - Uncompressed RGB goes by its bytes in memory: 24 for R, G, B, 32 for A, R, G, B, `BGRA`, `24BG`, `RGBA`,
///   `ABGR`. QuickTime's `raw ` of another depth is that depth, which no codec claims.
/// - Uncompressed 4:2:2 in the order Cb, Y, Cr, Y is `2vuy` or `uyvy`.
/// - A track of a codec that back-ends know, with none of the codes by which they know it (as in AVI,
/// Matroska
///   and transport streams), goes by one of these.
/// @return 0 for a track with no code at all
uint32_t RegistryFourCC(const AVCodecParameters& parameters);

/// Whether the rows of an uncompressed track stand bottom row first.
bool IsBottomUp(const AVCodecParameters& parameters);

/// Brings the rows of uncompressed pictures to the form that the codecs expect: `PixelConvert::CalcRowBytes`
/// bytes each, top row first.
class RowPacker {
public:
    /// @param width, height  1 to 65535
    RowPacker(uint32_t fourCC, int width, int height, bool bottomUp);

    /// False for a code that has no rows of pixels: samples are used as they are.
    bool IsNeeded() const { return rowBytes > 0; }
    /// Bytes of a packed picture.
    int64_t PictureBytes() const { return int64_t{rowBytes} * height; }
    /// @param data  one picture of `size` bytes with rows of any even length, which is told from the size
    /// @return the picture, in `data` itself or in memory of this object; null if it is too short
    uint8_t* Pack(uint8_t* data, int64_t size);

private:
    int64_t SourceRowBytes(int64_t size) const;

    int32_t rowBytes;
    int64_t pixelBytes; ///< bytes of a row that hold pixels
    int height;
    bool bottomUp;
    std::vector<uint8_t> packed;
};
