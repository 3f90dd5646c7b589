#pragma once

#include "media/Demuxer.h"
#include "media/FrameTable.h"
#include "media/PictureParser.h"

#include <string>
#include <vector>

/// What one pass over the packets of a track found.
struct TrackScan {
    std::vector<SampleEntry> samples; ///< in decode order, with complete times
    int64_t frameTicks = 1;           ///< a frame's duration by the container's rate
    int codedWidth = 0;               ///< pixels; 0 if the bitstream doesn't tell
    int codedHeight = 0;
    AVFieldOrder fieldOrder = AV_FIELD_UNKNOWN; ///< by the bitstream's first picture
    std::string damage;                         ///< why the pass ended early; empty if it didn't
};

/// Reads every packet of the track, from the start of a freshly opened file. A last packet that is cut short
/// is left out.
TrackScan ScanTrack(Demuxer& demuxer);
