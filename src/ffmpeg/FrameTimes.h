#pragma once

#include "ffmpeg/FFmpegFunctions.h"

#include <cstdint>

namespace CxFFMPEG {

/// Frame numbers and time stamps of one stream. No value makes an operation fail: where the arithmetic has no
/// result (a rate or time base of 0) that is the start time, or frame 0. Sums and products of whole numbers
/// wrap around, and a frame number that is worked out with fractions is the nearest that there is.
struct FrameTimes {
    AVRational timeBase = {1, 1};  ///< seconds of one unit of time stamps
    AVRational frameRate = {1, 1}; ///< frames per second
    int64_t start = 0;             ///< time stamp of frame 0
    int32_t channels = 0;          ///< of a stream of sound; 0 for pictures
    int32_t sampleRate = 0;        ///< of a stream of sound, per second

    /// The frame rate; 0 where it is not told.
    double FramesPerSecond() const;
    /// Time stamp at which a frame begins, rounded towards 0 from the start.
    int64_t FrameToTime(int32_t frame) const;
    /// The frame whose beginning is nearest to a time stamp.
    int32_t TimeToFrame(int64_t time) const;
    /// Whether `frame` is the one after that of a time stamp. Frames are compared, not times: where a frame
    /// does not last a whole number of units the stamps of its neighbours are rounded each for itself.
    bool IsNext(int32_t frame, int64_t time) const;
    /// The number of pictures that is nearest to what lasts so many units.
    int32_t FramesIn(int64_t duration) const;
};

} // namespace CxFFMPEG
