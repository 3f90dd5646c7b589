#pragma once

#include "frames/FrameInput.h"
#include "host/ImageFormat.h"

#include <memory>
#include <string>

/// The frames of a file that host formats alone read, such as a camera's raw clip: no codec of the registry
/// and no demuxer of movies knows it.
class ClipInput : public FrameInput {
public:
    /// Whether a file is one, by its extension: a host format claims it, but that of FFmpeg, which reads
    /// movies, does not.
    static bool IsClip(const std::string& path);

    /// Opens the file by the host format of highest priority that does. What is known of the clip is what the
    /// format tells, and the metadata of the first frame.
    /// @throw ToolError  `CannotOpen`: missing or unreadable, or no regular file; `Unsupported`: the road
    /// leads
    ///                   elsewhere, or what the format stands on is missing; `Damaged`: no format opens it
    ClipInput(const std::string& path, DecodeRoad road);

    HostImage Read(int64_t index, ImageDataKind kind) override;

private:
    bool Load(int64_t index, Image* image);
    void ReadFirstFrame();

    std::unique_ptr<ImageFormat> format_;
};
