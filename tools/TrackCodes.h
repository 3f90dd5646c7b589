#pragma once

#include <cstdint>
#include <set>

/// Codes of movie tracks that some back-end may claim. The registry answers for a code, and has no list of
/// its own; a code that is not here still decodes, and is only not listed.
std::set<uint32_t> TrackCodes();
