#pragma once

#include <cstdint>
#include <string>

/// Reads a movie to its end, whatever FFmpeg takes it for, and counts the packets of its video stream that
/// can be read whole.
/// @return 0 if it can't be opened, has no such stream, or the first picture of that can't be decoded
int64_t CountWrittenFrames(const std::string& path);
