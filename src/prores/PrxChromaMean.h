#pragma once

#include <cstdint>

/// Chroma of an odd pixel of a 4:2:2 stream in a 4:4:4 format, from the finished chroma of the even pixels on
/// its left and right.
inline uint16_t PrxChromaMean(uint16_t left, uint16_t right) {
    return static_cast<uint16_t>((left + right + 1) >> 1);
}
inline float PrxChromaMean(float left, float right) { return (left + right) * 0.5F; }
