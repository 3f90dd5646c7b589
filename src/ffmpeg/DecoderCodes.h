#pragma once

#include "ffmpeg/FFmpegFunctions.h"

#include <cstdint>
#include <span>

namespace CxFFMPEG {

/// A track's code, and the codec of FFmpeg that decodes it.
struct DecoderCode {
    uint32_t fourCC;
    AVCodecID codec;
};

/// Every code that the back-end may claim, once, in the order of the codes.
std::span<const DecoderCode> DecoderCodes();

/// The codec that decodes a track. A code outside the table is FFmpeg's own number of a codec, or stands for
/// none.
AVCodecID CodecOfTrack(uint32_t fourCC);

/// Whether the code is one of AVC-Intra (SMPTE RP 2027), whose samples may come without parameter sets.
bool IsAvcIntra(uint32_t fourCC);

} // namespace CxFFMPEG
