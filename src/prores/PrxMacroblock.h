#pragma once

#include "prores/PrxFormats.h"

#include <cstddef>
#include <cstdint>

/// A transformed macroblock on its way to pixels, and where these go. Nothing needs an alignment beyond that
/// of its type. Writers may read all blocks whole, but no line of alpha from `rows << vShift` on.
struct PrxMacroblock {
    const int16_t* samples; ///< luma blocks 0 to 3, then Cb0, Cr0, Cb1, Cr1, ...; see `PrxMacroblockView`
    const uint8_t* alpha;   ///< top left sample at full size, in the output's sample type; null without alpha
    ptrdiff_t alphaStride;  ///< bytes between rows of alpha
    uint8_t* dst;           ///< top left pixel
    ptrdiff_t dstStride;    ///< bytes between rows of pixels
    int32_t rows;           ///< rows to store, 1 to 16 >> vShift
};

/// What all macroblocks of a picture have in common for a writer or a row pass.
struct PrxWriterSetup {
    int32_t hShift;
    int32_t vShift;
    int32_t colorMatrix; ///< 1, 6 or 9: BT.709, BT.601, BT.2020

    /// Nothing reads the pixels before their row of macroblocks is finished: a writer may store past the
    /// caches, and the row ends with a fence.
    bool streams = false;
};

/// Stores one macroblock: `rows` rows of 16 >> hShift pixels, at any alignment.
using PrxMacroblockWriter = void (*)(const PrxMacroblock& macroblock, const PrxWriterSetup& setup);

/// Samples of a macroblock by their place in the picture. `ChromaFormat` is a `PrxChromaFormat`.
template <int32_t ChromaFormat>
class PrxMacroblockView {
public:
    PrxMacroblockView(const int16_t* samples, int32_t hShift, int32_t vShift)
        : samples_(samples), log2Width_(3 - hShift), log2Height_(3 - vShift) {}

    /// Luma of pixel (x, y).
    int16_t Luma(int32_t x, int32_t y) const { return At(2 * (y >> log2Height_) + (x >> log2Width_), x, y); }

    /// Chroma sample (x, y) of the chroma plane: half as wide as the picture in 4:2:2.
    int16_t Cb(int32_t x, int32_t y) const { return At(ChromaBlock(x, y), x, y); }
    int16_t Cr(int32_t x, int32_t y) const { return At(ChromaBlock(x, y) + 1, x, y); }

private:
    /// Chroma blocks go down first, then across (SMPTE RDD 36).
    int32_t ChromaBlock(int32_t x, int32_t y) const {
        const int32_t column = ChromaFormat == prxChroma444 ? x >> log2Width_ : 0;
        return 4 + 2 * (2 * column + (y >> log2Height_));
    }
    int16_t At(int32_t block, int32_t x, int32_t y) const {
        const int32_t inX = x & ((1 << log2Width_) - 1);
        const int32_t inY = y & ((1 << log2Height_) - 1);
        return samples_[(((block << log2Height_) + inY) << log2Width_) + inX];
    }

    const int16_t* samples_;
    int32_t log2Width_;
    int32_t log2Height_;
};
