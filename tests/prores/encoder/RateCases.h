#pragma once

#include "prores/encoder/EncodeFixture.h"

#include <iosfwd>

/// Pictures that are too much for their frame: rate control searches for a scale, misses its target, and
/// gives each slice a budget.
struct RateCase {
    const char* name;
    PrxEncodeSettings settings;
    uint32_t pixelFormat;
    int32_t width;
    int32_t height;
};

void PrintTo(const RateCase& test, std::ostream* out);

inline constexpr RateCase rateCases[] = {
    {"Noise422", {prxCodecApco, 0, 0}, prxFormatV216, 900, 600},
    {"TopFieldFirst422", {prxCodecApco, 1, 0}, prxFormatV216, 900, 600},
    {"BottomFieldFirstOfRgb422", {prxCodecApco, 2, 0}, prxFormatB64a, 900, 600},
    {"EqualLevels444WithAlpha", {prxCodecAp4h, 0, 1}, prxFormatY416, 1280, 720},
    {"CutAtTheCoarsestScale", {prxCodecApco, 0, 0}, prxFormatV216, 2, 40000},
};

/// The picture of a case: noise, or in `y416` blocks whose coefficients have one magnitude, which no
/// prediction from counts of levels does justice to, under noise in alpha.
InputPicture MakeRateCase(const RateCase& test);

/// Whether slices of each picture of the case's frame were coded again within a budget. They then have
/// indices that a search for one common scale does not give: that of the scale, and for small slices the
/// first or one that is some power of three times as coarse. Of a progressive case at the coarsest scale,
/// where there is no other index, planes have been cut.
bool HasBudgets(const RateCase& test, const std::vector<uint8_t>& frame);

/// How many planes of a progressive case's frame a budget has cut: those of fewer bytes than the plane takes
/// at the index of its slice without a budget.
size_t CountCutPlanes(const RateCase& test, const std::vector<uint8_t>& frame);
