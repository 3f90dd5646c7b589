#pragma once

#include "prores/PrxScratchBuffer.h"
#include "prores/encoder/PrxSlice.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// The slices of the picture under way, with the memory for its coefficients and its alpha. Keeps the memory
/// of the largest picture yet.
class PrxPictureSlices {
public:
    /// Cuts a picture of `mbWidth` by `mbHeight` (0 for no slices at all) macroblocks into slices, row by
    /// row, and gives each its place: coefficients in that order, 64 for each block, on a boundary of 64
    /// bytes, and `alphaBytesPerMb` bytes of alpha for each macroblock. Throws `std::bad_alloc` if there is
    /// no memory for more than before; there are then no slices.
    void LayOut(uint32_t mbWidth, uint32_t mbHeight, uint32_t blocksPerMb, uint32_t alphaBytesPerMb);

    /// All slices, and those of one row from left to right.
    std::span<PrxSlice> All() { return {slices_.data(), count_}; }
    std::span<PrxSlice> Row(uint32_t row) { return All().subspan(size_t{row} * perRow_, perRow_); }

private:
    /// There are no slices any more.
    void Forget();

    /// Memory of one of the buffers below. Forgets the slices and throws if there is none.
    uint8_t* Reserve(PrxScratchBuffer& buffer, size_t size);
    void PlaceCoefficients(uint32_t mbWidth, uint32_t mbHeight, uint32_t blocksPerMb);
    void PlaceAlpha(size_t mbCount, uint32_t bytesPerMb);

    std::vector<PrxSlice> slices_; ///< the first `count_` are in use
    size_t count_ = 0;
    size_t perRow_ = 0;
    PrxScratchBuffer coefficients_;
    PrxScratchBuffer alpha_;
    // What the slices have been cut for.
    uint32_t mbWidth_ = 0;
    uint32_t mbHeight_ = 0;
    uint32_t blocksPerMb_ = 0;
};
