#pragma once

#include "prores/encoder/PrxPlaneCoder.h"

#include <array>
#include <cstdint>

/// Slices as the stream has them: a header, then luma, Cb and Cr (SMPTE RDD 36, 5.3). Alpha is not part of
/// what is written here; its bytes follow those of the slice.

/// What is coded.
struct PrxSliceInput {
    const uint16_t* levels; ///< all luma blocks, then all chroma blocks, Cb and Cr in turn: `PrxPlaneLevels`
    uint32_t quantIndex;    ///< 1 to 224
    int32_t headerSize;     ///< 6, or 8 in a stream with alpha
    int32_t alphaSize;      ///< bytes of the slice's alpha
    uint32_t log2Width;     ///< log2 of the width in macroblocks: 0 to 3
    uint32_t blocksPerMb;   ///< 8 in 4:2:2, 12 in 4:4:4
    bool interlaced;        ///< the slice is that of a field
};

/// What it took. Planes are Y', Cb, Cr.
struct PrxSliceOutcome {
    std::array<PrxPlaneStatistics, 3> planes;
    std::array<int32_t, 3> planeSize; ///< bytes
    int32_t sliceSize;                ///< bytes of the header and the planes
};

/// Most bytes that each plane may take.
using PrxPlaneBudgets = std::array<int32_t, 3>;

/// The budgets of a slice that has none of its own. Together with `alphaSize` bytes of alpha and the header
/// they have a size of 16 bits. Planes of the levels that rate control lets through stay far below them.
PrxPlaneBudgets PrxDefaultBudgets(int32_t alphaSize, int32_t headerSize);

/// Bytes that no slice of this shape passes, whatever its levels and budgets.
uint32_t PrxSliceCapacity(uint32_t log2Width, uint32_t blocksPerMb);

/// Codes a slice without writing it: what `PrxWriteSlice` takes if no budget cuts it.
PrxSliceOutcome PrxCountSlice(const PrxPlaneCoder& coder, const PrxSliceInput& slice);

/// Writes a slice to `data`, which has `capacity` bytes: no byte behind them is touched, and from
/// `PrxSliceCapacity` on they are no limit. With a `limit` above 0 a plane takes no more than its budget and
/// what the plane before it left of its own; else the budgets are such that slice and alpha together have a
/// size of 16 bits. A plane that its budget cuts is valid, and lacks its last coefficients.
PrxSliceOutcome PrxWriteSlice(const PrxPlaneCoder& coder, const PrxSliceInput& slice, uint8_t* data,
                              uint32_t capacity, int32_t limit, const PrxPlaneBudgets& budgets);
