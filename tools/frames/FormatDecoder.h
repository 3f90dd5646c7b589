#pragma once

#include "frames/FrameDecoder.h"

#include <memory>

/// Opens the movie's file by the first host format that claims its extension and opens it, the one of highest
/// priority being tried first.
/// @param source  of the same file; outlives the decoder
/// @return null if no format opens it
std::unique_ptr<FrameDecoder> OpenFormatDecoder(MovieTrackSource& source);
