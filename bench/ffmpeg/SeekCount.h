#pragma once

#include <cstdint>

/// Puts a counter before FFmpeg's `av_seek_frame` as the module calls it.
/// @return the counter, which stands at 0
int64_t& CountSeeks();
