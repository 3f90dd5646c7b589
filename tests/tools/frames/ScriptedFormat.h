#pragma once

#include "host/ImageFormat.h"
#include "host/Registry.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// What a format of a test does, and what it was asked for.
struct FormatScript {
    bool starts = true;
    bool loads = true; ///< whether it is announced as one that does
    bool opens = true;
    double frameRate = 25;                       ///< 0: not told
    uint32_t lastFrame = UINT32_MAX;             ///< no frame past this one loads
    int32_t frameCount = 0;                      ///< as it is told
    std::map<std::string, std::string> metadata; ///< of each frame

    std::vector<std::string> paths;
    std::vector<uint32_t> frames;
    Image* image = nullptr; ///< into which the last frame was loaded
};

/// Announces a format of pictures of 32 by 16 for files with an extension, until the end of its life. One at
/// a time may have a name.
class ScriptedFormat {
public:
    ScriptedFormat(const char* name, int priority, FormatScript& script, const char* extension = ".mov");

private:
    Registry registry_;
};
