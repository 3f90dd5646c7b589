#pragma once

#include "frames/FrameInput.h"
#include "media/Rational.h"
#include "report/Progress.h"
#include "report/Report.h"

#include <optional>
#include <string>

/// What `corvexvf encode` is asked for.
struct EncodeOptions {
    std::string input;
    std::string output;
    std::string codec;                 ///< display name of a registry encoder
    std::optional<Rational> frameRate; ///< else the movie's, or 24 for images
    std::optional<int> fieldOrder;     ///< 1 progressive, 2 top, 3 bottom field first; else the input's
    bool alpha = false;                ///< code the alpha channel
    FrameInputOptions inputOptions;
    ProgressStyle progress = ProgressStyle::Bar;
};

/// Writes a movie of the frames of a movie or image sequence, through an encoder of the registry.
/// @throw ToolError
void RunEncode(const EncodeOptions& options, Report& report);
