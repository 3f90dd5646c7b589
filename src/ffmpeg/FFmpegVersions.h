#pragma once

#include "ffmpeg/FFmpegBinding.h"

#include <cstdint>

// What FFmpeg's majors do in different ways, in the words of one.

namespace CxFFMPEG {

/// Gives an encoder one frame, or null to drain it, and takes at most one packet: before the frame from an
/// encoder that is full, and after it from any other.
/// @param gotPacket  out: whether `packet` holds one, which is the caller's to unreference
/// @return FFmpeg's error code, or 0 or above. A drained encoder is no error
int EncodeVideo(AVCodecContext* encoder, AVPacket* packet, const AVFrame* frame, bool& gotPacket);

/// Number of channels of a stream; 0 for pictures.
int32_t ChannelsOf(const AVCodecParameters& parameters);

/// Sets number and places of the channels: mono, stereo, or what FFmpeg takes for so many.
void SetChannels(AVCodecContext& context, int32_t channels);

} // namespace CxFFMPEG
