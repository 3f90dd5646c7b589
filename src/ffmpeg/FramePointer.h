#pragma once

#include "ffmpeg/FrameConverter.h"

#include <memory>

namespace CxFFMPEG {

struct FrameDeleter {
    void operator()(AVFrame* frame) const { ReleaseFrame(frame); }
};

/// The owner of a frame, decoded or converted.
using FramePointer = std::unique_ptr<AVFrame, FrameDeleter>;

} // namespace CxFFMPEG
