#pragma once

#include "host/ColorConvert.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// How the samples of one row stand in memory. Words are little-endian. "C" is Cb at even pixels and Cr at
/// odd ones.
enum class ColorPacking : uint8_t {
    Pairs8,       ///< bytes C Y
    Pairs16,      ///< words C Y
    PairsAlpha8,  ///< bytes C Y A
    PairsAlpha16, ///< words C Y A
    PairsTens,    ///< C Y as ten bits each, three to a 32-bit word from its low end
    CbYCrA8,      ///< bytes
    AYCbCr8,      ///< bytes
    AYCbCr16,     ///< words
    AYCbCrFloat,  ///< 32-bit floats
    CbYCrTens,    ///< ten bits each in a 32-bit word, above two unused low bits
    SemiPlanar8,  ///< a plane of bytes Y, a plane of bytes C
    Planar8,      ///< planes of bytes Y, Cb, Cr
    Planar16,     ///< planes of words Y, Cb, Cr
};
inline constexpr size_t colorPackingCount = 13;

/// Codes that a sample may take in a buffer that is written.
struct ColorLimits {
    float least;
    float most;
};

/// What the codes of a layout mean.
struct ColorRange {
    double black;       ///< luma of black
    double lumaSpan;    ///< from black to white
    double zero;        ///< chroma of grey
    double chromaSpan;  ///< from the least to the most saturated colour
    double opaque;      ///< alpha of an opaque pixel; 0 is transparent
    ColorLimits luma;   ///< not for floats, which are written as they come
    ColorLimits chroma; ///< the same
};

/// All that is known of one layout.
struct ColorLayoutInfo {
    ColorLayout code;
    ColorPacking packing;
    ColorRange range;
    int32_t chromaWidth;  ///< pixels across that share a chroma sample: 1 or 2
    int32_t chromaHeight; ///< pixels down that share a chroma sample: 1 or 2
    int32_t groupPixels;  ///< pixels of the smallest unit of a row, in the first plane
    int32_t groupBytes;   ///< bytes of that unit
    int32_t planes;       ///< 1 to 3

    constexpr bool IsFloat() const { return packing == ColorPacking::AYCbCrFloat; }
    /// Whether a row is a string of C Y (A), one to a pixel, that may end at a lone pixel.
    constexpr bool IsPairs() const { return chromaWidth == 2 && planes == 1 && groupPixels == 1; }
    /// Chroma samples of a row of `width` pixels.
    constexpr int64_t ChromaCount(int64_t width) const { return (width + chromaWidth - 1) / chromaWidth; }
    /// Bytes that a row of `width` pixels takes at least, in the first plane.
    constexpr int64_t LeastRowBytes(int64_t width) const {
        return (width + groupPixels - 1) / groupPixels * groupBytes;
    }
    /// Bytes from one row of a chroma plane to the next.
    constexpr int64_t ChromaRowBytes(int64_t rowBytes) const { return planes == 3 ? rowBytes / 2 : rowBytes; }
    /// Bytes that a row of a chroma plane takes at least.
    constexpr int64_t LeastChromaRowBytes(int64_t width) const {
        return ChromaCount(width) * groupBytes * (planes == 2 ? 2 : 1);
    }
};

/// The layout of this number, or null.
const ColorLayoutInfo* FindColorLayout(int64_t code);
