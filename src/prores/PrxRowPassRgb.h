#pragma once

#include "prores/PrxRowPass.h"

#include <cstdint>

/// The passes that end a row of a 4:2:2 stream in an RGB format: from `v216` pixels in the row buffer.
/// `colorMatrix` of the setup chooses the coefficients. An odd pixel's chroma is the mean of its own pair's
/// and the next pair's; the last pair of a stretch is its own successor. Reads whole pairs of the stretch
/// and nothing behind them; writes the stretch's pixels and nothing else. Target rows have any alignment.
///
/// `hasAlpha`: alpha samples are given, of one byte, or of two in native order for `b64a`; without them a
/// format with alpha gets the opaque value, and a format without alpha ignores them.

/// The fastest pass that this machine runs; null for a format that is no RGB format, and for `l302`, which
/// has no pass.
PrxRowPass PrxSelectRgbRowPass(uint32_t pixelFormat, bool hasAlpha);

/// The reference form of the same.
PrxRowPass PrxSelectScalarRgbRowPass(uint32_t pixelFormat, bool hasAlpha);
