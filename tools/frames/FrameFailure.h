#pragma once

#include "media/ToolError.h"

#include <cstdint>
#include <string>

/// Ends a job because of one frame of a file.
[[noreturn]] inline void FailFrame(const std::string& path, int32_t frame, ExitStatus status,
                                   const char* cause) {
    throw ToolError(status, path, "frame " + std::to_string(frame) + ": " + cause);
}
