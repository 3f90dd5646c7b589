#pragma once

#include "media/Demuxer.h"
#include "media/FrameTable.h"
#include "media/MovieTrackInfo.h"
#include "media/TrackScan.h"

#include <string>

/// Gathers what is known of a scanned file.
/// @param table  made from `scan`; not empty
MovieTrackInfo DescribeTrack(const std::string& path, Demuxer& demuxer, const TrackScan& scan,
                             const FrameTable& table);
