#pragma once

#include "iostream/IOElementaryStreamInfo.h"
#include "media/MovieTrackSource.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What the module's own analysis of elementary streams learns of a track. Some of its readings depart from
/// the standards, so the facts of the track itself are those of container and FFmpeg.
struct StreamAnalysis {
    std::string source;                    ///< "avcC" or "hvcC" for a record that was read, else "Annex B"
    uint32_t lengthSize = 0;               ///< bytes of a length field in the samples; 0 for byte streams
    bool countsReferences = false;         ///< whether `info.maxRefFrames` is read at all
    IOStream::IOElementaryStreamInfo info; ///< of configuration record and first sample
    std::vector<uint32_t> frameTypes;      ///< `IOFrameType` of the first samples, in decode order
};

/// Reads configuration record and first samples of an H.264 or HEVC track.
/// @return nothing for a track of another codec
std::optional<StreamAnalysis> AnalyseStream(MovieTrackSource& source);
