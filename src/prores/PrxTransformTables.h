#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// Constants of the fixed-point inverse transforms, which are of the kind of Intel's application note AP-922.

/// What the row pass multiplies a row with: cosines times 2^14, scaled by the row's part of the column pass.
struct PrxRowClass {
    int16_t s, b, c, d, e, f, g;
};

/// A row's class, and what is added to its even part before the shift. The rounders are no plain halves: they
/// differ from row to row, and the first row of a low block has none. Kept: they decide samples near a half
/// and leave a trace at 13 bits.
struct PrxTransformRow {
    size_t rowClass; ///< index in `prxRowClasses`
    int32_t rounder;
};

inline constexpr std::array<PrxRowClass, 4> prxRowClasses = {{
    {16384, 21407, 8867, 22725, 19266, 12873, 4520},
    {22725, 29692, 12299, 31521, 26722, 17855, 6270},
    {21407, 27969, 11585, 29692, 25172, 16819, 5906},
    {19266, 25172, 10426, 26722, 22654, 15137, 5315},
}};

/// The rows of a block of `Height` rows.
template <int32_t Height>
inline constexpr std::array<PrxTransformRow, Height> prxTransformRows = {};

template <>
inline constexpr std::array<PrxTransformRow, 8> prxTransformRows<8> = {{
    {0, 8192},
    {1, 23212},
    {2, 18081},
    {3, 13635},
    {0, 8192},
    {3, 3637},
    {2, 4096},
    {1, 2988},
}};

template <>
inline constexpr std::array<PrxTransformRow, 4> prxTransformRows<4> = {{
    {0, 0},
    {2, 18081},
    {0, 8192},
    {2, 4096},
}};

template <>
inline constexpr std::array<PrxTransformRow, 2> prxTransformRows<2> = {{
    {0, 0},
    {0, 8192},
}};

/// Fraction bits of the row pass.
inline constexpr int32_t prxRowShift = 14;

/// Factors of the column pass, times 2^16: the tangents of pi/16, pi/8 and 3 pi/16 and the cosine of pi/4,
/// the last two less 1 so that they fit.
inline constexpr int16_t prxTan1 = 13036;
inline constexpr int16_t prxTan2 = 27146;
inline constexpr int16_t prxTan3 = -21746;
inline constexpr int16_t prxCos4 = -19195;

/// How far the column pass's results are shifted for samples of `depth` bits.
constexpr int32_t PrxSampleShift(int32_t depth) { return 14 - depth; }

/// Half of what the shift drops.
constexpr int32_t PrxSampleHalf(int32_t depth) { return (1 << PrxSampleShift(depth)) >> 1; }
