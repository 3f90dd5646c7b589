#pragma once

#include "ffmpeg/FFmpegFunctions.h"

#include <cstdint>
#include <string>

namespace CxFFMPEG {

/// A time code, of which each field has eight bits.
struct TimeCode {
    uint8_t hours = 0;
    uint8_t minutes = 0;
    uint8_t seconds = 0;
    uint8_t frames = 0;
    AVRational rate = {0, 1};    ///< frames per second
    uint8_t framesPerSecond = 0; ///< the rate as the numbering counts; 0 counts as 1
    bool dropFrame = false;      ///< numbers are left out so that the code keeps pace with the clock

    /// Reads "HH:MM:SS:FF", of which any separators will do. Hours alone are read of a text of 2 characters,
    /// minutes of 5, seconds of 8, two digits of frames of exactly 11 and three of exactly 12; what is not
    /// read is 0. A character that is no digit ends the number that it stands in.
    static TimeCode FromText(const std::string& text);
    /// The time code that a frame count stands for.
    static TimeCode FromFrameCount(uint32_t count, AVRational rate, uint8_t framesPerSecond, bool dropFrame);

    /// Frames from 00:00:00:00 on.
    int64_t FrameCount() const;
    /// "HH:MM:SS:FF", with more digits where a field needs them.
    std::string Text() const;
};

} // namespace CxFFMPEG
