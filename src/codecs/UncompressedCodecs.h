#pragma once

#include "framework/CxAbstractAVCodec.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

/// The back-end for samples that are plain pixel rows: one whole frame a sample, top row first, in the
/// packing that the FourCC names, with the row size of `PixelConvert::CalcRowBytes`. Keeps no state between
/// frames.
class UncompressedCodecs : public CxAbstractAVCodec {
public:
    using CxAbstractAVCodec::CxAbstractAVCodec;

    /// Claims the codes of the format table and those that are decoded only, and offers one encoder a format.
    /// @return true
    static bool FillCodecInfo(std::set<uint32_t>& decoderFourCCs, std::vector<CxEncoderInfo>& encoders,
                              std::string& name);
    /// A copy of the format table: each FourCC that can be encoded, with its display name. Safe from any
    /// thread.
    static std::map<uint32_t, std::string> GetFormats();

    /// Decodes the sample of index `frame`. The row size follows from the source's width; how much is
    /// converted, from the image: a smaller image takes the top left part of the frame.
    /// @return `CxAV_INVALID_STATE` without a source or image; `CxAV_READ_FAILED` if the source has no such
    ///         sample; `CxAV_FAILED` if the packing can't be read, or the sample or its rows are too small
    ///         for the image, whose pixels are not touched then
    CxAVError GetDecodedFrame(int32_t frame, Image*& image) override;
    int32_t GetWidth() override { return width; }
    int32_t GetHeight() override { return height; }
    /// Takes size and code from the source. Any code opens.
    CxAVError Open() override;
    /// Writes the image in the packing `frame.codecTag` into a new buffer, which is stored in `frame.data`
    /// with its size and belongs to the caller. A buffer that `frame.data` named before is not used and stays
    /// the caller's. On failure `frame` is as it was.
    /// @return `CxAV_INVALID_STATE` without an image, for a frame of 4 GiB or more, if the conversion fails
    ///         or if memory is short; `CxAV_UNSUPPORTED` for a tag that the format table doesn't have
    CxAVError EncodeFrame(Image*& image, CxEncodedFrame& frame) override;

private:
    void ReadTrack();

    int32_t width = 0;   ///< pixels
    int32_t height = 0;  ///< pixels
    uint32_t fourCC = 0; ///< the source's
};

/// The registered factory, for `CxAbstractAVCodec::isTypeOf` inside the module; null if it refused.
extern CxAbstractCodecFactory* g_UncompressedFactory;
