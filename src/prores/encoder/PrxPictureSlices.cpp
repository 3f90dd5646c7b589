#include "prores/encoder/PrxPictureSlices.h"

#include "prores/PrxHeaders.h"
#include "prores/PrxOutOfMemory.h"

#include <algorithm>
#include <bit>

void PrxPictureSlices::LayOut(uint32_t mbWidth, uint32_t mbHeight, uint32_t blocksPerMb,
                              uint32_t alphaBytesPerMb) {
    const bool isSame = mbWidth == mbWidth_ && mbHeight == mbHeight_ && blocksPerMb == blocksPerMb_;
    if (!isSame) {
        Forget();
        PlaceCoefficients(mbWidth, mbHeight, blocksPerMb);
        mbWidth_ = mbWidth;
        mbHeight_ = mbHeight;
        blocksPerMb_ = blocksPerMb;
    }
    PlaceAlpha(size_t{mbWidth} * mbHeight, alphaBytesPerMb);
}

void PrxPictureSlices::Forget() { count_ = mbWidth_ = mbHeight_ = 0; }

uint8_t* PrxPictureSlices::Reserve(PrxScratchBuffer& buffer, size_t size) {
    uint8_t* bytes = buffer.Reserve(size);
    if (bytes == nullptr) {
        Forget();
        throw PrxOutOfMemory();
    }
    return bytes;
}

void PrxPictureSlices::PlaceCoefficients(uint32_t mbWidth, uint32_t mbHeight, uint32_t blocksPerMb) {
    const size_t perRow = PrxSlicesPerRow(prxLog2SliceWidth, mbWidth);
    const size_t count = perRow * mbHeight;
    if (count == 0) return;
    if (slices_.size() < count) slices_.resize(count);
    const size_t perMb = size_t{64} * blocksPerMb;
    const size_t bytes = perMb * mbWidth * mbHeight * sizeof(int16_t);
    auto* next = reinterpret_cast<int16_t*>(Reserve(coefficients_, bytes));
    uint32_t mbX = 0;
    for (PrxSlice& slice : std::span(slices_.data(), count)) {
        const uint32_t width = PrxNextSliceWidth(1U << prxLog2SliceWidth, mbWidth - mbX);
        slice.mbX = mbX;
        slice.log2Width = static_cast<uint32_t>(std::countr_zero(width));
        slice.coefficients = next;
        next += perMb * width;
        mbX = mbX + width == mbWidth ? 0 : mbX + width;
    }
    perRow_ = perRow;
    count_ = count;
}

void PrxPictureSlices::PlaceAlpha(size_t mbCount, uint32_t bytesPerMb) {
    uint8_t* next = bytesPerMb * mbCount != 0 ? Reserve(alpha_, bytesPerMb * mbCount) : nullptr;
    for (PrxSlice& slice : All()) {
        slice.alphaData = next;
        slice.alphaCapacity = bytesPerMb * slice.MbCount();
        next += slice.alphaCapacity;
    }
}
