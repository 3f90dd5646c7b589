#pragma once

#include "media/MovieTrackInfo.h"

#include <cstdint>

/// Whether the code names plain pixels with an alpha channel.
bool PackingHasAlpha(uint32_t fourCC);

/// Whether the code names plain R, G and B values, which need no matrix.
bool PackingIsRgb(uint32_t fourCC);

/// Whether frames of the track may have an alpha channel: its code is a packing with one, or that of a
/// registry encoder whose row says so, or FFmpeg decodes it to pixels with one.
bool CarriesAlpha(const MovieTrackInfo& track);
