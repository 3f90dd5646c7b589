#pragma once

#include <string>

/// Why the module could not bind FFmpeg, in words. The module keeps no reason, so the search is made again,
/// of which nothing is written anywhere.
/// @return an empty string if FFmpeg can be bound
std::string WhyFFmpegIsMissing();
