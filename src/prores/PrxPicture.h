#pragma once

#include "prores/PrxAlphaDecoder.h"
#include "prores/PrxHeaders.h"
#include "prores/PrxInverseTransform.h"
#include "prores/PrxMacroblock.h"
#include "prores/PrxOutputConverter.h"
#include "prores/PrxOutputTarget.h"
#include "prores/PrxSliceEntropy.h"

#include <cstddef>
#include <cstdint>

/// All that the workers need to know of one picture: a progressive frame or one field. Read only while the
/// picture's jobs run.
struct PrxPictureContext {
    PrxOutputTarget target;
    PrxPictureLayout layout;
    uint8_t* outBase;   ///< first output byte of this picture
    ptrdiff_t rowBytes; ///< bytes between output rows of this picture: twice the target's for two fields
    int32_t outHeight;  ///< rows that the target can take of this picture
    int32_t width;      ///< pixels of the frame, not reduced
    int32_t height;     ///< lines of this picture, not reduced
    PrxWriterSetup writerSetup;
    PrxOutputConverter converter;
    uint32_t chromaBlocksPerMb; ///< of both components: 4 in 4:2:2, 8 in 4:4:4
    PrxCoefficientOrder order;
    bool streamHasAlpha;          ///< slice headers have an alpha size, and alpha may be decoded or not
    PrxAlphaDecoder alphaDecoder; ///< null: alpha is not decoded
    uint32_t alphaSampleSize;     ///< bytes of an alpha sample; 0 without `alphaDecoder`
    PrxInverseTransform idct;
    int32_t idctDepth; ///< bits
    PrxQuantMatrix lumaMatrix;
    PrxQuantMatrix chromaMatrix;

    int32_t HShift() const { return writerSetup.hShift; }
    int32_t VShift() const { return writerSetup.vShift; }

    /// Coefficients kept of each block, and samples made of them, as a power of two.
    uint32_t Log2Block() const { return static_cast<uint32_t>(6 - HShift() - VShift()); }

    /// Whether the writer stores more than the macroblock of this reduction: it must not store in the
    /// picture.
    bool WriterOverruns() const { return converter.fullSizeOnly && (HShift() != 0 || VShift() != 0); }

    /// Bytes of a full-size row of a macroblock's alpha; 0 without `alphaDecoder`.
    uint32_t MbAlphaBytes() const { return 16 * alphaSampleSize; }
};
