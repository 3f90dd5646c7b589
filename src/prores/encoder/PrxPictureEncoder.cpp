#include "prores/encoder/PrxPictureEncoder.h"

#include "prores/PrxFormats.h"
#include "prores/PrxHeaders.h"
#include "prores/PrxOutOfMemory.h"
#include "prores/encoder/PrxPictureWriter.h"
#include "prores/encoder/PrxRateControl.h"

#include <algorithm>

PrxCodedPicture PrxPictureEncoder::Encode(PrxThreadPool& pool, const PrxPictureSource& source,
                                          const PrxRateTarget& target, const PrxAlphaCoder& alphaCoder,
                                          std::span<uint8_t> output) {
    Prepare(source, target, alphaCoder);
    if (mbCount_ != 0) Code(pool, target);
    const bool allOpaque = std::ranges::all_of(slices_.All(), &PrxSlice::alphaOpaque);
    return {PrxWritePicture(slices_.All(), output), allOpaque};
}

void PrxPictureEncoder::Prepare(const PrxPictureSource& source, const PrxRateTarget& target,
                                const PrxAlphaCoder& alphaCoder) {
    picture_ = {.source = source,
                .chromaFormat = target.chromaFormat,
                .colorMatrix = target.colorMatrix,
                .matrixIndex = target.matrixIndex,
                .blocksPerMb = target.chromaFormat == prxChroma444 ? 12U : 8U,
                .sliceHeaderSize = alphaCoder.alphaType != 0 ? 8 : 6,
                .alphaCoder = alphaCoder,
                .preparer = PrxChooseRowPreparer(source.pixelFormat, target.chromaFormat, source.width,
                                                 source.FrameRowBytes()),
                .convert = PrxGetConverter(source.pixelFormat, target.chromaFormat),
                .transform = PrxSelectForwardTransform(),
                .quantise = PrxSelectQuantiser(),
                .coder = PrxSelectPlaneCoder(),
                .pass = PrxCodingPass::Measure};
    const uint32_t mbWidth = PrxMbCount(static_cast<uint32_t>(source.width));
    const uint32_t mbHeight = PrxMbCount(static_cast<uint32_t>(source.height));
    constexpr uint32_t bytesPerUnit = 256;
    const uint32_t alphaBytesPerMb = bytesPerUnit * static_cast<uint32_t>(alphaCoder.bufferUnits);
    mbCount_ = size_t{mbWidth} * mbHeight;
    slices_.LayOut(mbWidth, mbHeight, picture_.blocksPerMb, alphaBytesPerMb);
    for (PrxSlice& slice : slices_.All())
        slice.quantIndex = target.startQuantIndex;
    MakeJobs(mbHeight);
}

void PrxPictureEncoder::MakeJobs(uint32_t mbHeight) {
    const PrxPictureSource& source = picture_.source;
    jobs_.clear();
    jobs_.reserve(mbHeight);
    for (uint32_t row = 0; row < mbHeight; ++row) {
        const auto firstRow = static_cast<int32_t>(16 * row);
        jobs_.push_back({.picture = &picture_,
                         .slices = slices_.Row(row),
                         .rows = source.rows + firstRow * source.rowBytes,
                         .rowCount = std::min(16, source.height - firstRow),
                         .outOfMemory = false});
    }
}

void PrxPictureEncoder::Run(PrxThreadPool& pool, PrxCodingPass pass) {
    picture_.pass = pass;
    pool.run(jobs_.data(), jobs_.size());
    if (std::ranges::any_of(jobs_, &PrxEncodeRowJob::outOfMemory)) throw PrxOutOfMemory();
}

void PrxPictureEncoder::Code(PrxThreadPool& pool, const PrxRateTarget& target) {
    const std::span<PrxSlice> slices = slices_.All();
    const PrxPictureBudget budget = PrxMakePictureBudget(target, slices.size(), mbCount_);
    Run(pool, PrxCodingPass::Measure);
    if (PrxSumBodies(slices) <= budget.high) {
        Run(pool, PrxCodingPass::Write);
        return;
    }
    PrxChooseQuantIndices(slices, budget, target.startQuantIndex, target.chromaFormat);
    Run(pool, PrxCodingPass::Write);
    if (PrxSumBodies(slices) <= budget.high) return;
    if (PrxShareBudget(slices, budget)) Run(pool, PrxCodingPass::Fit);
}
