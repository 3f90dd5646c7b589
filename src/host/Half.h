#pragma once

#include <bit>
#include <cstdint>

/// Value of an IEEE 754 half (binary16), given by its bits. Exact; a NaN keeps its sign and payload.
///
/// Does not depend on the thread's floating-point mode: neither rounding nor flushing of subnormals.
constexpr float HalfToFloat(uint16_t half) {
    constexpr uint32_t rebias = (127 - 15) << 23;
    const uint32_t sign = static_cast<uint32_t>(half & 0x8000) << 16;
    const uint32_t magnitude = static_cast<uint32_t>(half & 0x7fff) << 13;
    const uint32_t exponent = magnitude & 0x0f800000;
    uint32_t bits = magnitude + rebias;
    if (exponent == 0x0f800000) {
        bits += rebias; // infinity and NaN
    } else if (exponent == 0) {
        // A number of steps of 2^-24. Both factors and the product are exact and are 0 or normal singles.
        bits = std::bit_cast<uint32_t>(static_cast<float>(half & 0x03ff) * 0x1p-24f);
    }
    return std::bit_cast<float>(bits | sign);
}

/// Bits of the half nearest to `value`, ties to even. What rounds to 65536 or more is infinity; a NaN stays a
/// (quiet) NaN and keeps its sign.
///
/// Integer arithmetic only: the thread's rounding mode has no effect.
constexpr uint16_t FloatToHalf(float value) {
    const uint32_t bits = std::bit_cast<uint32_t>(value);
    const uint32_t sign = (bits >> 16) & 0x8000;
    const uint32_t magnitude = bits & 0x7fffffff;
    uint32_t half = 0;
    if (magnitude > 0x7f800000) {
        half = 0x7e00 | ((magnitude >> 13) & 0x01ff);
    } else if (magnitude >= 0x47800000) {
        half = 0x7c00;
    } else if (magnitude >= 0x38800000) {
        const uint32_t odd = (magnitude >> 13) & 1;
        half = (magnitude - ((127u - 15u) << 23) + 0x0fff + odd) >> 13; // may carry into infinity
    } else if (magnitude > 0x33000000) {
        const uint32_t mantissa = (magnitude & 0x007fffff) | 0x00800000;
        const uint32_t shift = 126 - (magnitude >> 23); // 14..24
        const uint32_t odd = (mantissa >> shift) & 1;
        half = (mantissa + (1u << (shift - 1)) - 1 + odd) >> shift;
    }
    return static_cast<uint16_t>(half | sign);
}
