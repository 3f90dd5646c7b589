#pragma once

#include "prores/PrxBufferPiece.h"

#include <array>
#include <cstdint>

/// Frame and picture headers (SMPTE RDD 36), and the shorter frame form of early streams. Any
/// bytes may be given: what lies past the end of the chain reads as 0, and only what is said here is refused.

using PrxQuantMatrix = std::array<uint8_t, 64>; ///< raster order

struct PrxFrameHeader {
    uint32_t headerSize;   ///< bytes from the header's start to the first picture
    uint32_t width;        ///< pixels
    uint32_t height;       ///< lines of the frame
    uint8_t chromaFormat;  ///< 2: 4:2:2; 3: 4:4:4; 0 and 1 are passed on
    uint8_t interlaceMode; ///< 0: progressive; 1: top field first; 2: bottom field first; 3 is passed on
    uint8_t colorPrimaries;
    uint8_t transferCharacteristic;
    uint8_t matrixCoefficients;
    uint8_t sourcePixelFormat; ///< code of the encoder's input format, 0 for none
    uint8_t alphaType;         ///< 0: none; 1: 8 bits; 2: 16 bits; others are passed on
    bool loadLumaMatrix;
    bool loadChromaMatrix;
    PrxQuantMatrix lumaMatrix;
    PrxQuantMatrix chromaMatrix;
};

/// Offset of the frame header in a frame: 0 in the short form, 8 in the standard one, whatever its tag.
uint32_t PrxFrameHeaderOffset(const PrxBufferPiece& frame);

/// Reads the header at the chain's start. Returns `headerSize`, or 0 for a header that is refused: a size
/// below 20 or a version above 1; `header` then stays as it was. `headerSize` is what the stream says, also
/// if the matrices that were read reach past it.
uint32_t PrxParseFrameHeader(const PrxBufferPiece& chain, PrxFrameHeader* header);

/// Reads the picture header at the chain's start. Returns its size in bytes, or 0 if the size is below 8 or
/// the chain holds fewer bytes than that; `log2SliceMbWidth` then stays as it was. The slice count in the
/// header isn't read: the layout follows from the frame.
uint32_t PrxReadPictureHeader(const PrxBufferPiece& chain, uint32_t* log2SliceMbWidth);

/// The `pictureSize` field, in bytes, of the picture at the chain's start.
uint32_t PrxGetPictureSize(const PrxBufferPiece& chain);

/// How a picture is cut into slices.
struct PrxPictureLayout {
    PrxBufferPiece sliceTable; ///< the picture's bytes from its slice table on
    uint32_t mbWidth;          ///< macroblocks across
    uint32_t mbHeight;         ///< rows of macroblocks
    uint32_t sliceMbWidth;     ///< macroblocks in a full slice: 1, 2, 4 or 8
    uint32_t slicesPerRow;
    uint32_t sliceCount;
};

/// Lays out the picture at the chain's start, `width` pixels by `height` lines (of the field, if it is one).
/// All zero if the picture header is refused.
void PrxInitPictureLayout(PrxPictureLayout* layout, const PrxBufferPiece& picture, uint32_t width,
                          uint32_t height);

/// Macroblocks along a side of `pixels` pixels, at most 2^32 - 16.
constexpr uint32_t PrxMbCount(uint32_t pixels) { return (pixels + 15) / 16; }

/// Slices of a row of `mbWidth` macroblocks.
uint32_t PrxSlicesPerRow(uint32_t log2SliceMbWidth, uint32_t mbWidth);

/// Macroblocks of the slice that comes next in a row with `mbLeft` (at least 1) macroblocks left.
uint32_t PrxNextSliceWidth(uint32_t sliceMbWidth, uint32_t mbLeft);
