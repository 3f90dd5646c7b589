#include "ffmpeg/FrameColors.h"
#include "ffmpeg/EnumNumbers.h"

#include "ffmpeg/FFmpegBinding.h"

namespace CxFFMPEG {

namespace {

bool IsGrey(AVPixelFormat format) {
    const AVPixFmtDescriptor* const descriptor = FFmpeg().av_pix_fmt_desc_get(format);
    return HasRange(format) && descriptor->nb_components <= 2;
}

} // namespace

int32_t HostMatrixOf(const AVFrame& frame) {
    switch (NumberIn(frame.colorspace)) {
    case AVCOL_SPC_BT470BG: return 0;
    case AVCOL_SPC_SMPTE170M:
    case AVCOL_SPC_SMPTE240M: return 2;
    default: return 1;
    }
}

int ScalerMatrixOf(const AVFrame& frame) {
    switch (NumberIn(frame.colorspace)) {
    case AVCOL_SPC_FCC:
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
    case AVCOL_SPC_SMPTE240M:
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL: return frame.colorspace;
    default: return AVCOL_SPC_BT709;
    }
}

/// Recommendation ITU-T H.273, table 4.
LumaShares LumaSharesOf(const AVFrame& frame) {
    switch (ScalerMatrixOf(frame)) {
    case AVCOL_SPC_FCC: return {0.30, 0.11};
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M: return {0.299, 0.114};
    case AVCOL_SPC_SMPTE240M: return {0.212, 0.087};
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL: return {0.2627, 0.0593};
    default: return {0.2126, 0.0722};
    }
}

bool HasRange(AVPixelFormat format) {
    const AVPixFmtDescriptor* const descriptor = FFmpeg().av_pix_fmt_desc_get(format);
    return descriptor != nullptr && (descriptor->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) == 0;
}

bool IsFullRange(const AVFrame& frame, bool byDefault) {
    const AVPixelFormat format = FormatWithoutRange(frame);
    if (format != frame.format) return true;
    if (frame.color_range != AVCOL_RANGE_UNSPECIFIED) return frame.color_range == AVCOL_RANGE_JPEG;
    return byDefault || IsGrey(format);
}

AVPixelFormat FormatWithoutRange(const AVFrame& frame) {
    switch (frame.format) {
    case AV_PIX_FMT_YUVJ411P: return AV_PIX_FMT_YUV411P;
    case AV_PIX_FMT_YUVJ420P: return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P: return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ440P: return AV_PIX_FMT_YUV440P;
    case AV_PIX_FMT_YUVJ444P: return AV_PIX_FMT_YUV444P;
    default: return static_cast<AVPixelFormat>(frame.format);
    }
}

} // namespace CxFFMPEG
