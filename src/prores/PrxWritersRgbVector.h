#pragma once

#include "prores/PrxMacroblock.h"

#include <cstdint>

/// Faster forms of the RGB writers of PrxWriters.h, with the same bytes written. Null where there is no
/// writer, and on every machine but an x86 one with vectors.
PrxMacroblockWriter PrxSelectVectorRgbWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha);
