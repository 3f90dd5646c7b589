#pragma once

#include "prores/encoder/PrxAlphaCoder.h"
#include "prores/encoder/PrxForwardTransform.h"
#include "prores/encoder/PrxInputConverter.h"
#include "prores/encoder/PrxPlaneCoder.h"
#include "prores/encoder/PrxQuantise.h"
#include "prores/encoder/PrxRowPreparation.h"

#include <cstddef>
#include <cstdint>

/// A picture to encode: a whole frame, or every second row of one.
struct PrxPictureSource {
    uint8_t* rows;        ///< first pixel of the top row
    ptrdiff_t rowBytes;   ///< from one row of the picture to the next; may be negative
    uint32_t pixelFormat; ///< see `PrxFormats.h`
    int32_t width;        ///< pixels, 1 or more
    int32_t height;       ///< rows of the picture; 0 for a field of a frame of one row
    bool isField;         ///< one of two fields

    /// From one row of the frame to the next.
    ptrdiff_t FrameRowBytes() const { return isField ? rowBytes / 2 : rowBytes; }
};

/// What a run of the jobs does with a picture.
enum class PrxCodingPass {
    Measure, ///< read the source, transform it, and count what its slices take
    Write,   ///< write the slices, each at its quantisation index
    Fit,     ///< write those slices again that pass their budget, within it
};

/// All that the workers need to know of a picture. Read only while the jobs run.
struct PrxEncodePicture {
    PrxPictureSource source;
    int32_t chromaFormat;    ///< 2 or 3
    int32_t colorMatrix;     ///< 1, 6 or 9
    int32_t matrixIndex;     ///< see `PrxLumaWeights`
    uint32_t blocksPerMb;    ///< 8 or 12
    int32_t sliceHeaderSize; ///< 6, or 8 with alpha
    PrxAlphaCoder alphaCoder;
    PrxRowPreparer preparer;
    PrxConvertMacroblock convert;
    PrxForwardTransform transform;
    PrxQuantiser quantise;
    PrxPlaneCoder coder;
    PrxCodingPass pass;
};
