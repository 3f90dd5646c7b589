#pragma once

#include "iostream/H264Sets.h"
#include "iostream/peer/H264PeerStream.h"

#include <string>
#include <vector>

/// One fact of a stream, read both ways.
struct Fact {
    std::string name;
    double ours;
    double theirs;
    /// It stands in the sequence parameter set behind bit_depth_chroma_minus8, or needs something from there.
    bool isBehindChromaDepth;
};

/// All that a payload learns of a stream beside what FFmpeg says.
std::vector<Fact> FactsOf(const H264Parsers& payload, const H264PeerStream& peer);

/// Names of the facts in which both differ.
std::vector<std::string> Differences(const std::vector<Fact>& facts);

/// A payload that has read the whole stream.
H264Parsers ReadStream(const std::vector<uint8_t>& bytes);
