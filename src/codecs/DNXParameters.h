#pragma once

#include "codecs/DNXRecords.h"

#include <cstdint>

struct CxEncodedFrame;

/// An uncompressed picture as the library sees it.
struct DNXPicture {
    uint32_t packing; ///< FourCC for `PixelConvert`
    DNXUncompressedParameters parameters;
};

/// Whether a frame is decoded with its alpha, which those of DNxHR alone can have.
bool HasAlpha(const DNXFrameInformation& information);
/// The picture that a compressed frame is decoded to.
/// @param frameType  as `DNX_GetInfoFromCompressedFrame` gives it
DNXPicture PictureToDecode(const DNXFrameInformation& information, int32_t frameType);
/// How a frame with or without alpha is decoded.
DNXDecodeOperation DecodeOperation(bool alpha);

/// What a picture of this size is to become. `frame` asks for a compression, and for alpha, which those of
/// DNxHD don't have.
DNXCompressedParameters ParametersToEncode(int32_t width, int32_t height, const CxEncodedFrame& frame);
/// The picture that becomes such a frame.
/// @param fieldOrder  as in `CxEncodedFrame`
DNXPicture PictureToEncode(const DNXCompressedParameters& compressed, uint32_t fieldOrder);
/// How a frame is encoded.
DNXEncodeOperation EncodeOperation();
