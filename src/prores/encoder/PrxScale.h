#pragma once

#include <algorithm>
#include <cstdint>

/// Largest divisor of a slice's coefficients, and the quantisation index that stands for it.
inline constexpr int32_t prxMaxScale = 512;
inline constexpr uint32_t prxMaxQuantIndex = 224;

/// Quantisation index of `scale`, which counts as 1 below and as 512 above: that of the next lower scale if
/// there is none of its own. `PrxQuantiserOf` is the way back.
constexpr uint32_t PrxQuantIndexOf(int64_t scale) {
    const auto limited = static_cast<uint32_t>(std::clamp<int64_t>(scale, 1, prxMaxScale));
    return limited <= 128 ? limited : (limited - 126) / 4 + 128;
}

/// The nearest scale to one of 16.16 in steps of 1 up to 36, of 2 up to 128 and of 4 from there on, halves
/// up.
constexpr int64_t PrxRoundScale(int64_t scale) {
    const int64_t whole = (scale + (1 << 15)) >> 16;
    if (whole <= 36) return whole;
    const int64_t even = ((scale + (1 << 16)) >> 17) * 2;
    return even < 129 ? even : ((scale + (1 << 17)) >> 18) * 4;
}
