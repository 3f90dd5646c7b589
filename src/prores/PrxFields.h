#pragma once

#include <array>
#include <cstdint>

/// One picture to decode out of a frame.
struct PrxFieldPlan {
    bool codedSecond; ///< the second picture in the stream
    bool interleaved; ///< one of two fields, which share the target line by line
    bool bottom;      ///< the lower field of the frame
    int32_t height;   ///< lines
};
using PrxFieldPlans = std::array<PrxFieldPlan, 2>;

/// Plans the pictures to decode in `mode` (1 to 11, see `PrxDecoder::decodeFrame`) of a frame of `height`
/// lines. Returns how many there are; 0 if the mode doesn't fit the frame or `interlaceMode` is above 2.
int32_t PrxPlanFields(int32_t interlaceMode, int32_t mode, int32_t height, PrxFieldPlans* plans);
