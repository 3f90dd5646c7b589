// The encoding side of FFMPEGCodecs.

#include "ffmpeg/EnumNumbers.h"
#include "ffmpeg/FFMPEGCodecs.h"
#include "ffmpeg/FFmpegVersions.h"
#include "framework/CatchAll.h"
#include "pixel/PixelConvert.h"

#include <cstdio>
#include <utility>

namespace CxFFMPEG {

namespace {

/// In which order an encoder is told that fields are coded and shown.
AVFieldOrder FieldOrderOf(uint32_t fieldOrder) {
    switch (fieldOrder) {
    case 2: return AV_FIELD_TB;
    case 3: return AV_FIELD_BT;
    default: return AV_FIELD_PROGRESSIVE;
    }
}

void Configure(const EncoderEntry& entry, const CxVideoSettings& settings, AVCodecContext& context) {
    const AVRational duration = {static_cast<int>(settings.frameDuration),
                                 static_cast<int>(settings.timeScale)};
    context.codec_id = static_cast<AVCodecID>(entry.codecId);
    context.codec_type = AVMEDIA_TYPE_VIDEO;
    context.bit_rate = settings.bitRate;
    context.width = settings.width;
    context.height = settings.height;
    context.time_base = duration;
    // The denominator goes where the numerator was put, and the one below stays. Kept.
    context.sample_aspect_ratio.num = static_cast<int>(settings.value8);
    context.framerate = {duration.den, duration.num};
    context.field_order = FieldOrderOf(settings.fieldOrder);
    context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    context.gop_size = static_cast<int>(settings.gopSize);
    context.profile = entry.profile;
    context.max_b_frames = 1;
    context.pix_fmt = static_cast<AVPixelFormat>(entry.pixelFormat);
}

void SetColors(const CxVideoSettings& settings, AVCodecContext& context) {
    SetNumber(context.color_primaries, static_cast<int16_t>(settings.value9));
    SetNumber(context.color_trc, static_cast<int16_t>(settings.value10));
    SetNumber(context.colorspace, static_cast<int16_t>(settings.value11));
}

} // namespace

CxAVError FFMPEGCodecs::OpenEncoder(EncoderEntry entry, CxVideoSettings& settings, EncoderOptions& options) {
    Close();
    const auto open = [&] { return OpenContext(entry, settings, options); };
    const CxAVError result = CatchAll(CxAV_FAILED, open);
    // An encoder whose global header found no memory is none.
    if (result != CxAV_OK) Close();
    return result;
}

CxAVError FFMPEGCodecs::OpenContext(const EncoderEntry& entry, CxVideoSettings& settings,
                                    const EncoderOptions& options) {
    if (entry.encoder == nullptr || !LoadFFmpeg()) return CxAV_INVALID_STATE;
    CodecContextPointer opened(FFmpeg().avcodec_alloc_context3(entry.encoder));
    if (!opened) return CxAV_INVALID_STATE;
    opened->opaque = this;
    Configure(entry, settings, *opened);
    for (const auto& [key, value] : options)
        if (opened->priv_data != nullptr)
            FFmpeg().av_opt_set(opened->priv_data, key.c_str(), value.c_str(), 0);
    SetColors(settings, *opened);
    if (const CxAVError result = OpenCodec(std::move(opened), *entry.encoder, nullptr); result != CxAV_OK)
        return result;
    encodedFrames = 0;
    if (context->extradata_size > 0)
        settings.extraData.assign(context->extradata, context->extradata + context->extradata_size);
    return CxAV_OK;
}

/// The image as the encoder takes it.
CxAVError FFMPEGCodecs::MakePicture(Image*& image, FramePointer& picture) {
    // The picture has room for an image of its own size, and nothing to show beside a smaller one.
    if (image->Width != context->width || image->Height != context->height) return CxAV_FAILED;
    const FramePointer words(FFmpeg().av_frame_alloc());
    if (!words) {
        std::fputs("Could not allocate video frame\n", stderr);
        return CxAV_READ_FAILED;
    }
    words->format = AV_PIX_FMT_RGB48LE;
    words->width = context->width;
    words->height = context->height;
    constexpr int alignment = 32;
    if (FFmpeg().av_image_alloc(words->data, words->linesize, words->width, words->height, AV_PIX_FMT_RGB48LE,
                                alignment) < 0) {
        std::fputs("Could not allocate raw picture buffer\n", stderr);
        return CxAV_INVALID_STATE;
    }
    constexpr auto code = static_cast<int32_t>(FourCC("l48r"));
    if (!PixelConvert::ImageToBlob(image, code, words->linesize[0], words->data[0], true)) return CxAV_FAILED;
    picture.reset(converter.ForEncoder(*words, *context, *image));
    if (!picture) return CxAV_FAILED;
    picture->pts = encodedFrames++;
    return CxAV_OK;
}

CxAVError FFMPEGCodecs::EncodeImage(Image*& image, AVPacket* packet, int32_t& gotPacket) {
    gotPacket = 0;
    if (!context) return CxAV_INVALID_STATE;
    FFmpeg().av_packet_unref(packet);
    FramePointer picture;
    if (image != nullptr) {
        // The host's row threads throw where memory is short.
        const CxAVError result = CatchAll(CxAV_FAILED, [&] { return MakePicture(image, picture); });
        if (result != CxAV_OK) return result;
    }
    bool hasPacket = false;
    if (EncodeVideo(context.get(), packet, picture.get(), hasPacket) < 0) {
        std::fputs("Error encoding frame\n", stderr);
        return CxAV_FAILED;
    }
    gotPacket = hasPacket ? 1 : 0;
    return hasPacket || image != nullptr ? CxAV_OK : CxAV_INVALID_STATE;
}

} // namespace CxFFMPEG
