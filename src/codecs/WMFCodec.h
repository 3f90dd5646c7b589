#pragma once

#include "framework/CxAbstractTemporalDecoder.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace CxWMF {

class WMFTransform;

/// The back-end for H.264 through a transform of Media Foundation. As a decoder it gives any frame in any
/// order, as an encoder it turns images into samples behind lengths of four bytes. Says nothing; every
/// failure is a result.
///
/// Each object starts COM on the thread that makes it, and must be destroyed there.
class WMFCodec : public CxAbstractTemporalDecoder<IMFSample> {
public:
    WMFCodec(CxAVOperation op, const CxAbstractCodecFactory* maker);
    WMFCodec(const WMFCodec&) = delete;
    WMFCodec& operator=(const WMFCodec&) = delete;
    ~WMFCodec() override;

    /// Claims "avc1" and "avci", and offers the encoder "H.264". The factory's name is "DXVA".
    /// @return false, which is not said, if Media Foundation or one of its functions is missing
    static bool FillCodecInfo(std::set<uint32_t>& decoderFourCCs, std::vector<CxEncoderInfo>& encoders,
                              std::string& name);

    /// See `FlushTransform`.
    void Flush() override;
    int32_t GetWidth() override { return frameWidth; }
    int32_t GetHeight() override { return frameHeight; }
    /// Makes a decoder for the source's code. A track without private data gets the parameter sets of
    /// AVC-Intra for its width. Opening again first drops the decoder and its frames, and an attempt that
    /// fails leaves none; without a source a decoder that is open stays so.
    /// @return `CxAV_INVALID_STATE` without a source, or if the decoder refuses a type; `CxAV_UNSUPPORTED`
    ///         if there is no decoder; `CxAV_FAILED` if it does not start
    CxAVError Open() override;
    /// Makes the encoder. One that was made before is dropped. `settings.extraData` becomes the "avcC"
    /// record if the encoder tells parameter sets that make one now, and stays as it is otherwise.
    /// @return `CxAV_INVALID_STATE` for a decoder, or if the encoder refuses a type; otherwise as `Open`
    CxAVError SetEncoderSettings(CxVideoSettings& settings) override;
    /// Encodes one image, and gives a sample once one is ready: the first images may give none, and
    /// `frame.data` is null then, while `GetLastError` tells `CxAV_NEED_MORE_DATA`. An image of null drains
    /// the encoder of one sample, or of none if there is no more. What `frame.data` named before is
    /// forgotten, and stays the caller's.
    /// @return `CxAV_UNSUPPORTED` without an encoder, or memory for the picture; `CxAV_INVALID_STATE` for an
    ///         image that can't be converted, is refused, or has more than 65535 pixels either way;
    ///         `CxAV_FAILED` if the encoder fails. `frame` has no data then
    CxAVError EncodeFrame(Image*& image, CxEncodedFrame& frame) override;

    /// See the base class; null is fine.
    void ReleaseDecodedFrame(IMFSample*& frame) override;
    /// See the base class. Takes all frames that the decoder has; those that are not wanted go to the cache.
    /// A sample that the decoder refuses counts as taken.
    /// @return `CxAV_UNSUPPORTED` without a decoder; `CxAV_INVALID_STATE` if it fails, or is drained without
    ///         the frame that is wanted
    CxAVError DecodeSample(uint8_t* data, int32_t size, IMFSample*& frame, CxDecodeRequest& request) override;
    /// See the base class. Sets no metadata.
    /// @return false also if the frame holds too little for the image's size; whether the conversion refuses
    ///         the image for another reason does not show
    bool ConvertFrameToImage(IMFSample* frame, Image*& image) override;

    /// Result of the last call that gave one.
    virtual CxAVError GetLastError();
    /// Drops what the transform holds, if there is one.
    virtual void FlushTransform();
    /// 2 for streams of groups of pictures ("avc1", "hevc"), 1 for AVC-Intra ("avcI", "avci"), 0 for others.
    virtual int32_t GetStreamKind();
    /// Keeps its place in the order. Always true.
    virtual bool GetReserved();
    /// Chooses the subtypes for the stream's code; for an encoder makes the transform, too.
    /// @return what `GetLastError` gives
    virtual CxAVError SetupTransform();
    /// Encodes one image, or drains if it is null.
    /// @param data    out: the sample, which the caller frees with `Platform::FreeMemAligned`; unchanged
    ///                without one
    /// @param size    out: bytes of the sample; 0 without one
    /// @param timing  out: set if the encoder gave output, also where that was no sample. Times are
    ///                milliseconds, whatever its time base says
    /// @return `CxAV_NEED_MORE_DATA` if no sample is ready; otherwise as `EncodeFrame`
    virtual CxAVError EncodeSample(Image*& image, uint8_t*& data, uint32_t& size, CxEncodedTiming& timing);
    /// The code under which pictures go to and come from `PixelConvert`.
    virtual uint32_t GetPixelFormat();

private:
    CxAVError OpenSource(CxAbstractDataSource& source);
    void PrepareExtraData(CxAbstractDataSource& source);
    CxAVError MakeTransform();
    CxAVError StartTransform();
    CxAVError SetDecoderTypes();
    CxAVError SetEncoderTypes();
    CxAVError MakeEncoder(CxVideoSettings& given);
    CxAVError FeedExtraData();
    int32_t CollectFrames(IMFSample*& frame, CxDecodeRequest& request);
    void KeepFrame(IMFSample* sample, IMFSample*& frame, CxDecodeRequest& request);
    CxAVError GiveImage(Image*& image);
    CxAVError TakeSample(uint8_t*& data, uint32_t& size, CxEncodedTiming& timing);

    bool startedCOM = false;
    uint32_t streamFourCC = FourCC("avc1");
    CxAVError lastError = CxAV_OK;
    uint16_t frameWidth = 0;  ///< pixels
    uint16_t frameHeight = 0; ///< pixels
    CxVideoSettings settings;
    std::unique_ptr<WMFTransform> transform; ///< never null
    std::vector<uint8_t> extraData;          ///< parameter sets as a byte stream (ISO/IEC 14496-10, Annex B)
    uint32_t encodedIn = 0;                  ///< images given to the encoder
    uint32_t encodedOut = 0;                 ///< samples got from the encoder
};

/// The registered factory, for `CxAbstractAVCodec::isTypeOf` inside the module; null if it refused.
extern CxAbstractCodecFactory* g_WMFFactory;

} // namespace CxWMF
