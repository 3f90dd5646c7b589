#pragma once

#include "framework/CxAbstractAVCodec.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

struct DNXCompressedParameters;
struct DNXFrameInformation;
struct DNXUncompressedParameters;

/// The back-end for Avid DNxHD and DNxHR, which joins the closed library to the codec interface. One sample
/// is one frame. Failures of the library are said on standard error, as the library words them.
class DNXCodec : public CxAbstractAVCodec {
public:
    using CxAbstractAVCodec::CxAbstractAVCodec;

    /// Claims the two DNx codes unless others are claimed already, offers an encoder for each compression,
    /// starts the library and says its version on standard output.
    /// @return false if the library or one of its functions is missing, which is not said, or if it does not
    ///         start
    static bool FillCodecInfo(std::set<uint32_t>& decoderFourCCs, std::vector<CxEncoderInfo>& encoders,
                              std::string& name);
    /// Ends what `FillCodecInfo` has started.
    static void Shutdown();

    /// Decodes the sample of index `frame`, and writes "Compression", "SubSampling", "ColorFormat", "Depth"
    /// and "AlphaChannel" into the image's table "Metadata". The library's decoder is made for the first
    /// frame, and decodes all others too, whatever their compression. It is given a buffer of rows of the
    /// image's width, so the image has the track's size, or shows what comes of that.
    /// @return `CxAV_INVALID_STATE` without a source or image; `CxAV_UNSUPPORTED` without the library;
    ///         `CxAV_FAILED` if there is no such sample, the library refuses it, memory is short, or the
    ///         image has more rows than the track. The image keeps its pixels then
    CxAVError GetDecodedFrame(int32_t frame, Image*& image) override;
    int32_t GetWidth() override { return width; }
    int32_t GetHeight() override { return height; }
    /// Takes the size from the source. Any code opens.
    /// @return `CxAV_INVALID_STATE` without a source
    CxAVError Open() override;
    /// Encodes the image with the compression whose id is `frame.codecTag` into a new buffer, which is stored
    /// in `frame.data` and belongs to the caller. A buffer that `frame.data` named before is not used and
    /// stays the caller's. `frame.fieldOrder` 1 asks for progressive frames; `frame.flags` for alpha, which
    /// DNxHD does not have. The library's encoder is made for the first image, and encodes all others too.
    /// @return `CxAV_INVALID_STATE` without an image, or for one below 240 by 120; `CxAV_UNSUPPORTED` without
    ///         the library; `CxAV_FAILED` if the library refuses or memory is short. `frame` is as it was
    ///         then, unless the library has failed to encode: then it holds the new buffer and its size, and
    ///         the buffer is the caller's all the same
    CxAVError EncodeFrame(Image*& image, CxEncodedFrame& frame) override;

private:
    struct DecoderDeleter {
        void operator()(void* handle) const;
    };
    struct EncoderDeleter {
        void operator()(void* handle) const;
    };

    CxAVError DecodeSample(int32_t frame, Image*& image);
    CxAVError EncodeImage(Image*& image, CxEncodedFrame& frame);
    /// Makes sure of a decoder; the first frame decides which one.
    bool ProvideDecoder(const DNXFrameInformation& information,
                        const DNXUncompressedParameters& uncompressed);
    /// Makes sure of an encoder; the first image decides which one.
    bool ProvideEncoder(const DNXCompressedParameters& compressed,
                        const DNXUncompressedParameters& uncompressed);
    /// Keeps the result of a call of the library. If it has failed, says so with the line that stands for the
    /// call.
    bool Succeeded(int32_t result, int line);

    std::unique_ptr<void, DecoderDeleter> decoder; ///< null until the first frame is decoded
    std::unique_ptr<void, EncoderDeleter> encoder; ///< null until the first frame is encoded
    CxAlignedBuffer workBuffer;                    ///< the uncompressed picture
    int32_t width = 0;                             ///< pixels
    int32_t height = 0;                            ///< pixels
    int32_t lastResult = 0;                        ///< of the last call of the library
};

/// The registered factory, for `CxAbstractAVCodec::isTypeOf` inside the module; null if it refused.
extern CxAbstractCodecFactory* g_DNXFactory;
