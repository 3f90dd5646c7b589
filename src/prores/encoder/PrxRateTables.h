#pragma once

#include <array>
#include <cstdint>

/// Functions of a fraction in 1024ths, times 65536, as rate control takes them. All of its arithmetic is of
/// integers, so that the same picture gives the same bytes on every machine.
///
/// The entries are computed once, in double precision. No true value lies nearer to a half than 0.0005, and
/// the C library is off by less than a millionth of that: each entry is the nearest integer everywhere.
struct PrxRateTables {
    std::array<int32_t, 1024> power; ///< 3 to the power of the fraction
    std::array<int32_t, 1024> root;  ///< its square root
    std::array<int32_t, 1024> log;   ///< its logarithm to base 3; 0 for 0
};
const PrxRateTables& PrxGetRateTables();

/// Index of a fraction given in 65536ths: the nearest, halves up, and no more than the last.
constexpr uint32_t PrxRateTableIndex(int64_t fraction) {
    const int64_t index = (fraction + 32) >> 6;
    return index < 0 ? 0 : index > 1023 ? 1023 : static_cast<uint32_t>(index);
}
