#pragma once

#include "rawsdk/clip/ClipWriter.h"

#include <cstdint>
#include <string>

/// A smooth picture that tells its frame, as 16-bit codes of plane 0 to 2 at a place counted from the top.
struct RawPicture {
    uint32_t width = 64;
    uint32_t height = 48;

    uint16_t At(uint64_t frame, uint32_t plane, uint32_t x, uint32_t y) const;
};

/// Bytes of a time code of "01:00:00:00" and as many frames more, below 24.
inline uint32_t RawTimecode(uint32_t frame) { return 0x01000000 | frame / 10 << 4 | frame % 10; }

/// A clip of `RawPicture`, made for tests: it has the clip metadata "camera" and "take", and each frame has
/// "take", which is its number, and a time code.
struct RawClipRecipe {
    RawPicture picture = {};
    uint32_t frames = 3; ///< 24 at most
    float frameRate = 24;
    bool hasTimecodes = true;
    rawsdk::ClipSettings settings = {};
    rawsdk::ColorTable table = {}; ///< the embedded one
};

/// @throw rawsdk::Failure
void WriteRawClip(const std::string& path, const RawClipRecipe& recipe = {});
