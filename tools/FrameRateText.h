#pragma once

#include "media/Rational.h"

#include <optional>
#include <string>
#include <string_view>

/// Reads a rate in frames per second: `24`, `24000/1001`, `12.5`. The usual short forms of the rates over
/// 1001, such as `23.976`, `23.98` and `29.97`, mean the exact rate.
/// @return nothing for any other text and for rates that are not above 0 and at most 1000
std::optional<Rational> ParseFrameRate(std::string_view text);

/// The rate as a fraction, such as "24/1".
std::string FormatRational(const Rational& value);
