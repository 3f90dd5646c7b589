#pragma once

#include "prores/StreamBits.h"
#include "prores/StreamCoefficients.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

/// Whole ProRes frames (SMPTE RDD 36, 5), as a writer makes them. A frame is described by a `FrameSpec`,
/// whose defaults give an ordinary frame, and what doesn't fit into its fields is patched afterwards by means
/// of `FramePlaces`:
///
///     FrameSpec spec;
///     spec.width = 130;
///     spec.coefficients = NaturalPicture(1);
///     FramePlaces places;
///     Bytes frame = BuildFrame(spec, &places);
///     Patch16(frame, places.pictures[0].sliceTable, 0xffff); // the first slice claims too much
namespace stream {

/// Where a slice stands in the frame; all but `picture` and `index` in macroblocks.
struct SlicePlace {
    int picture; ///< in coded order
    int index;   ///< of the picture's slices
    int mbX;
    int mbY;
    int mbCount;
};

using QuantMatrix = std::array<uint8_t, 64>; ///< raster order

struct FrameSpec {
    int width = 64;
    int height = 32;       ///< lines of the frame
    int chromaFormat = 2;  ///< 2: 4:2:2; 3: 4:4:4; 0 and 1 are written with the blocks of 4:2:2
    int interlaceMode = 0; ///< 0: progressive; 1: top field first; 2: bottom field first; 3 is written as 1
    int log2SliceMbWidth = 3; ///< 0 to 3
    int alphaType = 0;        ///< 0: none; 1: 8 bits; 2: 16 bits; 3 and more are written as 2
    bool shortForm = false;   ///< the form without "icpf", matrices and alpha
    int version = 0;          ///< of the bitstream
    uint32_t encoderId = 0x74657374;
    int aspectAndRate = 0;
    int colorPrimaries = 1;
    int transferCharacteristic = 1;
    int matrixCoefficients = 1;
    int sourcePixelFormat = 0;               ///< 0 to 15
    std::optional<QuantMatrix> lumaMatrix;   ///< without it `loadLumaMatrix` is clear
    std::optional<QuantMatrix> chromaMatrix; ///< without it `loadChromaMatrix` is clear
    std::optional<int>
        headerSize;            ///< instead of what the fields take; the header is cut or filled with zeros
    int pictureHeaderSize = 8; ///< 0 to 31; no less than 8 bytes are written
    std::optional<int> sliceHeaderSize; ///< instead of 6, or 8 with alpha; up to 31

    /// Blocks of each macroblock; grey if there is no source.
    MacroblockSource coefficients;
    /// Quantisation index of each slice.
    std::function<int(const SlicePlace&)> quantIndex = [](const SlicePlace&) { return 4; };
    /// Alpha at a pixel of the frame, x and y in pixels; asked for whole macroblocks. Opaque if there is
    /// none.
    std::function<uint16_t(int x, int y)> alpha;
    /// May change the bytes of a finished slice, its size included.
    std::function<void(const SlicePlace&, Bytes&)> editSlice;
};

/// Offsets in a frame, in bytes.
struct PicturePlaces {
    size_t header;
    size_t sliceTable; ///< entry i is at `sliceTable` + 2 * i
    std::vector<size_t> slices;
};
struct FramePlaces {
    size_t header; ///< frame header
    std::vector<PicturePlaces> pictures;
};

/// The frame, with all sizes right. Throws std::length_error if a slice is too large for the slice table.
Bytes BuildFrame(const FrameSpec& spec, FramePlaces* places = nullptr);

/// The slices of a picture of `mbWidth` by `mbHeight` macroblocks in coded order.
std::vector<SlicePlace> SlicesOf(const FrameSpec& spec, int picture);

/// Lines of the `picture`-th coded picture.
int PictureHeight(const FrameSpec& spec, int picture);

/// Whether the `picture`-th coded picture of an interlaced frame holds the bottom field, the odd lines.
bool IsBottomField(const FrameSpec& spec, int picture);

} // namespace stream
