#pragma once

#include "FrameList.h"
#include "frames/FrameInput.h"
#include "images/ImageFormats.h"
#include "report/Progress.h"
#include "report/Report.h"

#include <string>

/// What `corvexvf decode` is asked for.
struct DecodeOptions {
    std::string input;
    std::string output; ///< image file; with a number field for more than one frame
    FrameList frames;
    ImageDepth depth = ImageDepth::Default;
    FrameInputOptions inputOptions;
    ProgressStyle progress = ProgressStyle::Bar;
};

/// Writes frames of a movie or sequence as images, numbered as in the input.
/// @throw ToolError
void RunDecode(const DecodeOptions& options, Report& report);
