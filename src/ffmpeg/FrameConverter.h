#pragma once

#include "ffmpeg/FrameScaler.h"
#include "host/Image.h"

namespace CxFFMPEG {

/// Brings FFmpeg's frames into images and into other pixel formats. Keeps the scaler's context from frame to
/// frame. One thread at a time; to be used once `LoadFFmpeg` has returned true.
class FrameConverter {
public:
    /// Copies a frame into an image.
    ///
    /// Frames of eight formats that are as large as the image go to the host's colour conversion as they
    /// are, if their rows are where the host expects them. All others are converted to 16-bit RGB, with alpha
    /// where they have any, by libswscale, and the common rows and columns of frame and image are written
    /// through the image's accessors: bottom rows on bottom rows, left columns on left columns. What the
    /// image has beyond them stays.
    ///
    /// @param frame        stays as it is
    /// @param isFullRange  whether 4:2:0 and 4:2:2 frames that the host takes use every code. Those that
    ///                     libswscale takes go by what they say themselves, and by this if they say nothing.
    /// @return false, with the image unchanged unless memory was short, if the frame has no picture, a format
    ///         that can't be converted, or, for the host's conversion, if the image has no pixel data. Throws
    ///         std::bad_alloc.
    bool ToImage(const AVFrame& frame, bool isFullRange, Image& image);

    /// Whether `ToImage` hands the frame to the host's colour conversion as it is.
    static bool IsDirect(const AVFrame& frame, const Image& image);

    /// Makes a frame of the same size in another pixel format. Its colours are those that the frame says.
    ///
    /// @return the frame, whose picture is memory of `av_image_alloc` and which the caller gives to
    ///         `ReleaseFrame`; null if it can't be made
    AVFrame* Convert(const AVFrame& frame, AVPixelFormat format);

private:
    AVFrame* Convert(const AVFrame& frame, AVPixelFormat format, bool isFullRange);

    FrameScaler scaler;
};

/// Frees a frame, its picture included where that was made by `av_image_alloc`, and sets the pointer to null;
/// null is fine. A frame without a reference-counted buffer is taken to own its picture.
void ReleaseFrame(AVFrame*& frame);

} // namespace CxFFMPEG
