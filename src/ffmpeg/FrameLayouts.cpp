#include "ffmpeg/FrameLayouts.h"

#include <array>

namespace CxFFMPEG {

namespace {

// Formats of one range have the same layout twice: what is said of the frame's range has no effect. The host
// calls `2vuy` what FFmpeg calls UYVY422, so that frames of YUYV422 have to be swapped before. Kept.
constexpr std::array<FrameLayout, 8> layouts = {{
    {AV_PIX_FMT_YUV420P, ColorLayout_yuvj420p, ColorLayout_yuv420p, 3},
    {AV_PIX_FMT_YUYV422, ColorLayout_2vuy, ColorLayout_2vuy, 1},
    {AV_PIX_FMT_YUV422P, ColorLayout_yuvj422p, ColorLayout_yuv422p, 3},
    {AV_PIX_FMT_YUVJ420P, ColorLayout_yuvj420p, ColorLayout_yuvj420p, 3},
    {AV_PIX_FMT_YUVJ422P, ColorLayout_yuvj422p, ColorLayout_yuvj422p, 3},
    {AV_PIX_FMT_UYVY422, ColorLayout_uyvy, ColorLayout_uyvy, 1},
    {AV_PIX_FMT_NV12, ColorLayout_nv12, ColorLayout_nv12, 2},
    {AV_PIX_FMT_YUV422P10LE, ColorLayout_yuvj422p10, ColorLayout_yuv422p10, 3},
}};

} // namespace

bool FrameLayout::HasRowsOf(const AVFrame& frame) const {
    const int luma = frame.linesize[0];
    if (luma <= 0) return false;
    if (planes == 2) return frame.linesize[1] == luma;
    return planes == 1 || (frame.linesize[1] == luma / 2 && frame.linesize[2] == luma / 2);
}

const FrameLayout* FindFrameLayout(const AVFrame& frame) {
    for (const FrameLayout& layout : layouts)
        if (layout.format == frame.format) return &layout;
    return nullptr;
}

} // namespace CxFFMPEG
