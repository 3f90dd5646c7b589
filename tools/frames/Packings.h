#pragma once

#include <cstdint>

/// Whether the code names plain pixels with an alpha channel.
bool PackingHasAlpha(uint32_t fourCC);

/// Whether the code names plain R, G and B values, which need no matrix.
bool PackingIsRgb(uint32_t fourCC);

/// Whether frames of this code may have an alpha channel: a packing with one, or a registry encoder whose row
/// says so.
bool CarriesAlpha(uint32_t fourCC);
