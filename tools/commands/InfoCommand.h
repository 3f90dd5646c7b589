#pragma once

#include "report/Report.h"

#include <string>

/// Says what is known of a movie file, a clip, an image file or an image sequence.
/// @throw ToolError
void RunInfo(const std::string& input, Report& report);
