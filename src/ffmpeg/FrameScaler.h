#pragma once

#include "ffmpeg/FFmpegHandles.h"

namespace CxFFMPEG {

/// libswscale, for frames that stay as large as they are. Keeps its context as long as the frames are alike.
/// One thread at a time.
class FrameScaler {
public:
    /// Converts a picture into the format of another, which has one of the same size. Frames of RGB keep
    /// their codes; to those of Y'CbCr and grey the matrix that they say applies, in both pictures.
    ///
    /// @param isFullRange  whether the frame's samples use every code
    /// @param converted    its own range is the one that it says
    /// @return false if libswscale can't; the other picture means nothing then
    bool Convert(const AVFrame& frame, bool isFullRange, AVFrame& converted);

private:
    /// One of the two pictures.
    struct Side {
        AVPixelFormat format;
        int matrix;
        bool isFullRange;

        bool operator==(const Side&) const = default;
    };
    /// All that the context depends on.
    struct Task {
        int width;
        int height;
        Side from;
        Side to;

        bool operator==(const Task&) const = default;
    };

    static Side SideOf(const AVFrame& frame, bool isFullRange);
    static void SetColors(SwsContext& scaler, const Task& task);

    bool Prepare(const Task& wanted);

    ScalerPointer scaler;
    Task task = {}; ///< the scaler's, if there is one
};

} // namespace CxFFMPEG
