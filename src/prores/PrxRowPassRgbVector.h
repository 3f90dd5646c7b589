#pragma once

#include "prores/PrxRowPass.h"

#include <cstdint>

/// Faster forms of the passes of PrxRowPassRgb.h, with the same bytes written and the same bounds. Null where
/// that header has no pass, and on every machine but an x86 one with vectors.
PrxRowPass PrxSelectVectorRgbRowPass(uint32_t pixelFormat, bool hasAlpha);
