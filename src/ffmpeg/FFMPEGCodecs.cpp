#include "ffmpeg/FFMPEGCodecs.h"

#include "ffmpeg/AvcIntraParameterSets.h"
#include "ffmpeg/DecoderCodes.h"
#include "framework/CatchAll.h"
#include "framework/ImageMetadata.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <span>
#include <utility>

namespace CxFFMPEG {

CxAbstractCodecFactory* g_FFmpegFactory = nullptr;

namespace {

constexpr int32_t fullRange = 2; ///< of `CxAbstractDataSource::GetColorRange`

/// FFmpeg's decoder of a codec; null if it has none, or there is no FFmpeg.
const AVCodec* FindDecoder(AVCodecID codec) {
    return LoadFFmpeg() ? FFmpeg().avcodec_find_decoder(codec) : nullptr;
}

void Say(const char* line) { std::fputs(line, stderr); }

/// Frames that come out late for their order of presentation. Other codecs find that out themselves.
void SetReordering(uint32_t fourCC, AVCodecContext& context) {
    const bool isReordered = fourCC == FourCC("avc1") || fourCC == FourCC("HDMV") || fourCC == FourCC("xalg");
    switch (context.codec_id) {
    case AV_CODEC_ID_MPEG2VIDEO:
    case AV_CODEC_ID_HEVC: context.has_b_frames = 2; break;
    case AV_CODEC_ID_H264: context.has_b_frames = isReordered ? 2 : 0; break;
    default: break;
    }
}

AVColorSpace ColorSpaceOf(int32_t matrix) {
    switch (matrix) {
    case 3: return AVCOL_SPC_BT470BG;
    case 4: return AVCOL_SPC_SMPTE240M;
    case 5: return AVCOL_SPC_BT2020_CL;
    default: return AVCOL_SPC_BT709;
    }
}

AVColorPrimaries ColorPrimariesOf(int32_t primaries) {
    switch (primaries) {
    case 2: return AVCOL_PRI_BT470BG;
    case 3: return AVCOL_PRI_SMPTE240M;
    case 4: return AVCOL_PRI_BT2020;
    default: return AVCOL_PRI_BT709;
    }
}

/// What the track says of its pictures, for streams that don't say it themselves.
void DescribePictures(CxAbstractDataSource& source, AVCodecContext& context) {
    context.coded_height = source.GetHeight();
    context.coded_width = source.GetWidth();
    // The numbers are FFmpeg's own, and a number that is none of them goes on as it comes. Kept.
    context.field_order = static_cast<AVFieldOrder>(source.GetFieldOrder());
    context.colorspace = ColorSpaceOf(source.GetColorMatrix());
    context.color_primaries = ColorPrimariesOf(source.GetColorPrimaries());
    context.color_range = source.GetColorRange() == fullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
}

/// Makes the bytes the context's extradata, with the padding that FFmpeg's bit readers want. False, and then
/// there is no extradata, if memory is short.
bool SetExtradata(std::span<const uint8_t> bytes, AVCodecContext& context) {
    constexpr size_t mostBytes = std::numeric_limits<int>::max() - AV_INPUT_BUFFER_PADDING_SIZE;
    FFmpeg().av_freep(&context.extradata);
    context.extradata_size = 0;
    if (bytes.size() > mostBytes) return false;
    void* const copy = FFmpeg().av_mallocz(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE);
    if (copy == nullptr) return false;
    std::memcpy(copy, bytes.data(), bytes.size());
    context.extradata = static_cast<uint8_t*>(copy);
    context.extradata_size = static_cast<int>(bytes.size());
    return true;
}

/// Gives the context the track's configuration bytes or, for AVC-Intra without any, parameter sets by rote.
/// Where memory is short there is neither, and the decoder has to do with what the samples have.
void ProvideExtradata(CxAbstractDataSource& source, AVCodecContext& context) {
    const std::vector<uint8_t>* const own = source.GetCodecPrivateData();
    const bool isOwn = own != nullptr && !own->empty() && SetExtradata(*own, context);
    if (isOwn || !IsAvcIntra(source.GetFourCC())) return;
    // This asks for `width`, while it is `coded_width` that holds the track's by now: `width` is as the
    // context was allocated. Kept.
    const auto sets = AvcIntraParameterSets(context.width, context.field_order);
    if (!sets.empty()) SetExtradata(sets, context);
}

} // namespace

FFMPEGCodecs::FFMPEGCodecs(CxAVOperation op, const CxAbstractCodecFactory* maker)
    : CxAbstractTemporalDecoder(op, maker) {
    name = "FFmpeg";
}

FFMPEGCodecs::~FFMPEGCodecs() { ReleaseFrameCache(); }

bool FFMPEGCodecs::FillCodecInfo(std::set<uint32_t>& decoderFourCCs, std::vector<CxEncoderInfo>& /*encoders*/,
                                 std::string& name) {
    if (!LoadFFmpeg()) return false;
    for (const DecoderCode& code : DecoderCodes())
        if (FindDecoder(code.codec) != nullptr) decoderFourCCs.insert(code.fourCC);
    name = "FFmpeg";
    return true;
}

/// Makes the next request for a frame begin with a flush, at a key sample.
void FFMPEGCodecs::LosePosition() { lastSample = lastFrame = -1; }

/// Drops the decoder with all frames that came out of it.
void FFMPEGCodecs::Close() {
    LosePosition();
    ClearCachedFrames();
    context.reset();
}

CxAVError FFMPEGCodecs::Open() {
    if (dataSource == nullptr) return CxAV_INVALID_STATE;
    // Binding FFmpeg throws where memory is short.
    return CatchAll(CxAV_FAILED, [&] { return OpenSource(*dataSource); });
}

CxAVError FFMPEGCodecs::OpenSource(CxAbstractDataSource& source) {
    Close();
    const uint32_t fourCC = source.GetFourCC();
    const AVCodec* const decoder = FindDecoder(CodecOfTrack(fourCC));
    if (decoder == nullptr) {
        Say("Codec not found\n");
        return CxAV_INVALID_STATE;
    }
    CodecContextPointer opened(FFmpeg().avcodec_alloc_context3(decoder));
    if (!opened) {
        Say("Could not allocate video codec context\n");
        return CxAV_FAILED;
    }
    opened->opaque = this;
    SetReordering(fourCC, *opened);
    DescribePictures(source, *opened);
    constexpr int threads = 8;
    opened->thread_count = IsAvcIntra(fourCC) ? 1 : threads;
    ProvideExtradata(source, *opened);
    return OpenCodec(std::move(opened), *decoder, nullptr);
}

CxAVError FFMPEGCodecs::OpenFromStream(AVStream* stream) {
    Close();
    const AVCodec* const decoder = FindDecoder(stream->codecpar->codec_id);
    if (decoder == nullptr) return CxAV_UNSUPPORTED;
    CodecContextPointer opened(FFmpeg().avcodec_alloc_context3(decoder));
    if (!opened) return CxAV_UNSUPPORTED;
    opened->opaque = this;
    if (FFmpeg().avcodec_parameters_to_context(opened.get(), stream->codecpar) < 0) return CxAV_FAILED;
    opened->flags |= AV_CODEC_FLAG_UNALIGNED;
    AVDictionary* options = nullptr;
#if LIBAVCODEC_VERSION_MAJOR < 59
    // Later majors know no other kind of frames.
    FFmpeg().av_dict_set(&options, "refcounted_frames", "1", 0);
#endif
    FFmpeg().av_dict_set(&options, "threads", "auto", 0);
    const CxAVError result = OpenCodec(std::move(opened), *decoder, &options);
    FFmpeg().av_dict_free(&options);
    return result;
}

/// Opens the context, which is the object's from then on.
CxAVError FFMPEGCodecs::OpenCodec(CodecContextPointer opened, const AVCodec& codec, AVDictionary** options) {
    // A packet of VP9 may hold hidden pictures beside the one that it shows. With several pictures at work at
    // once FFmpeg then neither takes a packet nor gives a frame at times, so threads share one picture.
    if (codec.id == AV_CODEC_ID_VP9) opened->thread_type = FF_THREAD_SLICE;
    if (FFmpeg().avcodec_open2(opened.get(), &codec, options) < 0) {
        Say("Could not open codec\n");
        return CxAV_FAILED;
    }
    context = std::move(opened);
    return CxAV_OK;
}

void FFMPEGCodecs::Flush() {
    if (context && FFmpeg().avcodec_is_open(context.get()) != 0)
        FFmpeg().avcodec_flush_buffers(context.get());
}

int32_t FFMPEGCodecs::GetWidth() { return context ? context->width : 0; }

int32_t FFMPEGCodecs::GetHeight() { return context ? context->height : 0; }

int32_t FFMPEGCodecs::GetLookAhead() {
    if (!context || context->codec == nullptr) return 0;
    // Comes to 4, whatever the decoder says. Kept.
    const int32_t base = std::max(4, std::min(context->has_b_frames, 1));
    const bool isDelayed = (context->codec->capabilities & AV_CODEC_CAP_DELAY) != 0;
    return isDelayed ? base + std::clamp(context->delay, 0, 16) : base;
}

CxAVError FFMPEGCodecs::DecodeSample(uint8_t* data, int32_t size, AVFrame*& frame, CxDecodeRequest& request) {
    if (!context) return CxAV_INVALID_STATE;
    if (data != nullptr && size < 0) return CxAV_FAILED;
    const PacketPointer packet(FFmpeg().av_packet_alloc());
    if (!packet) return CxAV_FAILED;
    // Memory that the packet does not own: FFmpeg copies such a packet, and pads the copy for its bit
    // readers, before anything reads it. So no byte behind the sample is read.
    packet->data = data;
    packet->size = data != nullptr ? size : 0;
    // A time of 0 counts as unknown. Kept.
    if (packet->size != 0 && request.decodeTime > 0 && request.sampleTime > 0) {
        packet->dts = request.decodeTime;
        packet->pts = request.sampleTime;
    }
    const CxAVError result = DecodePacket(packet.get(), frame);
    if (result == CxAV_OK)
        request.frameTime = frame->pts;
    else
        ReleaseDecodedFrame(frame);
    return result;
}

CxAVError FFMPEGCodecs::DecodePacket(AVPacket* packet, AVFrame*& frame) {
    if (!context) return CxAV_FAILED;
    const int sent = FFmpeg().avcodec_send_packet(context.get(), packet);
    // The decoder takes nothing before a frame is taken from it.
    const bool isFull = sent == AVERROR(EAGAIN);
    const bool isDrained = sent == AVERROR_EOF && packet->size == 0;
    // Drained before, as by a sample that could not be read, the decoder takes nothing until it is flushed.
    if (sent == AVERROR_EOF && !isDrained) LosePosition();
    if (sent != 0 && !isFull && !isDrained) return CxAV_FAILED;
    if (frame == nullptr) frame = FFmpeg().av_frame_alloc();
    if (frame == nullptr) return CxAV_FAILED;
    const int received = FFmpeg().avcodec_receive_frame(context.get(), frame);
    if (received == AVERROR(EAGAIN) && !isFull) return CxAV_NEED_MORE_DATA;
    if (received == AVERROR_EOF) LosePosition();
    if (received < 0) {
        Say("Failed to frame\n");
        return CxAV_FAILED;
    }
    return isFull ? SendAgain(*packet) : CxAV_OK;
}

/// Feeds the packet that the decoder did not take before.
CxAVError FFMPEGCodecs::SendAgain(const AVPacket& packet) {
    Say("ReSending packet\n");
    const int sent = FFmpeg().avcodec_send_packet(context.get(), &packet);
    if (sent < 0) Say("Failed to frame\n");
    if (sent != 0) LosePosition();
    return sent == 0 ? CxAV_OK : CxAV_FAILED;
}

void FFMPEGCodecs::ReleaseDecodedFrame(AVFrame*& frame) { ReleaseFrame(frame); }

bool FFMPEGCodecs::ConvertFrameToImage(AVFrame* frame, Image*& image) {
    if (frame == nullptr || image == nullptr) return false;
    // The host's row threads and the metadata table throw where memory is short.
    return CatchAll(false, [&] { return ConvertFrame(*frame, *image); });
}

bool FFMPEGCodecs::ConvertFrame(const AVFrame& frame, Image& image) {
    const bool isDirect = FrameConverter::IsDirect(frame, image);
    // A frame that goes to the host as it is leaves its metadata also if the host refuses it. Kept.
    if (isDirect) WriteMetadata(frame, image);
    if (!converter.ToImage(frame, IsFullRange(), image)) return false;
    if (!isDirect) WriteMetadata(frame, image);
    return true;
}

/// Whether pictures use every code where their format leaves that open. A source that is there decides alone.
bool FFMPEGCodecs::IsFullRange() const {
    if (dataSource != nullptr) return dataSource->GetColorRange() == fullRange;
    return context && context->color_range == AVCOL_RANGE_JPEG;
}

void FFMPEGCodecs::WriteMetadata(const AVFrame& frame, Image& image) const {
    if (!context) return;
    ScriptVal& metadata = MetadataTable(image);
    const AVCodec* const codec = context->codec;
    if (codec != nullptr && codec->long_name != nullptr) metadata.FindKey("Compression") = codec->long_name;
    const auto* const format = FFmpeg().av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    if (format != nullptr) metadata.FindKey("FrameFormat") = format->name;
}

} // namespace CxFFMPEG
