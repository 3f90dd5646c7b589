#pragma once

#include "host/ColorLayout.h"
#include "host/ColorMatrix.h"
#include "host/Export.h"
#include "host/Image.h"

#include <array>
#include <cstdint>

/// Working samples of one row, in single precision and in the codes of the layout. All lines belong to the
/// scratch memory of the caller, have room for the row, and do not overlap.
struct ColorLines {
    float* luma;
    float* cb;       ///< one to a pixel
    float* cr;       ///< one to a pixel
    float* alpha;    ///< reading: the code of opaque where the layout has no alpha
    float* chroma;   ///< Cb and Cr in turn, a pair to two pixels, of layouts that have no more
    uint16_t* words; ///< ten-bit samples in order, of the layout that needs them
};

/// One row of a buffer in memory: its planes from the first on, and how much of it there is.
struct ColorRow {
    std::array<uint8_t*, 3> plane;
    /// Luma samples. For strings of C Y the elements of the string, which is one more than pixels where the
    /// last pair is whole and its second pixel is not in the picture.
    int64_t count;
};

/// One row of 8-bit samples on the way to 8-bit pixels.
struct ColorByteRow {
    const uint8_t* luma;
    /// Chroma, a sample to two pixels, as 2^7 times the distance from 128. The one behind the last sample is
    /// read.
    const int16_t* cb;
    const int16_t* cr;
};

/// Float channels and samples are taken as 0 if they are not numbers and limited to this, the range of a
/// half.
inline constexpr float colorFloatLimit = 65504.0f;

/// Chroma of a single pixel is limited to this many codes before it is filtered: up to here lines tell a
/// fraction of a code, so that what is left of strong colours that cancel out is exact. Beyond it every
/// layout with fewer chroma samples than pixels is at its limit by far.
inline constexpr float colorChromaLimit = 1 << 20;

/// The stages of a conversion, each over one row. All stages of all instruction sets give the same bits. No
/// byte outside the `count` elements is read or written in a buffer or an image, and nothing is aligned.
struct ColorKernels {
    /// Buffer to `luma`, `alpha` if the layout has it, and `cb` and `cr` or `chroma`.
    using Unpack = void (*)(const ColorRow& row, const ColorLines& lines);
    /// The same lines to a buffer; limits and rounds to nearest, except for floats.
    using Pack = void (*)(const ColorLines& lines, const ColorRange& range, const ColorRow& row);
    /// `chroma` to `cb` and `cr`, twice as many: a sample stands at the first pixel of each two, and the
    /// second gets the mean of its neighbours. Reads the pair behind the last.
    using Upsample = void (*)(const ColorLines& lines, int64_t pairs);
    /// `cb` and `cr` to `chroma`, half as many: weights 1 2 1 about the first pixel of each two. Reads two
    /// samples before the first pixel and one behind the last, if their number is odd.
    using Downsample = void (*)(const ColorLines& lines, int64_t pairs);
    /// `line` = `line` * `weight` + `other` * (1 - `weight`).
    using Blend = void (*)(float* line, const float* other, float weight, int64_t count);
    /// Lines to the interleaved channels of an image. Integer channels are limited and rounded to nearest.
    using ToImage = void (*)(const ColorLines& lines, const ColorToRgb& matrix, uint8_t* pixels,
                             int64_t count);
    /// The interleaved channels of an image to lines, not limited and not rounded.
    using FromImage = void (*)(const uint8_t* pixels, const ColorFromRgb& matrix, const ColorLines& lines,
                               int64_t count);
    /// `line` = 3/4 `own` + 1/4 `other` of two rows of chroma bytes, as `ColorByteRow` takes it.
    using BlendBytes = void (*)(const uint8_t* own, const uint8_t* other, int16_t* line, int64_t count);
    /// Planes of bytes to the interleaved channels of an image of bytes, in integers of 16 bits. Chroma is
    /// brought to full rate as `Upsample` does it. Results are within 1/50 step of those of `ToImage` before
    /// they are rounded.
    using BytesToImage = void (*)(const ColorByteRow& row, const ColorBytesToRgb& matrix, uint8_t* pixels,
                                  int64_t count);

    int64_t target; ///< the instruction set, as Highway's bit; 0 for the scalar form
    struct Packing {
        Unpack unpack;
        Pack pack;
    };
    std::array<Packing, colorPackingCount> packings; ///< by `ColorPacking`
    Upsample upsample;
    Downsample downsample;
    Blend blend;
    BlendBytes blendBytes;
    BytesToImage bytesToImage;
    /// Choose for a kind of image. `precise` computes in double precision, which floats need: their values
    /// have no bound that would keep an error in proportion to white.
    ToImage (*toImage)(ImageDataKind kind, bool precise);
    FromImage (*fromImage)(ImageDataKind kind, bool precise);
};

/// The form that is written to be read; all others give its bits.
CORVEX_HOST_API const ColorKernels& ScalarColorKernels();
/// The form for the machine's best instruction set, or the scalar one if it has no vectors. Chosen at each
/// call, so that `hwy::SetSupportedTargetsForTest` has effect.
CORVEX_HOST_API const ColorKernels& VectorColorKernels();

/// `CxYUV2RGBTagList` and `CxRGB2YUVTagList` with kernels of the caller's choice.
CORVEX_HOST_API bool ConvertColorToImage(Image* image, const TagList& tags, const ColorKernels& kernels);
CORVEX_HOST_API void* ConvertColorFromImage(Image* image, const TagList& tags, const ColorKernels& kernels);
