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
