#include "prores/PrxDecoder.h"

#include "prores/PrxDecodeRow.h"
#include "prores/PrxFrameSetup.h"
#include "prores/PrxOutOfMemory.h"
#include "prores/PrxWorkerContext.h"

#include <algorithm>
#include <span>

namespace {

constexpr const PrxPoolClient& poolClient = prxPoolClientFor<PrxRowJob, PrxWorkerContext, PrxDecodeRow>;

} // namespace

PrxDecoder::PrxDecoder(int32_t workerCount, PrxThreadStartHook threadStartHook, PrxThreadStarter startThread)
    : threadStartHook_(threadStartHook),
      pool_(PrxThreadPool::create(PrxWorkersFor(workerCount), &threadStartHook_, poolClient, startThread)) {
    if (pool_ == nullptr) throw PrxOutOfMemory();
}

int32_t PrxDecoder::decodeFrame(const PrxBufferPiece& input, const PrxOutputTarget& target, int32_t mode,
                                bool ignoreAlpha, uint8_t* isOpaque) {
    PrxFrameSetup setup;
    const int32_t result = PrxSetUpFrame(input, target, mode, ignoreAlpha, &setup);
    if (result < 0) return result;
    const std::span pictures(setup.pictures.data(), static_cast<size_t>(setup.pictureCount));
    size_t rowCount = 0;
    for (const PrxPictureContext& picture : pictures)
        rowCount += picture.layout.mbHeight;
    rows_.clear();
    rows_.reserve(rowCount);
    for (const PrxPictureContext& picture : pictures)
        PrxAppendRowJobs(picture, &rows_);
    pool_->run(rows_.data(), rows_.size());
    if (std::ranges::any_of(rows_, &PrxRowJob::outOfMemory)) throw PrxOutOfMemory();
    if (isOpaque != nullptr) {
        // Of an interlaced frame's alpha one field says too little.
        const bool allDecoded = !setup.interlaced || mode == 1;
        const bool opaque = allDecoded && std::ranges::all_of(rows_, &PrxRowJob::allOk);
        *isOpaque = !setup.streamHasAlpha || opaque ? 1 : 0;
    }
    return result;
}
