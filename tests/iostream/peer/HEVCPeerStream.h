#pragma once

#include "tools/Workspace.h"

#include <cstdint>
#include <string>
#include <vector>

/// What x265 is asked for; a test picture of five frames.
struct HEVCEncoding {
    std::string pixelFormat = "yuv420p"; ///< FFmpeg's name
    std::string size = "64x64";
    std::string params = ""; ///< of x265, separated by colons
    std::string rate = "25";
    std::string filter = "null";
};

/// Facts of a stream as libavformat and libavcodec see it.
struct DemuxedFacts {
    int width = 0;
    int height = 0;
    int profile = 0;
    int level = 0;
    int bitDepth = 0;
    int chromaFormat = 0; ///< 1, 420, 422 or 444
    bool isFullRange = false;
    int colourPrimaries = 0;
    int transferCharacteristics = 0;
    int matrixCoefficients = 0;
    float pixelAspect = 0; ///< width of a sample over its height
    double frameRate = 0;
};

/// A stream that x265 wrote through the ffmpeg program. What fails throws `std::runtime_error`.
class HEVCPeerStream {
public:
    explicit HEVCPeerStream(const HEVCEncoding& encoding);

    const std::vector<uint8_t>& Bytes() const { return bytes_; }
    DemuxedFacts Demux() const;
    /// The configuration record that FFmpeg's MP4 muxer writes for the stream.
    std::vector<uint8_t> MuxedRecord() const;

private:
    Workspace workspace_;
    std::vector<uint8_t> bytes_;
};

/// One stream behind the other.
std::vector<uint8_t> Joined(const HEVCPeerStream& first, const HEVCPeerStream& second);
