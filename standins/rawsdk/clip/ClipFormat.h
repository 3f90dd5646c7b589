#pragma once

#include "rawsdk/clip/ColorTable.h"
#include "rawsdk/clip/Metadata.h"
#include "rawsdk/clip/Settings.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace rawsdk {

// How a clip file is laid out; docs/vrel-standin.md tells it in words.

/// Least and greatest width and height of pictures, and the most that the two may come to.
inline constexpr uint32_t leastSide = 4;
inline constexpr uint32_t mostSide = 16384;
inline constexpr uint64_t mostPixels = uint64_t{1} << 27;

/// Whether pictures may have this size.
constexpr bool IsPictureSize(uint32_t width, uint32_t height) {
    return width >= leastSide && height >= leastSide && width <= mostSide && height <= mostSide &&
           uint64_t{width} * height <= mostPixels;
}

/// A frame without a time code.
inline constexpr uint32_t noTimecode = 0xFFFFFFFF;
/// "hh:mm:ss:ff", or "hh:mm:ss;ff" if bit 6 is set, of a time code in binary coded decimal (SMPTE ST 12-1);
/// empty for `noTimecode`.
std::string TimecodeText(uint32_t timecode);

/// What is known of a whole clip.
struct ClipProperties {
    uint32_t width = 0;
    uint32_t height = 0;
    float frameRate = 24; ///< frames per second; any value may be in a clip
    std::string camera = "Ravenlight Heron Field S2";
    ClipSettings settings;
    Metadata metadata;
    ColorTable table; ///< the embedded one
};

/// What is known of one frame.
struct FrameProperties {
    FrameSettings settings;
    Metadata metadata;
    uint32_t timecode = noTimecode;
};

/// Where a frame stands in the file.
struct FramePlace {
    uint64_t offset;
    uint32_t size; ///< bytes of its record
    uint32_t timecode;
};

/// All of a clip but its frames.
struct ClipDirectory {
    ClipProperties clip;
    std::vector<FramePlace> frames;
};

std::vector<uint8_t> WriteDirectory(const ClipDirectory& directory);
/// @param framesEnd  offset in the file up to which frames may stand
/// @throw Failure  if the directory is damaged
ClipDirectory ReadDirectory(std::span<const uint8_t> bytes, uint64_t framesEnd);

/// The first bytes of a file: where the directory stands.
struct ClipHeader {
    static constexpr size_t bytes = 40;

    uint64_t directoryOffset = 0;
    uint64_t directorySize = 0;
    uint32_t directoryCrc = 0;
};
std::vector<uint8_t> WriteHeader(const ClipHeader& header);
/// @throw Failure  if this is not the header of a clip
ClipHeader ReadHeader(std::span<const uint8_t> bytes);

} // namespace rawsdk
