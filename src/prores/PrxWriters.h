#pragma once

#include "prores/PrxMacroblock.h"

#include <cstdint>

/// The writers, by family of formats. Each function returns the fastest writer that this machine runs, and
/// its twin with `Scalar` in its name the reference form; null if the family has none for the case.
/// `hasAlpha`: the macroblocks bring alpha samples.

/// `2vuy`, `r408`, `y408` at any reduction, and `v408` at full size.
PrxMacroblockWriter PrxSelect8BitWriter(uint32_t pixelFormat, int32_t chromaFormat, int32_t hShift,
                                        int32_t vShift, bool hasAlpha);
PrxMacroblockWriter PrxSelectScalar8BitWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha);

/// `v216`, `w216` and `y416`.
PrxMacroblockWriter PrxSelect16BitWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha);
PrxMacroblockWriter PrxSelectScalar16BitWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha);

/// `r4fl`.
PrxMacroblockWriter PrxSelectFloatWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha);
PrxMacroblockWriter PrxSelectScalarFloatWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha);

/// The RGB formats, straight from a 4:4:4 stream.
PrxMacroblockWriter PrxSelectRgbWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha);
PrxMacroblockWriter PrxSelectScalarRgbWriter(uint32_t pixelFormat, int32_t chromaFormat, bool hasAlpha);
