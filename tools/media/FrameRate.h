#pragma once

#include "media/FrameTable.h"
#include "media/Rational.h"

#include <vector>

struct FrameRate {
    Rational rate; ///< frames per second; 0/1 if nothing tells it
    bool isConstant = true;
};

/// The rate of a track by the times of its frames. The first of `candidates` (rates that the container
/// states) on whose grid every frame lies to a tick is the rate; if none fits, the rate is the mean and not
/// constant.
/// @param timeBase  seconds of a tick
FrameRate FindFrameRate(const FrameTable& table, Rational timeBase, const std::vector<Rational>& candidates);
