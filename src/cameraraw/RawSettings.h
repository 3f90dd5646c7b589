#pragma once

#include "cameraraw/RawDefaults.h"

#include <cstdint>
#include <string>

/// The settings of a frame, as they are in the clip.
struct RawFrameValues {
    uint32_t whiteBalanceKelvin = rawRanges.whiteBalanceKelvin.preset;
    int16_t whiteBalanceTint = rawRanges.whiteBalanceTint.preset;
    int16_t iso = 0;
    float exposure = rawRanges.exposure.preset; ///< stops
};

/// The settings of a clip, as they are in it. None of them goes back to the SDK: a frame is processed with
/// the settings objects themselves.
struct RawClipValues {
    float saturation = rawRanges.saturation.preset;
    float contrast = rawRanges.contrast.preset;
    float midpoint = rawRanges.midpoint.preset;
    float highlights = rawRanges.highlights.preset;
    float shadows = rawRanges.shadows.preset;
    uint16_t colorScienceGeneration = 0;
    uint16_t videoBlackLevel = 0;
    float blackLevel = rawRanges.blackLevel.preset;
    float whiteLevel = rawRanges.whiteLevel.preset;
    uint16_t highlightRecovery = 0;
    std::string gamut = rawDefaultGamut;
    std::string gamma = rawDefaultGamma;
    std::string cameraType;
    float gain = 1.0F;
    std::string lutMode = "Disabled";
    uint32_t lutSources = 0; ///< bits of `RawLutSource`
};

/// Where a LUT of a clip may come from.
enum RawLutSource : uint32_t {
    RawLut_Embedded = 1, ///< the clip's file
    RawLut_Sidecar = 2,  ///< a file beside it
};

/// Read the settings. What the SDK refuses, or gives another type of, is left alone, without a word. Throw
/// std::bad_alloc.
void ReadRawSettings(RawFrameSettings& settings, RawFrameValues& values);
void ReadRawSettings(RawClipSettings& settings, RawClipValues& values);

/// Finds out which LUTs a clip has, by choosing each in turn. The mode is `lutMode` again afterwards.
/// @return bits of `RawLutSource`. Throws std::bad_alloc.
uint32_t FindRawLutSources(RawClipSettings& settings, const std::string& lutMode);
