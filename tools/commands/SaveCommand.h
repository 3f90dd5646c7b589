#pragma once

#include "frames/FormatSaver.h"
#include "frames/FrameInput.h"
#include "report/Progress.h"
#include "report/Report.h"

#include <optional>
#include <string>

/// What `corvexvf save` is asked for.
struct SaveOptions {
    std::string input;
    std::string output;
    SaveControls controls;             ///< the frame rate is chosen by the command
    std::optional<Rational> frameRate; ///< else the movie's, or 24 for images
    FrameInputOptions inputOptions;
    ProgressStyle progress = ProgressStyle::Bar;
};

/// Writes a movie of the frames of a movie or image sequence, through FFmpeg's host format.
/// @throw ToolError
void RunSave(const SaveOptions& options, Report& report);
