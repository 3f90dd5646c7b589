#pragma once

#include "iostream/peer/HeaderTrace.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// A stream that x264 wrote, with what FFmpeg says of it.
struct H264PeerStream {
    std::vector<uint8_t> bytes;
    std::map<std::string, std::string> shown; ///< ffprobe's entries of the stream and of its first frame
    HeaderTrace trace;                        ///< the syntax elements, as libavcodec reads them
    std::vector<uint8_t> muxedRecord;         ///< "avcC"; only if it was asked for
};

/// Encodes five frames of a test picture through the ffmpeg program. Throws `std::runtime_error` if that
/// fails.
/// @param source   size, rate and filters, such as "size=64x48:rate=25,setsar=4/3"
/// @param options  of the encoder
/// @param isMuxed  whether FFmpeg's configuration record is wanted too
H264PeerStream EncodeByX264(const std::string& source, const std::string& options, bool isMuxed = false);

/// The second stream behind the first.
std::vector<uint8_t> Joined(const H264PeerStream& first, const H264PeerStream& second);
