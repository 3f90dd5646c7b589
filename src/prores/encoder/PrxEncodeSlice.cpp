#include "prores/encoder/PrxEncodeSlice.h"

#include "prores/PrxSliceHeader.h"
#include "prores/encoder/PrxRateControl.h"

#include <bit>
#include <cstring>

namespace {

PrxSliceInput Quantise(const PrxEncodePicture& picture, const PrxSlice& slice, uint32_t quantIndex,
                       PrxEncodeContext& context) {
    PrxBuildQuantTables(&context.tables, PrxQuantiserOf(quantIndex), picture.matrixIndex);
    picture.quantise(context.tables, slice.coefficients, static_cast<int32_t>(slice.MbCount()),
                     static_cast<int32_t>(picture.blocksPerMb), context.levels);
    return {.levels = context.levels,
            .quantIndex = quantIndex,
            .headerSize = picture.sliceHeaderSize,
            .alphaSize = static_cast<int32_t>(slice.alphaSize),
            .log2Width = slice.log2Width,
            .blocksPerMb = picture.blocksPerMb,
            .interlaced = picture.source.isField};
}

/// Writes the slice into the worker's memory, where any slice has room, and keeps what was written. With
/// `budgets`, not null, no plane passes its own.
bool Write(const PrxEncodePicture& picture, PrxSlice& slice, uint32_t quantIndex,
           const PrxPlaneBudgets* budgets, PrxEncodeContext& context) {
    const PrxSliceInput input = Quantise(picture, slice, quantIndex, context);
    const uint32_t capacity = PrxSliceCapacity(prxLog2SliceWidth, picture.blocksPerMb);
    uint8_t* written = context.sliceBytes.Reserve(capacity);
    if (written == nullptr) return false;
    slice.outcome = budgets != nullptr ? PrxWriteSlice(picture.coder, input, written, capacity, 1, *budgets)
                                       : PrxWriteSlice(picture.coder, input, written, capacity, 0, {});
    const auto size = static_cast<size_t>(slice.outcome.sliceSize);
    // Powers of two, so that frames of changing size soon find all the memory they need.
    uint8_t* kept = slice.data.Reserve(std::bit_ceil(size));
    slice.bytes = kept;
    if (kept == nullptr) return false;
    std::memcpy(kept, written, size);
    return true;
}

} // namespace

bool PrxEncodeSlice(const PrxEncodePicture& picture, PrxSlice& slice, PrxEncodeContext& context) {
    switch (picture.pass) {
    case PrxCodingPass::Measure:
        slice.outcome = PrxCountSlice(picture.coder, Quantise(picture, slice, slice.quantIndex, context));
        return true;
    case PrxCodingPass::Write: return Write(picture, slice, slice.quantIndex, nullptr, context);
    case PrxCodingPass::Fit: {
        if (slice.Body() <= slice.budgetHigh) return true;
        const PrxSliceFit fit = PrxFitSlice(slice, picture.chromaFormat);
        slice.quantIndex = fit.quantIndex;
        return Write(picture, slice, fit.quantIndex, &fit.budgets, context);
    }
    }
    return true;
}
