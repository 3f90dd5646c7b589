#pragma once

#include "media/StreamAnalysis.h"

#include <nlohmann/json.hpp>
#include <string>

/// What the analysis of an H.264 or HEVC stream learnt, each value beside the track's own fact where there is
/// one, and whether the two differ.
nlohmann::ordered_json DescribeParameterSets(const StreamAnalysis& analysis, const MovieTrackInfo& track);

/// The same for people, under a heading of its own.
std::string TextOfParameterSets(const nlohmann::ordered_json& parameterSets);
