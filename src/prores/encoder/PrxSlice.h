#pragma once

#include "prores/PrxScratchBuffer.h"
#include "prores/encoder/PrxSliceWriter.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// Width of a full slice in macroblocks, as a power of two.
inline constexpr uint32_t prxLog2SliceWidth = 3;

/// What the planes of a slice take, or are thought to take, and together; bytes.
struct PrxSliceEstimate {
    std::array<int32_t, 3> planes;
    int32_t sum;
};

/// A slice of the picture under way. Workers change the slices of their row, and the thread that encodes
/// those of all rows, never at the same time.
struct PrxSlice {
    // Its place, which is the same in all pictures of one size.
    uint32_t mbX;           ///< in macroblocks
    uint32_t log2Width;     ///< log2 of the width in macroblocks
    int16_t* coefficients;  ///< borrowed from the picture
    uint8_t* alphaData;     ///< likewise; null without alpha
    uint32_t alphaCapacity; ///< bytes

    // What came out of the last pass.
    uint32_t alphaSize; ///< bytes
    bool alphaOpaque;   ///< every sample of alpha is at full value; also without alpha
    PrxSliceOutcome outcome;
    PrxScratchBuffer data; ///< grows only: header and planes of the last pass that wrote
    const uint8_t* bytes;  ///< its `outcome.sliceSize` bytes

    // What was decided for the next one.
    uint32_t quantIndex; ///< 1 to 224; 0 while the slice waits for the picture's common scale
    int32_t budgetHigh;  ///< bytes without the header: those that the slice may not pass
    int32_t budgetLow;   ///< and those that it aims for
    /// By how often the scale was tripled; 0: what was measured.
    std::array<PrxSliceEstimate, 8> estimate;

    uint32_t MbCount() const { return 1U << log2Width; }

    /// Bytes of the planes.
    int32_t Body() const { return outcome.planeSize[0] + outcome.planeSize[1] + outcome.planeSize[2]; }

    /// Bytes that the DC values of the planes take, each rounded up.
    std::array<int32_t, 3> DcSizes() const {
        std::array<int32_t, 3> sizes;
        for (size_t plane = 0; plane < sizes.size(); ++plane)
            sizes[plane] = (outcome.planes[plane].dcBits + 7) / 8;
        return sizes;
    }
    int32_t DcSize() const {
        const auto sizes = DcSizes();
        return sizes[0] + sizes[1] + sizes[2];
    }
};
