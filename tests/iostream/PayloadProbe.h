#pragma once

#include "iostream/IOH264NALPayload.h"

#include <string>
#include <vector>

/// A payload that overrides every virtual operation, compiled apart from the test that calls them. Each call
/// appends the operation's name to `log`.
namespace PayloadProbe {

extern std::vector<std::string> log;

IOStream::IOH264NALPayload* New();

} // namespace PayloadProbe
