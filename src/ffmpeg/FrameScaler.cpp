#include "ffmpeg/FrameScaler.h"

#include "ffmpeg/FrameColors.h"

namespace CxFFMPEG {

namespace {

/// Tells the scaler matrix and range of its source. By itself it takes all for BT.601.
void SetSourceColors(SwsContext& scaler, int matrix, bool isFullRange) {
    constexpr int brightness = 0;
    constexpr int one = 1 << 16;
    const int* const ofTarget = FFmpeg().sws_getCoefficients(SWS_CS_DEFAULT);
    FFmpeg().sws_setColorspaceDetails(&scaler, FFmpeg().sws_getCoefficients(matrix), isFullRange, ofTarget, 1,
                                      brightness, one, one);
}

} // namespace

bool FrameScaler::Convert(const AVFrame& frame, bool isFullRange, AVFrame& converted) {
    const Task wanted = {frame.width,
                         frame.height,
                         FormatWithoutRange(frame),
                         static_cast<AVPixelFormat>(converted.format),
                         ScalerMatrixOf(frame),
                         isFullRange};
    if (!Prepare(wanted)) return false;
    return FFmpeg().sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, converted.data,
                              converted.linesize) > 0;
}

/// libswscale's own test whether a context will do compares flags that it changes itself, and makes another
/// one for every frame of some formats. So it is asked for one only if the frames change.
bool FrameScaler::Prepare(const Task& wanted) {
    if (scaler && task == wanted) return true;
    constexpr int flags = SWS_POINT | SWS_ACCURATE_RND;
    scaler.reset(FFmpeg().sws_getCachedContext(scaler.release(), wanted.width, wanted.height, wanted.from,
                                               wanted.width, wanted.height, wanted.to, flags, nullptr,
                                               nullptr, nullptr));
    if (!scaler) return false;
    if (HasRange(wanted.from)) SetSourceColors(*scaler, wanted.matrix, wanted.isFullRange);
    task = wanted;
    return true;
}

} // namespace CxFFMPEG
