#pragma once

#include "prores/encoder/PrxBitWriter.h"

#include <array>
#include <cstdint>

/// The levels of one plane of a slice, each twice its magnitude plus 1 if negative. A magnitude of 0 is a
/// zero whatever its sign.
struct PrxPlaneLevels {
    const uint16_t* levels; ///< block 0; a block has 64 values in raster order
    uint32_t blockDistance; ///< values from one block to the next: 64 or 128
    uint32_t blockCount;    ///< 2 to 32, a power of two
    bool interlaced;        ///< by which scan the coefficients are coded
};

/// Magnitudes that the entries of `levelHistogram` count levels above: (3^k - 1) / 2.
inline constexpr std::array<int32_t, 8> prxLevelThresholds = {0, 1, 4, 13, 40, 121, 364, 1093};

/// What coding a plane took.
struct PrxPlaneStatistics {
    int32_t dcBits = 0;
    int32_t acBits = 0;
    int32_t runBits = 0;   ///< those of `acBits` that run codes took
    int32_t dcChanges = 0; ///< DC values that differ from the one before; the first from 0
    std::array<int32_t, 8> levelHistogram = {}; ///< AC levels above each of `prxLevelThresholds`

    bool operator==(const PrxPlaneStatistics&) const = default;
};

/// The two forms of coding a plane (SMPTE RDD 36, 7.1.1), which agree in every bit and number.
struct PrxPlaneCoder {
    /// Codes a plane without writing it.
    PrxPlaneStatistics (*count)(const PrxPlaneLevels& plane);

    /// Codes a plane into `writer`, which the caller then flushes. Where the writer's budget ends, the rest
    /// of the plane is left out, from a whole coefficient on, and the statistics are those of what fitted.
    PrxPlaneStatistics (*write)(const PrxPlaneLevels& plane, PrxBitWriter& writer);
};

/// The fastest coder that this machine runs, and the reference form. Same results.
PrxPlaneCoder PrxSelectPlaneCoder();
PrxPlaneCoder PrxScalarPlaneCoder();
