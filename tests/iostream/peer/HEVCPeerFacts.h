#pragma once

#include "iostream/PayloadAccess.h"
#include "iostream/peer/HEVCPeerStream.h"
#include "iostream/peer/HeaderTrace.h"

/// Comparisons of what the parsers make of a stream with what FFmpeg makes of it, fact by fact. Facts on
/// which the two part ways by design are left out: field order, the pixel aspects 20:11 and those given by
/// numbers, and the form of the configuration record.

/// Kind of a traced unit.
constexpr const char* sequenceSet = "Sequence Parameter Set";
constexpr const char* pictureSet = "Picture Parameter Set";

/// A payload that has taken in the whole stream.
HEVCPayload Parsed(const std::vector<uint8_t>& stream);

/// Expects the facts of the last sets.
void ExpectTraced(const HEVCPayload& payload, const HeaderTrace& trace);

/// Expects the facts that FFmpeg's demuxer tells of a stream with VUI parameters.
void ExpectDemuxed(const IOStream::IOElementaryStreamInfo& info, const DemuxedFacts& facts);
