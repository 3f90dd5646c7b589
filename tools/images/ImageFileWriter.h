#pragma once

#include "images/ImageFormats.h"

#include <cstdint>
#include <optional>
#include <string>

/// What is written beside the pixels, where the file's format has a place for it.
struct ImageMetadata {
    std::optional<uint32_t> timeCode; ///< hh mm ss ff in binary coded decimal, bit 6 of the frames' byte set
                                      ///< for drop-frame counting (SMPTE ST 12-1)
    int32_t frameRateNumerator = 0;   ///< frames per second as a fraction; 0: not known
    int32_t frameRateDenominator = 1;
};

/// Writes `image` as a whole file, beside `path` under another name first, so that `path` never names a part
/// of a picture. Values are written as they are. May run for several images at once.
///
/// @param image      of the kind that `storage` gives
/// @param withAlpha  four channels instead of three
/// @throw ToolError: cannot write
void WriteImageFile(const std::string& path, const Image& image, const ImageStorage& storage, bool withAlpha,
                    const ImageMetadata& metadata);
