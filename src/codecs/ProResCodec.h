#pragma once

#include "framework/CxAbstractAVCodec.h"
#include "prores/Prx.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

/// The back-end for Apple ProRes, which joins the module's own engine to the codec interface. One sample is
/// one frame. Pixels go through 16-bit ARGB, and a codec has one engine worker for each processor.
class ProResCodec : public CxAbstractAVCodec {
public:
    using CxAbstractAVCodec::CxAbstractAVCodec;

    /// Claims the six ProRes codes and, unless `g_IsPalisade` is set, offers an encoder for each.
    /// @return true
    static bool FillCodecInfo(std::set<uint32_t>& decoderFourCCs, std::vector<CxEncoderInfo>& encoders,
                              std::string& name);

    /// Decodes the sample of index `frame`, and writes "Compression" (the encoder name of the track's code)
    /// and "FrameFormat" ("Progressive", "Interlaced(TF)" or "Interlaced(BF)") into the image's table
    /// "Metadata". The image may be smaller than the track, and then takes the top left part. Where a slice
    /// is damaged the image shows what the frame decoded before had there.
    /// @return `CxAV_INVALID_STATE` without a source or before `Open`; `CxAV_FAILED` if there is no such
    /// sample,
    ///         the engine refuses it, memory is short, or there is no image or one that is larger than the
    ///         track
    CxAVError GetDecodedFrame(int32_t frame, Image*& image) override;
    int32_t GetWidth() override { return width; }
    int32_t GetHeight() override { return height; }
    /// Takes the size from the source and starts the engine's workers, which stay when it is run again. Any
    /// code opens.
    /// @return `CxAV_INVALID_STATE` without a source; `CxAV_FAILED` if the workers can't start
    CxAVError Open() override;
    /// Takes the size, and nothing else, from `settings`; `extraData` stays as it is.
    /// @return `CxAV_OK`
    CxAVError SetEncoderSettings(CxVideoSettings& settings) override;
    /// Encodes the whole image, whatever size was set, as the codec type `frame.codecTag`. `frame.fieldOrder`
    /// 2 and 3 give interlaced frames, any other value progressive ones; `frame.flags` asks for alpha, which
    /// codes of the 4:2:2 family don't have. Without `frame.data` a buffer for the largest possible frame is
    /// allocated, which is the caller's from then on, also after a failure. Workers start with the first
    /// frame, and stay.
    /// @return `CxAV_INVALID_STATE` without an image or a buffer that takes its pixels as `b64a`;
    ///         `CxAV_FAILED` for an image without pixels or with more than 65535 across or down, for
    ///         `frame.data` that is too small for the largest possible frame, if the workers can't start, and
    ///         if memory for anything else is short. `frame.size` keeps the buffer's size then
    CxAVError EncodeFrame(Image*& image, CxEncodedFrame& frame) override;
    /// The size that rate control aims for, or the largest one if there is no such aim.
    int32_t GetTargetFrameSize(CxVideoSettings settings) override;

private:
    struct DecoderDeleter {
        void operator()(PrxDecoderRef handle) const { PrxDeleteDecoder(handle); }
    };
    struct EncoderDeleter {
        void operator()(PrxEncoderRef handle) const { PrxDeleteEncoder(handle); }
    };

    /// Makes sure of a picture of this size, as `EnsurePicture` does, and describes it.
    bool PrepareBuffer(int32_t pictureWidth, int32_t pictureHeight, PrxPixelBuffer& buffer);
    CxAVError DecodeSample(int32_t frame, Image*& image);
    CxAVError EncodeImage(Image*& image, CxEncodedFrame& frame);

    std::unique_ptr<PrxDecoderHandle, DecoderDeleter> decoder; ///< null until `Open`
    std::unique_ptr<PrxEncoderHandle, EncoderDeleter> encoder; ///< null until the first `EncodeFrame`
    int32_t width = 0;                                         ///< pixels
    int32_t height = 0;                                        ///< pixels
    CxAlignedBuffer workBuffer;                                ///< the frame as `b64a`
};

/// The registered factory, for `CxAbstractAVCodec::isTypeOf` inside the module; null if it refused.
extern CxAbstractCodecFactory* g_ProResFactory;
