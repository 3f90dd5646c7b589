#pragma once

#include "ffmpeg/EncoderCatalogue.h"
#include "ffmpeg/FFmpegHandles.h"
#include "ffmpeg/FrameConverter.h"
#include "ffmpeg/FramePointer.h"
#include "framework/CxAbstractTemporalDecoder.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace CxFFMPEG {

/// The back-end on FFmpeg's decoders and encoders. Opened from a data source it is a codec of the registry,
/// which gives any frame in any order; opened from a stream it decodes packets for a caller that reads them
/// itself.
///
/// An object is meant to be opened once. Opening it again, either way, first drops the decoder and the frames
/// that it has, so that an attempt that fails leaves it as if it had never been opened.
///
/// A codec object is used by one thread at a time. FFmpeg runs decoder threads of its own.
class FFMPEGCodecs final : public CxAbstractTemporalDecoder<AVFrame> {
public:
    /// The codec is named "FFmpeg", with or without a factory.
    FFMPEGCodecs(CxAVOperation op, const CxAbstractCodecFactory* maker);
    FFMPEGCodecs(const FFMPEGCodecs&) = delete;
    FFMPEGCodecs& operator=(const FFMPEGCodecs&) = delete;
    ~FFMPEGCodecs() override;

    /// Adds the codes of `DecoderCodes` whose decoder FFmpeg has, and offers no encoders.
    /// @return `LoadFFmpeg`'s outcome; if that is false nothing is added
    static bool FillCodecInfo(std::set<uint32_t>& decoderFourCCs, std::vector<CxEncoderInfo>& encoders,
                              std::string& name);

    /// Drops what the decoder holds, if it is open.
    void Flush() override;
    /// Width that the context tells, in pixels; 0 without one.
    int32_t GetWidth() override;
    /// Height that the context tells, in pixels; 0 without one.
    int32_t GetHeight() override;
    /// Opens the decoder of the source's code. A code that `DecoderCodes` lacks is taken as FFmpeg's own
    /// codec id. A decoder that is missing or can't be opened is said on standard error. Without a source a
    /// decoder that is open stays so.
    /// @return `CxAV_INVALID_STATE` without a source or a decoder; `CxAV_FAILED` if it can't be opened
    CxAVError Open() override;

    /// Frees a frame, its picture included where that was made by `av_image_alloc`, and sets the pointer to
    /// null; null is fine.
    void ReleaseDecodedFrame(AVFrame*& frame) override;
    /// See the base class. The sample needs no padding. `request.frameTime` is the frame's own time stamp,
    /// which is unknown (`AV_NOPTS_VALUE`, negative) for a sample without two times above 0.
    /// @return `CxAV_INVALID_STATE` without an open decoder; `CxAV_FAILED` for every other failure, among
    ///         them a negative size and a decoder that is drained, with which the next request for a frame
    ///         starts again at a key sample
    CxAVError DecodeSample(uint8_t* data, int32_t size, AVFrame*& frame, CxDecodeRequest& request) override;
    /// See the base class, and `FrameConverter`. Writes "Compression" (the decoder's long name) and
    /// "FrameFormat" (the pixel format's name) into the image's table "Metadata", unless no decoder is open.
    /// @return false also without a frame, an image or memory
    bool ConvertFrameToImage(AVFrame* frame, Image*& image) override;

    /// Opens the decoder of an open file's stream, which is not null and not kept.
    /// @return `CxAV_UNSUPPORTED` without a decoder; `CxAV_FAILED` if it can't be opened
    CxAVError OpenFromStream(AVStream* stream);
    /// Feeds one packet, which is not null and stays the caller's, and takes at most one frame. A packet
    /// without data drains the decoder.
    /// @param frame  in: null, or a frame to receive into; out: a frame, which is the caller's to release
    ///               whatever the result, and holds a picture if that is `CxAV_OK`
    /// @return `CxAV_NEED_MORE_DATA` if no frame came out yet; `CxAV_FAILED` for a failure, for a decoder
    ///         that is drained, and without an open one
    CxAVError DecodePacket(AVPacket* packet, AVFrame*& frame);
    /// Frames that may have to be read ahead of the one wanted; 0 before the decoder is open.
    int32_t GetLookAhead();

    /// Opens an encoder.
    /// @param entry     codec, profile, pixel format and the encoder itself
    /// @param settings  size, rate, bit rate, key frames, pixel aspect, field order and colours are read;
    ///                  `extraData` is set if the encoder has a global header, and stays as it is otherwise
    /// @param options   set as the encoder's own, in order; those that it refuses pass without a word
    /// @return `CxAV_INVALID_STATE` without an encoder; `CxAV_FAILED` if it can't be opened, which is said on
    ///         standard error, and without memory. After a failure nothing is open
    CxAVError OpenEncoder(EncoderEntry entry, CxVideoSettings& settings, EncoderOptions& options);
    /// Encodes one image of the size that was opened, and takes at most one packet. Images are numbered from
    /// 0 in units of the encoder's time base; those that fail before the encoder sees them take no number.
    /// The picture has the matrix and range that the encoder says (`FrameConverter::ForEncoder`).
    /// @param image      not changed; null drains the encoder, by one packet a call
    /// @param packet     of `av_packet_alloc`, and so not null; in: what it holds is let go, unless no
    ///                   encoder is open; out: the packet, with memory of its own that is the caller's to
    ///                   unreference, or nothing
    /// @param gotPacket  out: 1 if there is one, otherwise 0, which is no failure: encoders hold frames back
    /// @return `CxAV_INVALID_STATE` without an open encoder, for one that is drained, and for a picture that
    ///         can't be allocated; `CxAV_READ_FAILED` without memory for a frame; `CxAV_FAILED` for an image
    ///         of another size and for every other failure. Failures of the encoder and of memory are said
    ///         on standard error; the encoder can be used after all of them
    CxAVError EncodeImage(Image*& image, AVPacket* packet, int32_t& gotPacket);
    /// The decoder's or encoder's context, which stays the codec's; null before it is open.
    const AVCodecContext* Context() const { return context.get(); }

private:
    void LosePosition();
    void Close();
    CxAVError OpenSource(CxAbstractDataSource& source);
    CxAVError OpenCodec(CodecContextPointer opened, const AVCodec& codec, AVDictionary** options);
    CxAVError SendAgain(const AVPacket& packet);
    bool ConvertFrame(const AVFrame& frame, Image& image);
    bool IsFullRange() const;
    void WriteMetadata(const AVFrame& frame, Image& image) const;
    CxAVError OpenContext(const EncoderEntry& entry, CxVideoSettings& settings,
                          const EncoderOptions& options);
    CxAVError MakePicture(Image*& image, FramePointer& picture);

    CodecContextPointer context; ///< null until opened
    FrameConverter converter;
    int64_t encodedFrames = 0; ///< given to the encoder
};

/// The factory in the registry; null until the module is loaded, and where FFmpeg is missing.
extern CxAbstractCodecFactory* g_FFmpegFactory;

} // namespace CxFFMPEG
