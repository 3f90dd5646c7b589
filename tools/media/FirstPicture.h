#pragma once

#include "media/TrackScan.h"

#include <string>

/// Takes the samples out of presentation that come before the first picture which a decoder shows. A file
/// that was cut from a longer one, as a transport stream may be at any packet, begins with pictures that
/// refer to some that aren't there; they are samples, and no frames.
///
/// Only a track that doesn't begin with a key picture, or that shows others before it, is looked into, by
/// decoding it up to that picture; the samples of all others stay as they are.
/// @param scan  of the file at `path`
/// @throw ToolError  as `Demuxer`, if the file isn't there any more
void HideUndecodableStart(const std::string& path, TrackScan& scan);
