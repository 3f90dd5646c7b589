#pragma once

#include "ffmpeg/EncodedTrack.h"
#include "tools/Workspace.h"

#include <functional>
#include <string>

/// How a track becomes a movie.
struct MovieSpec {
    AVRational rate = {25, 1}; ///< frames per second
    int32_t firstFrame = 0;    ///< frames that pass before the first one is shown
    int soundStreams = 0;      ///< that come before the pictures, also in the file
    bool isIndexed = true;     ///< the muxer goes back and writes what it knows at the end
    /// Changes a packet's times, which are frames of the movie in `rate`; none leaves all as they are.
    std::function<void(AVPacket&)> change = nullptr;
};

/// Writes a movie of the track into a file, whose muxer FFmpeg takes from its name.
/// @return its path
std::string WriteMovie(const Workspace& workspace, const std::string& name, const EncodedTrack& track,
                       const MovieSpec& spec = {});

/// The movie that most tests read: 24 frames of H.264 in two closed groups, with frames out of order, each of
/// its own grey.
const EncodedTrack& GreyTrack();
/// The same with the parameter sets in the samples, as a transport stream wants them.
const EncodedTrack& GreyStreamTrack();
