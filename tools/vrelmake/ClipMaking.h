#pragma once

#include "frames/FrameInput.h"
#include "media/Rational.h"
#include "rawsdk/clip/Settings.h"

#include <optional>
#include <string>

/// What a clip is to be made of, and how.
struct ClipOptions {
    std::string input;
    std::string output;
    Rational frameRate = {24, 1};
    std::string timecode;     ///< of the first frame; empty for none
    std::string metadataFile; ///< empty for none
    std::string table;        ///< file of the table of colours in the clip; empty for none
    std::string sidecarTable; ///< file of the one beside it; empty for none
    std::optional<std::string> camera;
    rawsdk::ClipSettings clipSettings;
    rawsdk::FrameSettings frameSettings; ///< of every frame
    FrameInputOptions inputOptions;
};

/// Makes a clip whose frames decode to the pictures of the input, without its table. A file that can't be
/// finished is removed.
/// @throw ToolError
void MakeClip(const ClipOptions& options);
