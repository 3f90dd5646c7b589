#pragma once

#include "prores/PrxMacroblock.h"

#include <cstdint>

/// Faster forms of the 8-bit writers, with the same bytes: for pictures that are not reduced across or
/// reduced by 2, and up to 2^(hShift + 1) down. They load whole rows of blocks, also behind the last row
/// asked for, and no alpha behind it. The instruction set is chosen here, at run time.

/// The writer, or null if there is none for this case, or none for this machine.
PrxMacroblockWriter PrxSelectVector8BitWriter(uint32_t pixelFormat, int32_t chromaFormat, int32_t hShift,
                                              bool hasAlpha);
