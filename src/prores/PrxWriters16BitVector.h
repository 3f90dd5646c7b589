#pragma once

#include "prores/PrxMacroblock.h"

#include <cstdint>

/// The vector forms of the writers of `v216`, `w216` and `y416`, for the instruction set in force: the same
/// bytes as the reference form, any alignment, nothing touched beyond the rows and pixels asked for. Null
/// where there is none.
PrxMacroblockWriter PrxSelectVector16BitWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha);
