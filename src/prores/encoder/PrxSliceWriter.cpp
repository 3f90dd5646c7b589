#include "prores/encoder/PrxSliceWriter.h"

#include <algorithm>
#include <cassert>

namespace {

/// Bits that a coefficient takes at most. A level and its sign have 32, a run of 0 has 3, and each zero of a
/// longer run adds less than 35; a DC code has 33.
constexpr uint32_t maxBitsOfCoefficient = 35;
constexpr uint32_t maxBytesOfBlock = 64 * maxBitsOfCoefficient / 8;
constexpr uint32_t maxHeaderSize = 8;

std::array<PrxPlaneLevels, 3> PlanesOf(const PrxSliceInput& slice) {
    const uint32_t lumaBlocks = 4U << slice.log2Width;
    const uint32_t chromaBlocks = (slice.blocksPerMb - 4) / 2 << slice.log2Width;
    const uint16_t* chroma = slice.levels + size_t{64} * lumaBlocks;
    return {{{slice.levels, 64, lumaBlocks, slice.interlaced},
             {chroma, 128, chromaBlocks, slice.interlaced},
             {chroma + 64, 128, chromaBlocks, slice.interlaced}}};
}

void SetSliceSize(const PrxSliceInput& slice, PrxSliceOutcome* outcome) {
    outcome->sliceSize = slice.headerSize;
    for (const int32_t size : outcome->planeSize)
        outcome->sliceSize += size;
}

void WriteHeader(const PrxSliceInput& slice, const PrxSliceOutcome& outcome, uint8_t* data) {
    data[0] = static_cast<uint8_t>(slice.headerSize * 8);
    data[1] = static_cast<uint8_t>(slice.quantIndex);
    // Without alpha the size of Cr follows from the slice's, and its plane starts in the place of the field.
    const size_t sizes = slice.headerSize == 8 ? 3 : 2;
    for (size_t plane = 0; plane < sizes; ++plane) {
        data[2 + 2 * plane] = static_cast<uint8_t>(outcome.planeSize[plane] >> 8);
        data[3 + 2 * plane] = static_cast<uint8_t>(outcome.planeSize[plane]);
    }
}

} // namespace

PrxPlaneBudgets PrxDefaultBudgets(int32_t alphaSize, int32_t headerSize) {
    constexpr int32_t sharedOut = 65541;
    const int32_t room = sharedOut - alphaSize - headerSize;
    return {room / 2 - 6, room / 4, room / 4};
}

uint32_t PrxSliceCapacity(uint32_t log2Width, uint32_t blocksPerMb) {
    return maxHeaderSize + (blocksPerMb << log2Width) * maxBytesOfBlock;
}

PrxSliceOutcome PrxCountSlice(const PrxPlaneCoder& coder, const PrxSliceInput& slice) {
    const auto planes = PlanesOf(slice);
    PrxSliceOutcome outcome;
    for (size_t i = 0; i < planes.size(); ++i) {
        outcome.planes[i] = coder.count(planes[i]);
        outcome.planeSize[i] = (outcome.planes[i].dcBits + outcome.planes[i].acBits + 7) / 8;
    }
    SetSliceSize(slice, &outcome);
    return outcome;
}

PrxSliceOutcome PrxWriteSlice(const PrxPlaneCoder& coder, const PrxSliceInput& slice, uint8_t* data,
                              uint32_t capacity, int32_t limit, const PrxPlaneBudgets& budgets) {
    assert(slice.headerSize == 6 || slice.headerSize == 8);
    assert(capacity >= static_cast<uint32_t>(slice.headerSize));
    const auto planes = PlanesOf(slice);
    const PrxPlaneBudgets own = limit > 0 ? budgets : PrxDefaultBudgets(slice.alphaSize, slice.headerSize);
    PrxSliceOutcome outcome;
    int64_t room = int64_t{capacity} - slice.headerSize;
    int64_t unused = 0;
    uint8_t* next = data + slice.headerSize;
    for (size_t i = 0; i < planes.size(); ++i) {
        const int64_t budget = own[i] + unused;
        // A negative budget is none, and the buffer is then the only limit.
        PrxBitWriter writer(next, budget < 0 ? room : std::min(budget, room));
        outcome.planes[i] = coder.write(planes[i], writer);
        outcome.planeSize[i] = static_cast<int32_t>(writer.Flush());
        unused = budget - outcome.planeSize[i];
        room -= outcome.planeSize[i];
        next += outcome.planeSize[i];
    }
    WriteHeader(slice, outcome, data);
    SetSliceSize(slice, &outcome);
    return outcome;
}
