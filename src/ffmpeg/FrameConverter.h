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

    /// Makes the frame that an encoder takes of a picture of `AV_PIX_FMT_RGB48LE`: one of the encoder's pixel
    /// format, with the colours that the encoder says. Without a matrix that is BT.709; without a range it is
    /// video range, other than in the formats of JPEG. Where `WritePlanes` has the format it converts,
    /// libswscale in all others.
    ///
    /// @param image  its `DoMultiProcess` may be used; nothing else of it is touched
    /// @return the frame, whose picture is memory of `av_image_alloc` and which the caller gives to
    ///         `ReleaseFrame`; null if it can't be made. Throws std::bad_alloc
    AVFrame* ForEncoder(const AVFrame& words, const AVCodecContext& encoder, Image& image);

private:
    bool WriteWords(const AVFrame& words, AVFrame& picture, Image& image);

    FrameScaler scaler;
};

/// Frees a frame, its picture included where that was made by `av_image_alloc`, and sets the pointer to null;
/// null is fine. A frame without a reference-counted buffer is taken to own its picture.
void ReleaseFrame(AVFrame*& frame);

} // namespace CxFFMPEG
