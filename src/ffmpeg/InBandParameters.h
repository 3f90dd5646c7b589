#pragma once

#include "ffmpeg/FFmpegFunctions.h"

#include <cstdint>
#include <vector>

namespace CxFFMPEG {

/// A key packet with the encoder's parameter sets before its pictures, for muxers that keep none of the
/// stream: raw streams and some containers of broadcasting. A decoder can begin there then.
/// @param encoder  has the parameter sets in `extradata`
/// @return the bytes with FFmpeg's padding behind them; empty where the packet goes as it is: it is no key
///         packet, begins with them already, is of a codec that needs none, or the muxer keeps them. Throws
///         std::bad_alloc
std::vector<uint8_t> WithParameters(const AVPacket& packet, const AVCodecContext& encoder,
                                    const AVOutputFormat& muxer);

} // namespace CxFFMPEG
