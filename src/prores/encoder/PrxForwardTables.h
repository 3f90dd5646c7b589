#pragma once

#include "prores/PrxTransformTables.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// Constants of the forward transform, which is of the kind of Intel's application note AP-922. The tangents
/// of its column pass are those of the inverse transform.

/// Cosine of pi/4 times 2^15.
inline constexpr int16_t prxForwardCos4 = 23170;

/// Fraction bits that the row pass drops.
inline constexpr int32_t prxForwardRowShift = 18;

/// Half of what the shift drops, which rounds all results of a row but its first.
inline constexpr int32_t prxForwardHalf = 1 << (prxForwardRowShift - 1);

/// What rounds the first result of each row: the half, and 8 times the row's factor times what the column
/// pass loses on average by cutting off its products.
inline constexpr std::array<int32_t, 8> prxForwardFirstRounders = {131072, 330955, 216699, 28439,
                                                                   131072, 79581,  216699, 149153};

/// Factors of the row pass in four groups of four pairs. With the sums a_i = x_i + x_(7-i) and the
/// differences b_i = x_i - x_(7-i), groups 0 and 2 are for the pairs (a0 a1) (b0 b1) (a2 a3) (b2 b3), and
/// groups 1 and 3 for (a2 a3) (b2 b3) (a0 a1) (b0 b1). Groups 0 and 1 make the results 0 to 3, one for each
/// pair, and groups 2 and 3 the results 4 to 7.
using PrxForwardGroups = std::array<std::array<int16_t, 8>, 4>;

constexpr PrxForwardGroups PrxMakeForwardGroups(size_t rowClass) {
    const auto [s, b, c, d, e, f, g] = prxRowClasses[rowClass];
    const auto minus = [](int16_t v) { return static_cast<int16_t>(-v); };
    // The first class takes a1 by 1 too much and a3 by 1 too little. Kept, for the same bits.
    const int16_t odd = rowClass == 0 ? 1 : 0;
    const auto more = static_cast<int16_t>(s + odd);
    const auto less = static_cast<int16_t>(s - odd);
    return {{{s, more, d, e, minus(c), minus(b), minus(d), minus(f)},
             {s, less, f, g, b, c, e, minus(g)},
             {s, minus(more), f, minus(d), b, minus(c), e, minus(d)},
             {minus(s), less, g, e, c, minus(b), g, minus(f)}}};
}

/// By the row's class, which is that of the inverse transform.
inline constexpr std::array<PrxForwardGroups, 4> prxForwardGroups = {
    PrxMakeForwardGroups(0), PrxMakeForwardGroups(1), PrxMakeForwardGroups(2), PrxMakeForwardGroups(3)};
