#pragma once

#include "host/ImageFormat.h"
#include "host/Registry.h"

#include <cstdint>
#include <string>
#include <vector>

/// What a format of a test does, and what it was asked for.
struct FormatScript {
    bool starts = true;
    bool loads = true; ///< whether it is announced as one that does
    bool opens = true;
    double frameRate = 25;           ///< 0: not told
    uint32_t lastFrame = UINT32_MAX; ///< no frame past this one loads

    std::vector<std::string> paths;
    std::vector<uint32_t> frames;
    Image* image = nullptr; ///< into which the last frame was loaded
};

/// Announces a format for .mov files until the end of its life. One at a time may have a name.
class ScriptedFormat {
public:
    ScriptedFormat(const char* name, int priority, FormatScript& script);

private:
    Registry registry_;
};
