#pragma once

#include "prores/StreamBits.h"
#include "prores/encoder/PrxPlaneCoder.h"

#include <cstdint>
#include <random>
#include <span>
#include <vector>

/// Planes of levels for tests, and a coder of them that is written from SMPTE RDD 36 alone, code by code.
namespace plane {

/// The levels of a plane, and of the one that lies between its blocks if the distance is 128.
struct Plane {
    std::vector<uint16_t> levels;
    uint32_t blockDistance;
    uint32_t blockCount;
    bool interlaced;

    PrxPlaneLevels View() const { return {levels.data(), blockDistance, blockCount, interlaced}; }

    /// Coefficient of a block, with its sign.
    int Value(uint32_t block, uint32_t inBlock) const;

    /// All coefficients in coding order.
    std::vector<int> InCodingOrder() const;
};

/// What stands in a plane.
struct Filling {
    double density;        ///< share of AC levels that are not zero
    uint32_t largestDc;    ///< magnitude
    uint32_t largestAc;    ///< magnitude
    bool smallOnesPrevail; ///< all bit widths are equally frequent, not all values
};

/// Fillings from nothing at all to the largest numbers everywhere that a decoder follows.
std::span<const Filling> DecodableFillings();

/// The fillings above, and such with the largest numbers of 16 bits.
std::span<const Filling> AllFillings();

Plane MakePlane(std::mt19937& random, uint32_t blockCount, uint32_t blockDistance, bool interlaced,
                const Filling& filling);

/// A plane of zeros.
Plane MakeEmptyPlane(uint32_t blockCount);

/// A level as the quantiser stores it.
uint16_t LevelOf(int value);

/// What coding gives.
struct Coded {
    stream::Bytes bytes;
    PrxPlaneStatistics statistics;
};

/// Codes a plane under a budget of bytes; a code that does not fit ends it.
Coded CodePlane(const Plane& plane, size_t budget);

/// The coefficients of a coded plane in coding order, as a decoder written from the standard reads them, and
/// as the engine's own decoder does.
std::vector<int> DecodeWithModel(const Plane& shape, const stream::Bytes& bytes);
std::vector<int> DecodeWithEngine(const Plane& shape, const stream::Bytes& bytes);

} // namespace plane
