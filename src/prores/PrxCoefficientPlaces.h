#pragma once

#include <cstdint>
#include <span>

/// A pointer may run this many entries ahead of the end of a table of places, though not be read there.
inline constexpr uint32_t prxPlacesBehind = 32;

/// For each coefficient of a component in coding order, one frequency of all blocks after the other, its
/// place in the array of coefficients. `scan` is a list of `PrxScanTable`, and the component's 1 <<
/// `log2BlockCount` blocks start 1 << `log2BlockSize` values apart. The tables are constant and built at
/// first use, from any thread. Null for a scan or a number that no decode has.
const uint16_t* PrxCoefficientPlaces(std::span<const uint8_t> scan, uint32_t log2BlockCount,
                                     uint32_t log2BlockSize);
