#pragma once

#include "media/MovieTrackInfo.h"

#include <nlohmann/json.hpp>
#include <string>

/// All that is known of a movie and its video track, and what decodes it.
nlohmann::ordered_json DescribeMovie(const MovieTrackInfo& info);

/// The same for people, from what `DescribeMovie` made.
std::string TextOfMovie(const nlohmann::ordered_json& movie);
