#include "ffmpeg/FrameScaler.h"

#include "ffmpeg/FrameColors.h"

namespace CxFFMPEG {

FrameScaler::Side FrameScaler::SideOf(const AVFrame& frame, bool isFullRange) {
    const AVPixelFormat format = FormatWithoutRange(frame);
    return HasRange(format) ? Side{format, ScalerMatrixOf(frame), isFullRange}
                            : Side{format, SWS_CS_DEFAULT, true};
}

/// Tells the scaler matrix and range of both sides. By itself it takes all for BT.601.
void FrameScaler::SetColors(SwsContext& scaler, const Task& task) {
    constexpr int brightness = 0;
    constexpr int one = 1 << 16;
    FFmpeg().sws_setColorspaceDetails(&scaler, FFmpeg().sws_getCoefficients(task.from.matrix),
                                      task.from.isFullRange, FFmpeg().sws_getCoefficients(task.to.matrix),
                                      task.to.isFullRange, brightness, one, one);
}

bool FrameScaler::Convert(const AVFrame& frame, bool isFullRange, AVFrame& converted) {
    const Task wanted = {frame.width, frame.height, SideOf(frame, isFullRange),
                         SideOf(converted, IsFullRange(converted, false))};
    if (!Prepare(wanted)) return false;
    return FFmpeg().sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, converted.data,
                              converted.linesize) > 0;
}

/// libswscale's own test whether a context will do compares flags that it changes itself, and makes another
/// one for every frame of some formats. So it is asked for one only if the frames change.
bool FrameScaler::Prepare(const Task& wanted) {
    if (scaler && task == wanted) return true;
    constexpr int flags = SWS_POINT | SWS_ACCURATE_RND;
    scaler.reset(FFmpeg().sws_getCachedContext(scaler.release(), wanted.width, wanted.height,
                                               wanted.from.format, wanted.width, wanted.height,
                                               wanted.to.format, flags, nullptr, nullptr, nullptr));
    if (!scaler) return false;
    if (HasRange(wanted.from.format) || HasRange(wanted.to.format)) SetColors(*scaler, wanted);
    task = wanted;
    return true;
}

} // namespace CxFFMPEG
