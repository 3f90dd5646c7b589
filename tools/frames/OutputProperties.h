#pragma once

#include "frames/FrameInput.h"
#include "media/Rational.h"

#include <optional>
#include <string>
#include <vector>

// What a movie that is made of an input has of it.

/// The order in which fields are shown.
enum class FieldOrder { Progressive = 1, TopFirst = 2, BottomFirst = 3 };

/// The rate that was asked for; else the movie's, or 24 for images.
/// @throw ToolError  `Usage` if the movie's rate is not known
Rational OutputRate(const std::optional<Rational>& asked, const FrameTrack& track);

/// That of the movie, which may have coded its fields the other way round; images are progressive.
FieldOrder OutputFieldOrder(const FrameTrack& track);

/// What is wrong with the input, a line each.
std::vector<std::string> InputWarnings(const FrameTrack& track);
